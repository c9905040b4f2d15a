// Error objects that the imaging library's DIB operations return; null means success.
#pragma once
#include "host/Unknown.h"
#include "host/imaging/ImagingApi.h"

// {6D3C1E52-8A41-4F0B-9B7E-2C51D0A9F3B4}
constexpr GUID IID_IVImagingError = {0x6D3C1E52, 0x8A41, 0x4F0B, {0x9B, 0x7E, 0x2C, 0x51, 0xD0, 0xA9, 0xF3, 0xB4}};

enum EVImagingError : int {
    VIMG_ERR_ARGUMENT = 1,    // a size, format, row or offset out of range
    VIMG_ERR_NO_MEMORY = 2,
    VIMG_ERR_NOT_ATTACHED = 3,
};

// A new error object with `code` (reference count 1; the caller releases it).
VIMAGING_API IVError* VImaging_MakeError(int code);
