// The name a device's profile is known by: what follows the last separator of
// the path the platform reports.
#pragma once
#include "host/CString.h"

namespace colormgr {

// File name and extension of a path in either form ('\\' or '/').
CString FileNameOfPath(const wchar_t* path);

}  // namespace colormgr
