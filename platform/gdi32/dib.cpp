#include "dib.h"

#include <bit>
#include <cstdlib>
#include <cstring>

namespace tesk::gdi {
namespace {

uint32_t Expand(uint32_t value, uint32_t mask, int shift, int width) {
    if (width == 0) return 0;
    uint32_t v = (value & mask) >> shift;
    uint32_t max = (width >= 32) ? 0xFFFFFFFFu : ((1u << width) - 1);
    return uint32_t((uint64_t(v) * 255 + max / 2) / max);
}

}  // namespace

std::optional<DibReader> DibReader::Make(const BITMAPINFO* info, UINT colorUse, const void* bits) {
    auto fail = [] {
        SetLastError(ERROR_INVALID_PARAMETER);
        return std::nullopt;
    };
    if (!info || !bits) return fail();
    const BITMAPINFOHEADER& header = info->bmiHeader;
    if (header.biSize < sizeof(BITMAPINFOHEADER) || header.biWidth <= 0 || header.biHeight == 0 ||
        header.biHeight == INT32_MIN || header.biPlanes != 1)
        return fail();
    // Keep a row and the image within sizes that index safely.
    if (header.biWidth > (1 << 20) || std::abs(header.biHeight) > (1 << 20)) return fail();

    DibReader dib;
    dib.bits_ = static_cast<const uint8_t*>(bits);
    dib.width_ = header.biWidth;
    dib.height_ = std::abs(header.biHeight);
    dib.topDown_ = header.biHeight < 0;
    dib.bitCount_ = header.biBitCount;
    dib.stride_ = DibStride(dib.width_, dib.bitCount_);
    const uint8_t* afterHeader = reinterpret_cast<const uint8_t*>(info) + header.biSize;

    switch (header.biBitCount) {
    case 1:
    case 4:
    case 8: {
        if (header.biCompression != BI_RGB || colorUse != DIB_RGB_COLORS) return fail();
        size_t count = header.biClrUsed ? header.biClrUsed : (size_t(1) << header.biBitCount);
        if (count > (size_t(1) << header.biBitCount)) return fail();
        dib.palette_.assign(size_t(1) << header.biBitCount, 0);
        for (size_t i = 0; i < count; ++i) {
            RGBQUAD quad;
            std::memcpy(&quad, afterHeader + i * sizeof(RGBQUAD), sizeof quad);
            dib.palette_[i] = (uint32_t(quad.rgbRed) << 16) | (uint32_t(quad.rgbGreen) << 8) | quad.rgbBlue;
        }
        return dib;
    }
    case 24:
        if (header.biCompression != BI_RGB) return fail();
        return dib;
    case 16:
    case 32: {
        if (header.biCompression == BI_RGB) {
            if (header.biBitCount == 16) {
                dib.masks_[0] = 0x7C00, dib.masks_[1] = 0x03E0, dib.masks_[2] = 0x001F;
            } else {
                dib.masks_[0] = 0xFF0000, dib.masks_[1] = 0x00FF00, dib.masks_[2] = 0x0000FF;
            }
        } else if (header.biCompression == BI_BITFIELDS) {
            // The masks follow a 40-byte header; larger headers carry them inside.
            const uint8_t* masks = header.biSize == sizeof(BITMAPINFOHEADER)
                                       ? afterHeader
                                       : reinterpret_cast<const uint8_t*>(info) + sizeof(BITMAPINFOHEADER);
            std::memcpy(dib.masks_, masks, sizeof dib.masks_);
        } else {
            return fail();
        }
        for (int c = 0; c < 3; ++c) {
            if (dib.masks_[c] == 0) return fail();
            dib.shifts_[c] = std::countr_zero(dib.masks_[c]);
            dib.widths_[c] = std::popcount(dib.masks_[c]);
        }
        return dib;
    }
    default:
        return fail();
    }
}

uint32_t DibReader::Pixel(int x, int row) const {
    const uint8_t* line = bits_ + size_t(row) * stride_;
    switch (bitCount_) {
    case 1: return palette_[(line[x >> 3] >> (7 - (x & 7))) & 1];
    case 4: return palette_[(line[x >> 1] >> ((x & 1) ? 0 : 4)) & 0xF];
    case 8: return palette_[line[x]];
    case 24: {
        const uint8_t* p = line + size_t(x) * 3;
        return (uint32_t(p[2]) << 16) | (uint32_t(p[1]) << 8) | p[0];
    }
    default: {
        uint32_t value = 0;
        if (bitCount_ == 16) {
            uint16_t v;
            std::memcpy(&v, line + size_t(x) * 2, 2);
            value = v;
        } else {
            std::memcpy(&value, line + size_t(x) * 4, 4);
        }
        return (Expand(value, masks_[0], shifts_[0], widths_[0]) << 16) |
               (Expand(value, masks_[1], shifts_[1], widths_[1]) << 8) |
               Expand(value, masks_[2], shifts_[2], widths_[2]);
    }
    }
}

}  // namespace tesk::gdi
