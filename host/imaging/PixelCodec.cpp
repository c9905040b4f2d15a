#include "host/imaging/PixelCodec.h"

#include <cstring>

namespace vimaging {

namespace {

void PutWord(BYTE* out, unsigned value) {
    const WORD w = WORD(value);
    std::memcpy(out, &w, 2);
}

}  // namespace

int EncodePixel(EVPixelFormat format, const CColorRef& colour, BYTE out[8]) {
    const unsigned r = colour.GetRed(), g = colour.GetGreen(), b = colour.GetBlue(), a = colour.GetAlpha();
    const unsigned grey = Luminance16(r * 257, g * 257, b * 257);
    switch (format) {
    case VPF_INDEXED_8: out[0] = BYTE(colour.GetIndex()); return 1;
    case VPF_GREY_8: out[0] = BYTE(grey >> 8); return 1;
    case VPF_GREY_ALPHA_8: out[0] = BYTE(grey >> 8); out[1] = BYTE(a); return 2;
    case VPF_RGB_8: out[0] = BYTE(b); out[1] = BYTE(g); out[2] = BYTE(r); return 3;
    case VPF_RGBA_8: out[0] = BYTE(b); out[1] = BYTE(g); out[2] = BYTE(r); out[3] = BYTE(a); return 4;
    case VPF_RGB_555: PutWord(out, ((r >> 3) << 10) | ((g >> 3) << 5) | (b >> 3)); return 2;
    case VPF_GREY_16: PutWord(out, grey); return 2;
    case VPF_GREY_ALPHA_16: PutWord(out, grey); PutWord(out + 2, a * 257); return 4;
    case VPF_RGB_16: PutWord(out, b * 257); PutWord(out + 2, g * 257); PutWord(out + 4, r * 257); return 6;
    case VPF_RGBA_16:
        PutWord(out, b * 257); PutWord(out + 2, g * 257); PutWord(out + 4, r * 257); PutWord(out + 6, a * 257);
        return 8;
    default: return 0;
    }
}

void FillRow(BYTE* row, EVPixelFormat format, int width, const CColorRef& colour) {
    if (width <= 0) return;
    const int bits = CVPixelFormat::GetBitsPerPixel(format);
    if (CVPixelFormat::IsIndexed(format) && bits < 8) {
        for (int x = 0; x < width; ++x) SetPackedIndex(row, x, bits, colour.GetIndex());
        return;
    }
    BYTE pixel[8];
    const int size = EncodePixel(format, colour, pixel);
    if (size == 0) return;
    bool uniform = true;
    for (int i = 1; i < size; ++i) uniform = uniform && pixel[i] == pixel[0];
    if (uniform) {
        std::memset(row, pixel[0], size_t(width) * size_t(size));
        return;
    }
    for (int x = 0; x < width; ++x) std::memcpy(row + size_t(x) * size_t(size), pixel, size_t(size));
}

}  // namespace vimaging
