// CRowIterator: a handle to an image held as rows of pixels. Copies of a handle
// share the image; the image lives until its last handle goes. Row access is a
// pointer and a stride: the stride is negative for images stored bottom-up.
#pragma once
#include <windows.h>

#include <cstddef>
#include <memory>

#include "host/imaging/ColorRef.h"
#include "host/imaging/ImagingApi.h"
#include "host/imaging/Palette.h"
#include "host/imaging/PixelFormat.h"

class VIMAGING_API CRowIterator {
public:
    CRowIterator() = default;

    // A new image owned by this handle; rows padded to 4 bytes, top row first.
    // Filled with `background` (its index for indexed formats) or with zero
    // bytes when null. `resolution` is in dots per inch, -1 when unknown.
    // False, and the handle detached, for an invalid format, a negative size or
    // memory that cannot be had.
    bool Create(int width, int height, EVPixelFormat format, const CVPalette* palette = nullptr,
                const CColorRef* background = nullptr, int resolution = -1);
    // A view of pixels owned by the caller, who keeps them alive while any handle
    // refers to them. `firstRow` is row 0; row y is at firstRow + y * stride.
    bool Attach(BYTE* firstRow, int width, int height, EVPixelFormat format, std::ptrdiff_t stride,
                const CVPalette* palette = nullptr, int resolution = -1);
    void Detach() { m_image.reset(); }

    bool IsAttached() const { return m_image != nullptr; }
    int GetWidth() const;
    int GetHeight() const;
    EVPixelFormat GetPixelFormat() const;
    int GetBitsPerPixel() const;
    int GetResolution() const;
    // Distance in bytes from one row to the next, negative when bottom-up.
    std::ptrdiff_t GetStride() const;
    // Bytes of one row's pixels, without padding.
    int GetBytesPerRow() const;
    RECT GetRect() const;

    // Row y from pixel x on (for formats under 8 bits, the byte holding pixel
    // x). Null when detached or outside the image. The pointer stays valid
    // while the image lives.
    BYTE* GetRow(int y, int x = 0);
    const BYTE* GetRow(int y, int x = 0) const;

    // The image's palette, null when it has none.
    const CVPalette* GetPalette() const;
    int GetPaletteCount() const;
    bool SetPalette(const RGBQUAD* entries, int count);
    bool SetPalette(const CVPalette& palette);

    // True when both handles refer to the same image.
    bool SharesImageWith(const CRowIterator& other) const { return m_image && m_image == other.m_image; }

private:
    struct SImage;
    std::shared_ptr<SImage> m_image;
};

namespace RowIterator {

// Copies the part `source` of `src` (its whole rectangle when null) to
// `destination` with its top-left at (destX, destY). Both rectangles are clipped
// to their images; an empty intersection copies nothing and succeeds. Formats
// must be equal, or both direct (not indexed, not 555): then channels are
// converted (grey <-> RGB, alpha added as opaque or dropped, 16 -> 8 bits by
// the high byte, 8 -> 16 by x 257). False when either image is detached or
// the formats cannot be converted.
VIMAGING_API bool CopyRect(CRowIterator& dest, const CRowIterator& src, const RECT* source = nullptr,
                           int destX = 0, int destY = 0);

// Copies the colour channels of `src` into `dest`, leaving `dest`'s alpha as it
// is; the overlap of both images from (0, 0) is copied. The two formats must
// have the same colour channels at the same depth and differ at most in alpha
// (13 <-> 12, 11 <-> 10, 8 <-> 7, 6 <-> 5, or equal). False otherwise.
VIMAGING_API bool CopyColor(CRowIterator& dest, const CRowIterator& src);

}  // namespace RowIterator
