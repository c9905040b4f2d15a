#include "host/imaging/RowIteratorBands.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "host/imaging/DibIterator.h"

bool CRowIteratorBands::Create(CRowIterator& image, int width, int height, EVPixelFormat format,
                               const CVPalette* palette, const CColorRef* background, int resolution) {
    return image.Create(width, height, format, palette, background, resolution);
}

bool CRowIteratorBands::CreateGreyscale(CRowIterator& image, int width, int height, const CVPalette* palette) {
    return image.Create(width, height, VPF_GREY_8, palette);
}

bool CRowIteratorBands::CreateRGB(CRowIterator& image, int width, int height, const CVPalette* palette) {
    return image.Create(width, height, VPF_RGB_8, palette);
}

bool CRowIteratorBands::CreateRGBA(CRowIterator& image, int width, int height, const CVPalette* palette) {
    return image.Create(width, height, VPF_RGBA_8, palette);
}

bool CRowIteratorBands::CreateCompatible(CRowIterator& image, const CRowIterator& like) {
    if (!like.IsAttached()) {
        image.Detach();
        return false;
    }
    // `image` and `like` may be the same handle: read everything first.
    const int width = like.GetWidth(), height = like.GetHeight(), resolution = like.GetResolution();
    const EVPixelFormat format = like.GetPixelFormat();
    const CVPalette palette = like.GetPalette() ? *like.GetPalette() : CVPalette();
    return image.Create(width, height, format, palette.IsEmpty() ? nullptr : &palette, nullptr, resolution);
}

bool CRowIteratorBands::AttachDib(CRowIterator& image, CDibIterator& dib) {
    if (!dib.IsCreated()) {
        image.Detach();
        return false;
    }
    const int height = dib.GetHeight();
    BYTE* bits = dib.GetBits();
    BYTE* top = bits && height > 0 ? bits + size_t(height - 1) * size_t(dib.GetStride()) : bits;
    return image.Attach(top, dib.GetWidth(), height, dib.GetPixelFormat(), -std::ptrdiff_t(dib.GetStride()),
                        dib.GetPalette(), dib.GetResolution());
}

STileLayout CRowIteratorBands::ImageToTile(const CRowIterator& image, const RECT& area, int tileWidth,
                                           int tileHeight) {
    STileLayout layout;
    if (!image.IsAttached() || tileWidth < 1 || tileHeight < 1) return layout;
    const LONG left = std::max<LONG>(area.left, 0), top = std::max<LONG>(area.top, 0);
    const LONG right = std::min<LONG>(area.right, image.GetWidth());
    const LONG bottom = std::min<LONG>(area.bottom, image.GetHeight());
    if (left >= right || top >= bottom) return layout;
    layout.columns = int((right - left + tileWidth - 1) / tileWidth);
    layout.rows = int((bottom - top + tileHeight - 1) / tileHeight);
    layout.tiles.reserve(size_t(layout.columns) * size_t(layout.rows));
    for (int r = 0; r < layout.rows; ++r) {
        const LONG y0 = top + LONG(r) * tileHeight;
        for (int c = 0; c < layout.columns; ++c) {
            const LONG x0 = left + LONG(c) * tileWidth;
            layout.tiles.push_back(RECT{x0, y0, std::min<LONG>(x0 + tileWidth, right), std::min<LONG>(y0 + tileHeight, bottom)});
        }
    }
    return layout;
}

bool CRowIteratorBands::GetTile(CRowIterator& image, const RECT& rect, STile& tile) {
    tile = STile{};
    if (!image.IsAttached()) return false;
    const LONG left = std::max<LONG>(rect.left, 0), top = std::max<LONG>(rect.top, 0);
    const LONG right = std::min<LONG>(rect.right, image.GetWidth());
    const LONG bottom = std::min<LONG>(rect.bottom, image.GetHeight());
    if (left >= right || top >= bottom) return false;
    tile.bits = image.GetRow(top, left);
    tile.stride = image.GetStride();
    tile.width = right - left;
    tile.height = bottom - top;
    tile.rect = RECT{left, top, right, bottom};
    return tile.bits != nullptr;
}

