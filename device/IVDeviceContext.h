// IVDeviceContext: how the host draws images colour-managed onto a device
// context and passes images and colours through the display transform.
#pragma once
#include <windows.h>

#include "host/Unknown.h"

class CRowIterator;

// {2B159C2C-3A9B-48FE-AFA0-B254D0218406}
constexpr GUID IID_IVDeviceContext = {0x2B159C2C, 0x3A9B, 0x48FE, {0xAF, 0xA0, 0xB2, 0x54, 0xD0, 0x21, 0x84, 0x06}};

struct IVDeviceContext : IVUnknown {
    // Draws `source` of the image (all of it when null) with its top-left at
    // (x, y); `clampOrigin` reads a negative source origin as 0.
    virtual bool DrawImage(const CRowIterator* image, const RECT* source, int x, int y, bool colorManaged,
                           bool clampOrigin) = 0;
    // Stretches (0, 0, sourceWidth, sourceHeight) of the image onto the
    // rectangle at (x, y) of width x height; the printer context does any matching.
    virtual bool DrawImageToPrinter(const CRowIterator* image, int x, int y, int width, int height,
                                    int sourceWidth, int sourceHeight) = 0;
    virtual bool ICMProcessImage(CRowIterator* source, CRowIterator* destination, bool flag) = 0;
    virtual bool ProcessColors(RGBQUAD* input, RGBQUAD* output, int count) = 0;

protected:
    ~IVDeviceContext() override = default;
};
