// The ICC profile an image file carries, taken the same way for every format:
// a damaged one, or one whose colour space does not fit the pixels, is an
// error naming the file, never a quiet "no profile".
#pragma once
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "host/imaging/PixelFormat.h"

namespace teskcolor {

// For a file that holds a profile (even an empty one). Throws
// CCliError(Corrupt) for a damaged profile and CCliError(WrongProfile) for a
// colour space other than the pixels' (GRAY, RGB or CMYK).
std::vector<uint8_t> TakeEmbeddedProfile(const std::string& name, const uint8_t* data, size_t size,
                                         EVPixelFormat format, bool cmyk);

}  // namespace teskcolor
