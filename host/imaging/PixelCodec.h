// Internal helpers of the imaging library: single pixels and row filling.
#pragma once
#include <windows.h>

#include <cstddef>

#include "host/imaging/ColorRef.h"
#include "host/imaging/PixelFormat.h"

namespace vimaging {

// The bytes of one pixel of `format` showing `colour` (indexed formats: its
// index, at the pixel's bit width). Returns the byte count (0 for formats under
// 8 bits, whose pattern is given through FillRow).
int EncodePixel(EVPixelFormat format, const CColorRef& colour, BYTE out[8]);

// Sets `width` pixels of a row starting at its first byte to `colour`.
void FillRow(BYTE* row, EVPixelFormat format, int width, const CColorRef& colour);

// Index of pixel x in a row of an indexed format under 8 bits (leftmost in the high bits).
inline int GetPackedIndex(const BYTE* row, int x, int bits) {
    const int perByte = 8 / bits;
    const int shift = 8 - bits * (x % perByte + 1);
    return (row[x / perByte] >> shift) & ((1 << bits) - 1);
}

inline void SetPackedIndex(BYTE* row, int x, int bits, int value) {
    const int perByte = 8 / bits;
    const int shift = 8 - bits * (x % perByte + 1);
    const int mask = ((1 << bits) - 1) << shift;
    BYTE& b = row[x / perByte];
    b = BYTE((b & ~mask) | ((value << shift) & mask));
}

// Grey level of an RGB colour, 16-bit samples in and out.
inline unsigned Luminance16(unsigned red, unsigned green, unsigned blue) {
    return (red * 19595u + green * 38470u + blue * 7471u + 32768u) >> 16;
}

}  // namespace vimaging
