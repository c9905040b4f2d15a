// CDibIterator: a device-independent bitmap (BITMAPINFO header, palette, rows
// bottom-up, each padded to 4 bytes) with row access at any pixel, including
// pixels that do not start on a byte boundary.
#pragma once
#include <windows.h>

#include <cstddef>
#include <memory>
#include <vector>

#include "host/Unknown.h"
#include "host/imaging/ColorRef.h"
#include "host/imaging/ImagingApi.h"
#include "host/imaging/Palette.h"
#include "host/imaging/PixelFormat.h"

class VIMAGING_API CDibIterator {
public:
    CDibIterator();
    ~CDibIterator();
    CDibIterator(const CDibIterator&) = delete;
    CDibIterator& operator=(const CDibIterator&) = delete;

    // The calls below return null on success, else an error object the caller
    // releases (EVImagingError codes).

    // A new bitmap filled with `background` (its index for indexed formats);
    // `resolution` in dots per inch, -1 when unknown.
    IVError* Create(int width, int height, EVPixelFormat format, const CColorRef& background,
                    const CVPalette* palette = nullptr, int resolution = -1);
    static IVError* Create(CDibIterator& dib, int width, int height, EVPixelFormat format,
                           const CColorRef& background, const CVPalette* palette = nullptr, int resolution = -1) {
        return dib.Create(width, height, format, background, palette, resolution);
    }
    static IVError* CreateRGB(CDibIterator& dib, int width, int height, const CVPalette* palette = nullptr);
    static IVError* CreateRGBA(CDibIterator& dib, int width, int height, const CVPalette* palette = nullptr);

    // Row y, pixels x to x + width - 1. `*row` receives a pointer to the byte
    // that holds pixel x at pixel position `pixelOffset` within that byte
    // (always 0 for formats of 8 bits or more). When the bitmap's own bits
    // already lie that way the pointer is into the bitmap; otherwise it is a
    // realigned copy whose changes reach the bitmap at ReleaseRow.
    IVError* GetRow(int y, int x, int width, int pixelOffset, BYTE** row);
    // Ends the use of a row from GetRow (writing a realigned copy back).
    IVError* ReleaseRow(BYTE* row);

    bool IsCreated() const { return m_bCreated; }
    int GetWidth() const { return m_nWidth; }
    int GetHeight() const { return m_nHeight; }
    EVPixelFormat GetPixelFormat() const { return m_eFormat; }
    int GetResolution() const { return m_nResolution; }
    int GetBPP() const { return GetBPP(m_eFormat); }
    static int GetBPP(EVPixelFormat format) { return CVPixelFormat::GetBitsPerPixel(format); }
    // Bytes from one row to the next in memory (rows are stored bottom-up).
    int GetStride() const { return m_nStride; }
    // The pixel data: the bottom row first.
    BYTE* GetBits() { return m_bits.empty() ? nullptr : m_bits.data(); }
    // Header and colour table, as GDI takes them.
    const BITMAPINFO* GetBitmapInfo() const;

    const CVPalette* GetPalette() const { return m_palette.IsEmpty() ? nullptr : &m_palette; }
    int GetPaletteCount() const { return m_palette.GetCount(); }
    bool SetPalette(const RGBQUAD* entries, int count);

private:
    struct SBorrowedRow {
        std::unique_ptr<BYTE[]> copy;
        int y = 0, x = 0, width = 0, pixelOffset = 0;
    };
    BYTE* RowStart(int y) { return m_bits.data() + size_t(m_nHeight - 1 - y) * size_t(m_nStride); }
    void UpdateHeader();

    int m_nWidth = 0;
    int m_nHeight = 0;
    int m_nStride = 0;
    int m_nResolution = -1;
    bool m_bCreated = false;
    EVPixelFormat m_eFormat = VPF_UNKNOWN;
    CVPalette m_palette;
    std::vector<BYTE> m_bits;
    std::vector<BYTE> m_header;  // BITMAPINFOHEADER followed by the colour table
    std::vector<SBorrowedRow> m_borrowed;
};
