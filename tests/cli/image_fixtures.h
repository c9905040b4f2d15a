// Images and profiles the image-file tests are built from.
#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "cli/imageio/Image.h"

namespace teskcolor::test {

// A profile made by lcms2: sRGB, or a grey profile with gamma 2.2.
std::vector<uint8_t> SrgbProfileBytes();
std::vector<uint8_t> GreyProfileBytes();

// An image whose every sample differs from its neighbours' (so channel or byte
// order mistakes show), of the given format, optionally marked CMYK.
SImage PatternImage(int width, int height, EVPixelFormat format, bool cmyk = false);
// A smooth gradient that survives JPEG compression closely.
SImage SmoothImage(int width, int height, EVPixelFormat format);

// Largest absolute difference between two images' samples; -1 when their
// sizes or formats differ.
int MaxSampleDifference(const CRowIterator& a, const CRowIterator& b);

}  // namespace teskcolor::test
