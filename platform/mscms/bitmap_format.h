// Pixel layouts of the BMFORMAT values, as lcms2 formatter words.
#pragma once
#include <windows.h>

#include <icm.h>
#include <lcms2.h>

#include <cstddef>

namespace tesk::mscms {

struct BitmapLayout {
    cmsUInt32Number lcmsFormat = 0;
    size_t bytesPerPixel = 0;
};

// The layout of `format`. False with `error` set to ERROR_NOT_SUPPORTED for a
// Windows format that has no lcms2 equivalent (packed 5-, 10-bit, Yxy, named
// index) and ERROR_INVALID_PARAMETER for a value that is no format at all.
bool LookUpBitmapLayout(BMFORMAT format, BitmapLayout& layout, DWORD& error);

// Whether pixels of `lcmsFormat` can enter or leave a transform whose end
// is `space`: the same colour model, or the same channel count for formats
// that carry no model (the generic n-channel ones).
bool FormatFitsColorSpace(cmsUInt32Number lcmsFormat, cmsColorSpaceSignature space);

}  // namespace tesk::mscms
