// The platform's colour directory, asked the way the module always asks it.
#pragma once
#include <windows.h>
#include <icm.h>

#include "host/CString.h"

namespace tesk {

// GetColorDirectoryW with no machine name and a size of 513 in the platform's
// byte unit (less than the buffer holds, deliberately); empty when the
// function is not bound or fails.
CString ColorDirectory(decltype(&::GetColorDirectoryW) getColorDirectory);

}  // namespace tesk
