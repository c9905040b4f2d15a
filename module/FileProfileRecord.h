// The PROFILE_FILENAME record the module hands to OpenColorProfileW.
#pragma once
#include <windows.h>
#include <icm.h>

#include "host/CString.h"

namespace tesk {

// A zeroed GlobalAlloc block: the record followed by the path it points to,
// its size the path's and terminator's bytes at two a character, as Windows
// counts them. Null when the block cannot be had.
PROFILE* AllocFileProfileRecord(const CString& path);
void FreeFileProfileRecord(PROFILE* record);

}  // namespace tesk
