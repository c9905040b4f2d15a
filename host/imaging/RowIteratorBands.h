// Operations on images as a whole: creation, tiles, drawing.
#pragma once
#include <windows.h>

#include <cstddef>
#include <vector>

#include "host/imaging/RowIterator.h"

class CDibIterator;

// A rectangle of an image in place: `bits` is the tile's top-left pixel in its
// top row (for formats under 8 bits, the byte holding it), the next row of the
// tile is `stride` bytes further (negative for bottom-up images).
struct STile {
    BYTE* bits = nullptr;
    std::ptrdiff_t stride = 0;
    int width = 0;
    int height = 0;
    RECT rect{};
};

// Tiles covering an area, row of tiles after row of tiles, left to right.
struct STileLayout {
    int columns = 0;
    int rows = 0;
    std::vector<RECT> tiles;
    const RECT& At(int row, int column) const { return tiles[size_t(row) * size_t(columns) + size_t(column)]; }
};

class VIMAGING_API CRowIteratorBands {
public:
    // Millions of pixels a tile: enough for the platform's bitmap translation to
    // share one tile among threads, small enough to stay within a photo's rows.
    static constexpr int kDefaultTileWidth = 4096;
    static constexpr int kDefaultTileHeight = 1024;

    static bool Create(CRowIterator& image, int width, int height, EVPixelFormat format,
                       const CVPalette* palette = nullptr, const CColorRef* background = nullptr,
                       int resolution = -1);
    // Format 5 (8-bit grey); the palette is kept for display, null for none.
    static bool CreateGreyscale(CRowIterator& image, int width, int height, const CVPalette* palette = nullptr);
    // Format 7 (8-bit RGB).
    static bool CreateRGB(CRowIterator& image, int width, int height, const CVPalette* palette = nullptr);
    // Format 8 (8-bit, four channels).
    static bool CreateRGBA(CRowIterator& image, int width, int height, const CVPalette* palette = nullptr);
    // A new image of `like`'s size, format, palette and resolution, zero-filled.
    static bool CreateCompatible(CRowIterator& image, const CRowIterator& like);
    // A view of a DIB's pixels (bottom-up: negative stride); the DIB must outlive it.
    static bool AttachDib(CRowIterator& image, CDibIterator& dib);

    static bool IsAttached(const CRowIterator& image) { return image.IsAttached(); }
    static EVPixelFormat GetPixelFormat(const CRowIterator& image) { return image.GetPixelFormat(); }

    // Splits `area` (clipped to the image) into tiles of at most tileWidth x
    // tileHeight pixels. Empty for an empty area or a detached image.
    static STileLayout ImageToTile(const CRowIterator& image, const RECT& area, int tileWidth = kDefaultTileWidth,
                                   int tileHeight = kDefaultTileHeight);
    // The pixels of `rect` (clipped to the image) in place. False when nothing is left.
    static bool GetTile(CRowIterator& image, const RECT& rect, STile& tile);

    // Draws `source` of the image into `destination` of the device context
    // (stretching when the sizes differ) with the raster operation `rop`,
    // through GDI32.DLL's StretchDIBits. Formats 1, 3, 4, 5, 7, 8 and 9 (those a
    // DIB describes); false for others, when GDI32.DLL or its StretchDIBits is
    // not there, or when the drawing fails.
    static bool DrawImage(const CRowIterator& image, HDC hdc, const RECT& destination, const RECT& source,
                          DWORD rop);
};