namespace {

using StretchDIBitsFn = int (*)(HDC, int, int, int, int, int, int, int, int, const void*, const BITMAPINFO*, UINT,
                                DWORD);

// GDI32.DLL for the length of one drawing call.
class CGdiBinding {
public:
    CGdiBinding() : m_module(LoadLibraryW(L"GDI32.DLL")) {
        if (m_module) m_stretch = reinterpret_cast<StretchDIBitsFn>(reinterpret_cast<void*>(GetProcAddress(m_module, "StretchDIBits")));
    }
    ~CGdiBinding() {
        if (m_module) FreeLibrary(m_module);
    }
    CGdiBinding(const CGdiBinding&) = delete;
    CGdiBinding& operator=(const CGdiBinding&) = delete;
    StretchDIBitsFn Stretch() const { return m_stretch; }

private:
    HMODULE m_module;
    StretchDIBitsFn m_stretch = nullptr;
};

bool DibDescribes(EVPixelFormat format) {
    switch (format) {
    case VPF_INDEXED_1: case VPF_INDEXED_4: case VPF_INDEXED_8: case VPF_GREY_8:
    case VPF_RGB_8: case VPF_RGBA_8: case VPF_RGB_555: return true;
    default: return false;
    }
}

}  // namespace

bool CRowIteratorBands::DrawImage(const CRowIterator& image, HDC hdc, const RECT& destination, const RECT& source,
                                  DWORD rop) {
    const EVPixelFormat format = image.GetPixelFormat();
    if (!image.IsAttached() || !DibDescribes(format) || image.GetWidth() == 0 || image.GetHeight() == 0) return false;
    CGdiBinding gdi;
    if (!gdi.Stretch()) return false;

    const int width = image.GetWidth(), height = image.GetHeight();
    const int bits = CVPixelFormat::GetBitsPerPixel(format);
    const std::ptrdiff_t dibStride = std::ptrdiff_t((size_t(width) * size_t(bits) + 31) / 32 * 4);

    // Header and colour table: the image's palette, or greys for a grey image.
    CVPalette palette;
    if (format == VPF_GREY_8) palette.CreateGreyscale();
    else if (CVPixelFormat::IsIndexed(format) && image.GetPalette()) palette = *image.GetPalette();
    // A colour count of 0 tells GDI to read a full table: room for one is always there.
    const int tableSize = std::max({palette.GetCount(), CVPixelFormat::GetPaletteSize(format), 1});
    std::vector<BYTE> header(sizeof(BITMAPINFOHEADER) + sizeof(RGBQUAD) * size_t(tableSize));
    auto* info = reinterpret_cast<BITMAPINFO*>(header.data());
    info->bmiHeader.biSize = sizeof(BITMAPINFOHEADER);
    info->bmiHeader.biWidth = width;
    info->bmiHeader.biPlanes = 1;
    info->bmiHeader.biBitCount = WORD(bits);
    info->bmiHeader.biCompression = BI_RGB;
    info->bmiHeader.biClrUsed = DWORD(palette.GetCount());
    if (!palette.IsEmpty())
        std::memcpy(info->bmiColors, palette.GetEntries(), sizeof(RGBQUAD) * size_t(palette.GetCount()));

    // Rows laid out as a DIB's are handed over in place; others are copied.
    const void* pixels;
    std::vector<BYTE> copy;
    int sourceY = source.top;
    const std::ptrdiff_t stride = image.GetStride();
    if (stride == dibStride || height == 1) {
        info->bmiHeader.biHeight = -height;  // top-down
        pixels = image.GetRow(0);
    } else if (stride == -dibStride) {
        info->bmiHeader.biHeight = height;  // bottom-up: source rows count from the bottom
        pixels = image.GetRow(height - 1);
        sourceY = height - source.bottom;
    } else {
        copy.resize(size_t(dibStride) * size_t(height));
        for (int y = 0; y < height; ++y)
            std::memcpy(copy.data() + size_t(y) * size_t(dibStride), image.GetRow(y), size_t(image.GetBytesPerRow()));
        info->bmiHeader.biHeight = -height;
        pixels = copy.data();
    }
    const int drawn = gdi.Stretch()(hdc, destination.left, destination.top, destination.right - destination.left,
                                    destination.bottom - destination.top, source.left, sourceY,
                                    source.right - source.left, source.bottom - source.top, pixels, info,
                                    DIB_RGB_COLORS, rop);
    return drawn != 0;
}
