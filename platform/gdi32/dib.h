// Reading pixels of a device-independent bitmap described by a BITMAPINFO.
#pragma once
#include <windows.h>

#include <cstdint>
#include <optional>
#include <vector>

namespace tesk::gdi {

class DibReader {
public:
    // Null, with last error ERROR_INVALID_PARAMETER, for a header this reader
    // does not take: 1, 4, 8 bits with a palette of RGB colours, 16 and 32
    // bits (BI_RGB or BI_BITFIELDS), 24 bits.
    static std::optional<DibReader> Make(const BITMAPINFO* info, UINT colorUse, const void* bits);

    int Width() const { return width_; }
    int Height() const { return height_; }
    bool TopDown() const { return topDown_; }
    size_t Stride() const { return stride_; }
    // Pixel of buffer row `row` (the row's position in memory, first row 0),
    // as 0x00RRGGBB.
    uint32_t Pixel(int x, int row) const;

private:
    const uint8_t* bits_ = nullptr;
    int width_ = 0;
    int height_ = 0;
    bool topDown_ = false;
    int bitCount_ = 0;
    size_t stride_ = 0;
    std::vector<uint32_t> palette_;
    uint32_t masks_[3] = {};
    int shifts_[3] = {};
    int widths_[3] = {};
};

// Bytes in one row of a DIB.
inline size_t DibStride(int width, int bitCount) { return ((size_t(width) * size_t(bitCount) + 31) / 32) * 4; }

}  // namespace tesk::gdi
