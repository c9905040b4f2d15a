#include "conversion/PlatformRows.h"

#include <algorithm>
#include <cstring>

size_t PlatformRowBytes(BMFORMAT format, size_t width) {
    switch (format) {
        case BM_GRAY:
            return width;
        case BM_x555RGB:
        case BM_565RGB:
        case BM_16b_GRAY:
            return width * 2;
        case BM_xRGBQUADS:
        case BM_xBGRQUADS:
        case BM_KYMCQUADS:
        case BM_CMYKQUADS:
        case BM_10b_RGB:
            return width * 4;
        case BM_16b_RGB:
        case BM_16b_XYZ:
        case BM_16b_Yxy:
        case BM_16b_Lab:
        case BM_16b_G3CH:
            return width * 6;
        default:
            return width * 3;
    }
}

BOOL TranslateRow(decltype(&TranslateBitmapBits) translate, HTRANSFORM transform, const void* row, size_t rowBytes,
                  BMFORMAT inputFormat, DWORD width, DWORD inputStride, void* output, BMFORMAT outputFormat,
                  DWORD outputStride, std::vector<unsigned char>& scratch) {
    if (!translate) return FALSE;
    const size_t needed = PlatformRowBytes(inputFormat, width);
    if (needed <= rowBytes)
        return translate(transform, const_cast<void*>(row), inputFormat, width, 1, inputStride, output, outputFormat,
                         outputStride, nullptr, 0);
    scratch.assign(needed, 0);
    std::memcpy(scratch.data(), row, rowBytes);
    return translate(transform, scratch.data(), inputFormat, width, 1, inputStride, output, outputFormat,
                     outputStride, nullptr, 0);
}
