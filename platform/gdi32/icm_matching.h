// Colour matching done by a device context itself when ICM is on
// (SetICMMode ICM_ON): drawn sRGB pixels are converted to the DC's profile.
#pragma once
#include <cstdint>
#include <string>

#include "gdi_objects.h"

namespace tesk::gdi {

// Linux path of the profile the DC matches to, or "".
std::string ProfileOf(const DeviceContext& dc);

// Converts `count` 0x00RRGGBB pixels in place when the DC's ICM is on and its
// profile is an RGB device profile; other profiles (a CMYK printer's) leave
// the pixels to the printer, which receives them as sRGB.
void MatchPixels(DeviceContext& dc, uint32_t* pixels, int count);

}  // namespace tesk::gdi
