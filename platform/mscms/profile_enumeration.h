// Which installed profiles an enumeration record selects.
#pragma once
#include <windows.h>

#include <icm.h>

#include <string>
#include <vector>

namespace tesk::mscms {

// The file names (UTF-8, sorted) of the installed profiles that match every
// field the record selects; false with the last error set for a record that
// cannot be served. The record's device name is read as `deviceName`.
bool MatchingProfiles(const ENUMTYPEW& record, const std::string& deviceName, std::vector<std::string>& fileNames);

// Whether a record of `size` bytes holds every field that `fields` selects.
bool UsableEnumRecord(DWORD size, DWORD fields);

// Hands a MULTI_SZ of `bytes` bytes holding `names` names to the caller's
// buffer. Too small or null: the size needed goes to *size and the call
// fails with ERROR_INSUFFICIENT_BUFFER. *count (when given) gets `names`.
BOOL CopyListOut(const void* list, size_t bytes, PBYTE buffer, PDWORD size, PDWORD count, DWORD names);

}  // namespace tesk::mscms
