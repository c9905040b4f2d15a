#include "host/imaging/PixelFormat.h"

namespace {

struct SFormatInfo {
    int bitsPerPixel;
    int channels;
    bool indexed;
    bool sixteenBit;
    bool alpha;
    bool grey;
    EVPixelFormat eightBit;
    EVPixelFormat sixteenBitFormat;
};

constexpr SFormatInfo kFormats[kVPixelFormatCount] = {
    {0, 0, false, false, false, false, VPF_UNKNOWN, VPF_UNKNOWN},
    {1, 1, true, false, false, false, VPF_INDEXED_1, VPF_UNKNOWN},
    {2, 1, true, false, false, false, VPF_INDEXED_2, VPF_UNKNOWN},
    {4, 1, true, false, false, false, VPF_INDEXED_4, VPF_UNKNOWN},
    {8, 1, true, false, false, false, VPF_INDEXED_8, VPF_UNKNOWN},
    {8, 1, false, false, false, true, VPF_GREY_8, VPF_GREY_16},
    {16, 2, false, false, true, true, VPF_GREY_ALPHA_8, VPF_GREY_ALPHA_16},
    {24, 3, false, false, false, false, VPF_RGB_8, VPF_RGB_16},
    {32, 4, false, false, true, false, VPF_RGBA_8, VPF_RGBA_16},
    {16, 3, false, false, false, false, VPF_RGB_555, VPF_UNKNOWN},
    {16, 1, false, true, false, true, VPF_GREY_8, VPF_GREY_16},
    {32, 2, false, true, true, true, VPF_GREY_ALPHA_8, VPF_GREY_ALPHA_16},
    {48, 3, false, true, false, false, VPF_RGB_8, VPF_RGB_16},
    {64, 4, false, true, true, false, VPF_RGBA_8, VPF_RGBA_16},
};

const SFormatInfo& Info(EVPixelFormat format) {
    return CVPixelFormat::IsValid(format) ? kFormats[format] : kFormats[0];
}

}  // namespace

bool CVPixelFormat::IsValid(EVPixelFormat format) { return format >= VPF_INDEXED_1 && format < kVPixelFormatCount; }
bool CVPixelFormat::IsIndexed(EVPixelFormat format) { return Info(format).indexed; }
bool CVPixelFormat::Is16bit(EVPixelFormat format) { return Info(format).sixteenBit; }
bool CVPixelFormat::IsAlphaChannelPresent(EVPixelFormat format) { return Info(format).alpha; }
bool CVPixelFormat::IsGreyscale(EVPixelFormat format) { return Info(format).grey; }
EVPixelFormat CVPixelFormat::Get8bitFormat(EVPixelFormat format) { return IsValid(format) ? Info(format).eightBit : format; }
EVPixelFormat CVPixelFormat::Get16bitFormat(EVPixelFormat format) { return Info(format).sixteenBitFormat; }
int CVPixelFormat::GetBitsPerPixel(EVPixelFormat format) { return Info(format).bitsPerPixel; }
int CVPixelFormat::GetChannelCount(EVPixelFormat format) { return Info(format).channels; }
int CVPixelFormat::GetPaletteSize(EVPixelFormat format) { return IsIndexed(format) ? 1 << Info(format).bitsPerPixel : 0; }

long long CVPixelFormat::GetRowBytes(EVPixelFormat format, long long width) {
    if (width <= 0) return 0;
    return (width * GetBitsPerPixel(format) + 7) / 8;
}
