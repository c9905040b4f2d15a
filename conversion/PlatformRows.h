// Handing image rows to the platform's bitmap translation without letting it
// read or write past a row.
#pragma once
#include <windows.h>

#include <icm.h>

#include <cstddef>
#include <vector>

// Bytes one row of `width` pixels occupies in a platform bitmap format.
size_t PlatformRowBytes(BMFORMAT format, size_t width);

// Translates one row. When the format would take the platform past the end
// of the row (`rowBytes`), the row goes through a zero-padded copy, so that
// bytes past the end read as zero. `scratch` is reused between rows.
BOOL TranslateRow(decltype(&TranslateBitmapBits) translate, HTRANSFORM transform, const void* row, size_t rowBytes,
                  BMFORMAT inputFormat, DWORD width, DWORD inputStride, void* output, BMFORMAT outputFormat,
                  DWORD outputStride, std::vector<unsigned char>& scratch);
