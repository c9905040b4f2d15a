// Inside mscms.so: what the transform side needs of the profile side.
#pragma once
#include <windows.h>

#include <icm.h>

#include <cstdint>
#include <vector>

namespace tesk::mscms {

// The bytes of the open profile behind `handle`, laid out as
// GetColorProfileFromHandle gives them. False, with last error
// ERROR_INVALID_HANDLE, when `handle` is not an open profile.
bool ProfileBytes(HPROFILE handle, std::vector<uint8_t>& bytes);

// The built-in "sRGB Color Space Profile.icm".
const std::vector<uint8_t>& BuiltInSrgbProfileBytes();

// A profile for a logical colour space (LCS_sRGB, LCS_WINDOWS_COLOR_SPACE,
// LCS_CALIBRATED_RGB from endpoints and gammas, or a profile file named in
// lcsFilename). False with last error set when it cannot be made.
bool ProfileBytesFromLogColorSpace(const LOGCOLORSPACEW& logColorSpace, std::vector<uint8_t>& bytes);

}  // namespace tesk::mscms
