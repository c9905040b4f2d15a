// Images and profiles the image-file tests are built from.
#pragma once
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "cli/imageio/Image.h"
#include "support/lcms_profiles.h"

namespace teskcolor::test {

using tesk::test::GreyProfileBytes;
using tesk::test::SrgbProfileBytes;

// Every sample differs from its neighbours' (so channel or byte order
// mistakes show); `smooth` gives a gradient that survives JPEG closely.
inline SImage TestImage(int width, int height, EVPixelFormat format, bool smooth, bool cmyk = false) {
    SImage image;
    image.cmyk = cmyk;
    image.pixels.Create(width, height, format);
    const int channels = CVPixelFormat::GetChannelCount(format);
    const bool wide = CVPixelFormat::Is16bit(format);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            for (int c = 0; c < channels; ++c) {
                const size_t at = size_t(x) * channels + c;
                const unsigned value = smooth ? unsigned((x * 255 / width + y * 255 / height * c) / (c + 1))
                                              : unsigned(x * 37 + y * 101 + c * 59);
                if (wide) {
                    const uint16_t word = uint16_t(value * 257 + unsigned(c) * 3 + 1);
                    std::memcpy(image.pixels.GetRow(y) + at * 2, &word, 2);
                } else {
                    image.pixels.GetRow(y)[at] = BYTE(value);
                }
            }
    return image;
}
inline SImage PatternImage(int width, int height, EVPixelFormat format, bool cmyk = false) {
    return TestImage(width, height, format, false, cmyk);
}
inline SImage SmoothImage(int width, int height, EVPixelFormat format) { return TestImage(width, height, format, true); }

// Largest absolute difference between two images' samples; -1 when their
// sizes or formats differ.
inline int MaxSampleDifference(const CRowIterator& a, const CRowIterator& b) {
    if (a.GetWidth() != b.GetWidth() || a.GetHeight() != b.GetHeight() || a.GetPixelFormat() != b.GetPixelFormat())
        return -1;
    const bool wide = CVPixelFormat::Is16bit(a.GetPixelFormat());
    int worst = 0;
    for (int y = 0; y < a.GetHeight(); ++y)
        for (int i = 0; i + (wide ? 1 : 0) < a.GetBytesPerRow(); i += wide ? 2 : 1) {
            uint16_t va = a.GetRow(y)[i], vb = b.GetRow(y)[i];
            if (wide) {
                std::memcpy(&va, a.GetRow(y) + i, 2);
                std::memcpy(&vb, b.GetRow(y) + i, 2);
            }
            worst = std::max(worst, std::abs(int(va) - int(vb)));
        }
    return worst;
}

}  // namespace teskcolor::test
