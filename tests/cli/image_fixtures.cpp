#include "image_fixtures.h"

#include <lcms2.h>

#include <cstdlib>
#include <algorithm>
#include <cstring>

namespace teskcolor::test {

namespace {
std::vector<uint8_t> Save(cmsHPROFILE profile) {
    cmsUInt32Number size = 0;
    cmsSaveProfileToMem(profile, nullptr, &size);
    std::vector<uint8_t> bytes(size);
    cmsSaveProfileToMem(profile, bytes.data(), &size);
    cmsCloseProfile(profile);
    return bytes;
}
}  // namespace

std::vector<uint8_t> SrgbProfileBytes() { return Save(cmsCreate_sRGBProfile()); }

std::vector<uint8_t> GreyProfileBytes() {
    cmsToneCurve* curve = cmsBuildGamma(nullptr, 2.2);
    cmsHPROFILE profile = cmsCreateGrayProfile(cmsD50_xyY(), curve);
    cmsFreeToneCurve(curve);
    return Save(profile);
}

SImage PatternImage(int width, int height, EVPixelFormat format, bool cmyk) {
    SImage image;
    image.cmyk = cmyk;
    image.pixels.Create(width, height, format);
    const int channels = CVPixelFormat::GetChannelCount(format);
    const bool wide = CVPixelFormat::Is16bit(format);
    for (int y = 0; y < height; ++y) {
        BYTE* row = image.pixels.GetRow(y);
        for (int x = 0; x < width; ++x) {
            for (int c = 0; c < channels; ++c) {
                const unsigned value = unsigned(x * 37 + y * 101 + c * 59);
                if (wide) {
                    const uint16_t word = uint16_t(value * 257 + unsigned(c) * 3 + 1);
                    std::memcpy(row + (size_t(x) * channels + c) * 2, &word, 2);
                } else {
                    row[size_t(x) * channels + c] = BYTE(value);
                }
            }
        }
    }
    return image;
}

SImage SmoothImage(int width, int height, EVPixelFormat format) {
    SImage image;
    image.pixels.Create(width, height, format);
    const int channels = CVPixelFormat::GetChannelCount(format);
    for (int y = 0; y < height; ++y) {
        BYTE* row = image.pixels.GetRow(y);
        for (int x = 0; x < width; ++x)
            for (int c = 0; c < channels; ++c)
                row[size_t(x) * channels + c] = BYTE((x * 255 / width + y * 255 / height * c) / (c + 1));
    }
    return image;
}

int MaxSampleDifference(const CRowIterator& a, const CRowIterator& b) {
    if (a.GetWidth() != b.GetWidth() || a.GetHeight() != b.GetHeight() || a.GetPixelFormat() != b.GetPixelFormat())
        return -1;
    const bool wide = CVPixelFormat::Is16bit(a.GetPixelFormat());
    const int bytes = a.GetBytesPerRow();
    int worst = 0;
    for (int y = 0; y < a.GetHeight(); ++y) {
        const BYTE* ra = a.GetRow(y);
        const BYTE* rb = b.GetRow(y);
        if (wide) {
            for (int i = 0; i + 1 < bytes; i += 2) {
                uint16_t va, vb;
                std::memcpy(&va, ra + i, 2);
                std::memcpy(&vb, rb + i, 2);
                worst = std::max(worst, std::abs(int(va) - int(vb)));
            }
        } else {
            for (int i = 0; i < bytes; ++i) worst = std::max(worst, std::abs(int(ra[i]) - int(rb[i])));
        }
    }
    return worst;
}

}  // namespace teskcolor::test
