// Bitmaps and the raster calls: pixels reach a DC's surface row by row.
#include <tesk/export_guard.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "dib.h"
#include "display.h"
#include "gdi_objects.h"
#include "icm_matching.h"

using namespace tesk;

namespace {

constexpr int64_t kMaxBitmapPixels = int64_t(1) << 28;

// Writes `count` pixels starting at (x, y), clipped to the surface, through
// the DC's colour matching when ICM is on.
void WriteRow(gdi::DeviceContext& dc, gdi::Bitmap& surface, int x, int y, uint32_t* pixels, int count) {
    if (y < 0 || y >= surface.height) return;
    int first = std::max(0, -x);
    int last = std::min(count, surface.width - x);
    if (first >= last) return;
    gdi::MatchPixels(dc, pixels + first, last - first);
    std::memcpy(surface.Row(y) + x + first, pixels + first, size_t(last - first) * sizeof(uint32_t));
}

// A display's drawn rectangle goes on to the screen.
void Present(const gdi::DeviceContext& dc, const gdi::Bitmap& surface, int64_t left, int64_t top, int64_t right,
             int64_t bottom) {
    if (dc.kind != gdi::DeviceKind::Display) return;
    RECT rect{LONG(std::clamp<int64_t>(left, 0, surface.width)), LONG(std::clamp<int64_t>(top, 0, surface.height)),
              LONG(std::clamp<int64_t>(right, 0, surface.width)), LONG(std::clamp<int64_t>(bottom, 0, surface.height))};
    if (rect.left < rect.right && rect.top < rect.bottom)
        display::Current().Present(dc.adapter, dc.window, surface.pixels.data(), surface.width, rect);
}

bool IsSupportedRop(DWORD rop) { return rop == SRCCOPY || rop == BLACKNESS || rop == WHITENESS; }

uint32_t ApplyRop(DWORD rop, uint32_t source) {
    if (rop == BLACKNESS) return 0;
    if (rop == WHITENESS) return 0x00FFFFFFu;
    return source;
}

gdi::Bitmap* TargetSurface(HDC hdc, gdi::DeviceContext*& dc) {
    dc = gdi::FindDeviceContext(hdc);
    if (!dc) return nullptr;
    gdi::Bitmap* surface = gdi::Surface(hdc, *dc);
    if (!surface) SetLastError(ERROR_INVALID_PARAMETER);
    return surface;
}

}  // namespace

HBITMAP WINAPI CreateCompatibleBitmap(HDC hdc, int cx, int cy) try {
    auto lock = gdi::Lock();
    if (!gdi::FindDeviceContext(hdc)) return nullptr;
    if (cx < 0 || cy < 0 || int64_t(cx) * int64_t(cy) > kMaxBitmapPixels) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    // As on Windows, an empty size gives a 1 x 1 bitmap.
    auto bitmap = std::make_shared<gdi::Bitmap>(std::max(cx, 1), std::max(cy, 1));
    std::fill(bitmap->pixels.begin(), bitmap->pixels.end(), 0u);
    return gdi::AddBitmap(std::move(bitmap));
} catch (...) {
    return tesk::FailAtBoundary(HBITMAP{});
}

HGDIOBJ WINAPI SelectObject(HDC hdc, HGDIOBJ h) try {
    auto lock = gdi::Lock();
    gdi::DeviceContext* dc = gdi::FindDeviceContext(hdc);
    if (!dc) return nullptr;
    gdi::Bitmap* bitmap = gdi::FindBitmap(static_cast<HBITMAP>(h));
    if (!bitmap) return nullptr;
    // Bitmaps go into memory DCs only, and into one at a time.
    if (dc->kind != gdi::DeviceKind::Memory || (bitmap->selectedInto && bitmap->selectedInto != hdc) ||
        (bitmap->stock && static_cast<HBITMAP>(h) != dc->stockBitmap)) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    HBITMAP previous = dc->bitmap;
    if (gdi::Bitmap* old = gdi::FindBitmap(previous)) old->selectedInto = nullptr;
    bitmap->selectedInto = hdc;
    dc->bitmap = static_cast<HBITMAP>(h);
    return previous;
} catch (...) {
    return tesk::FailAtBoundary(HGDIOBJ{});
}

BOOL WINAPI DeleteObject(HGDIOBJ ho) try {
    auto lock = gdi::Lock();
    gdi::Bitmap* bitmap = gdi::FindBitmap(static_cast<HBITMAP>(ho));
    if (!bitmap) return FALSE;
    if (bitmap->selectedInto || bitmap->stock) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    return gdi::RemoveBitmap(static_cast<HBITMAP>(ho)) ? TRUE : FALSE;
} catch (...) {
    return tesk::FailAtBoundary(BOOL{FALSE});
}

COLORREF WINAPI GetPixel(HDC hdc, int x, int y) try {
    auto lock = gdi::Lock();
    gdi::DeviceContext* dc = nullptr;
    gdi::Bitmap* surface = TargetSurface(hdc, dc);
    if (!surface || x < 0 || y < 0 || x >= surface->width || y >= surface->height) return CLR_INVALID;
    uint32_t pixel = surface->Row(y)[x];
    return RGB((pixel >> 16) & 0xFF, (pixel >> 8) & 0xFF, pixel & 0xFF);
} catch (...) {
    return tesk::FailAtBoundary(COLORREF{CLR_INVALID});
}

BOOL WINAPI BitBlt(HDC hdc, int x, int y, int cx, int cy, HDC hdcSrc, int x1, int y1, DWORD rop) try {
    auto lock = gdi::Lock();
    gdi::DeviceContext* dc = nullptr;
    gdi::Bitmap* target = TargetSurface(hdc, dc);
    if (!target) return FALSE;
    // No rectangle larger than the largest bitmap: its block is allocated below.
    if (!IsSupportedRop(rop) || cx < 0 || cy < 0 || int64_t(cx) * int64_t(cy) > kMaxBitmapPixels) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    gdi::Bitmap* source = nullptr;
    if (rop == SRCCOPY) {
        gdi::DeviceContext* sourceDc = nullptr;
        source = TargetSurface(hdcSrc, sourceDc);
        if (!source) return FALSE;
    }
    // Rows are taken before any is written, so overlapping copies on one surface work.
    std::vector<uint32_t> block(size_t(cx) * size_t(cy), 0);
    for (int row = 0; row < cy; ++row)
        for (int col = 0; col < cx; ++col) {
            uint32_t pixel = 0;
            if (source) {
                int sx = x1 + col, sy = y1 + row;
                if (sx < 0 || sy < 0 || sx >= source->width || sy >= source->height) continue;
                pixel = source->Row(sy)[sx];
            }
            block[size_t(row) * size_t(cx) + size_t(col)] = ApplyRop(rop, pixel);
        }
    for (int row = 0; row < cy; ++row) WriteRow(*dc, *target, x, y + row, block.data() + size_t(row) * size_t(cx), cx);
    Present(*dc, *target, x, y, int64_t(x) + cx, int64_t(y) + cy);
    return TRUE;
} catch (...) {
    return tesk::FailAtBoundary(BOOL{FALSE});
}

// The source rectangle counts rows from the bottom of a bottom-up DIB (its
// origin is the lower-left corner, as on Windows) and from the top of a
// top-down one. The buffer holds the scan lines StartScan .. StartScan +
// cLines - 1, counted the same way.
int WINAPI SetDIBitsToDevice(HDC hdc, int xDest, int yDest, DWORD w, DWORD h, int xSrc, int ySrc, UINT StartScan,
                             UINT cLines, const void* lpvBits, const BITMAPINFO* lpbmi, UINT ColorUse) try {
    auto lock = gdi::Lock();
    gdi::DeviceContext* dc = nullptr;
    gdi::Bitmap* target = TargetSurface(hdc, dc);
    if (!target) return 0;
    std::optional<gdi::DibReader> dib = gdi::DibReader::Make(lpbmi, ColorUse, lpvBits);
    if (!dib) return 0;
    if (w > (1u << 20) || h > (1u << 20) || cLines > UINT(dib->Height()) || StartScan > UINT(dib->Height())) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    std::vector<uint32_t> line(w);
    for (DWORD k = 0; k < h; ++k) {
        // Scan-line number of source row k of the rectangle, in the DIB's own counting.
        int64_t scan = dib->TopDown() ? int64_t(ySrc) + k : int64_t(ySrc) + int64_t(h) - 1 - k;
        if (scan < int64_t(StartScan) || scan >= int64_t(StartScan) + cLines || scan >= dib->Height()) continue;
        int64_t bufferRow = scan - StartScan;
        int count = 0;
        int firstX = 0;
        for (DWORD i = 0; i < w; ++i) {
            int64_t sx = int64_t(xSrc) + i;
            if (sx < 0 || sx >= dib->Width()) {
                if (count == 0) firstX = int(i) + 1;
                continue;
            }
            line[size_t(count++)] = dib->Pixel(int(sx), int(bufferRow));
        }
        WriteRow(*dc, *target, xDest + firstX, int(yDest + int64_t(k)), line.data(), count);
    }
    Present(*dc, *target, xDest, yDest, int64_t(xDest) + w, int64_t(yDest) + h);
    return int(cLines);
} catch (...) {
    return tesk::FailAtBoundary(0);
}

int WINAPI StretchDIBits(HDC hdc, int xDest, int yDest, int DestWidth, int DestHeight, int xSrc, int ySrc,
                         int SrcWidth, int SrcHeight, const void* lpBits, const BITMAPINFO* lpbmi, UINT iUsage,
                         DWORD rop) try {
    auto lock = gdi::Lock();
    gdi::DeviceContext* dc = nullptr;
    gdi::Bitmap* target = TargetSurface(hdc, dc);
    if (!target) return 0;
    std::optional<gdi::DibReader> dib = gdi::DibReader::Make(lpbmi, iUsage, lpBits);
    if (!dib) return 0;
    if (!IsSupportedRop(rop) || DestWidth == 0 || DestHeight == 0 || SrcWidth == 0 || SrcHeight == 0 ||
        std::abs(int64_t(DestWidth)) > (1 << 20) || std::abs(int64_t(DestHeight)) > (1 << 20)) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    // A negative width or height on either side mirrors along that axis.
    bool mirrorX = (DestWidth < 0) != (SrcWidth < 0);
    bool mirrorY = (DestHeight < 0) != (SrcHeight < 0);
    int64_t dw = std::abs(int64_t(DestWidth)), dh = std::abs(int64_t(DestHeight));
    int64_t sw = std::abs(int64_t(SrcWidth)), sh = std::abs(int64_t(SrcHeight));
    int64_t left = DestWidth < 0 ? int64_t(xDest) + DestWidth + 1 : xDest;
    int64_t top = DestHeight < 0 ? int64_t(yDest) + DestHeight + 1 : yDest;
    int64_t srcLeft = SrcWidth < 0 ? int64_t(xSrc) + SrcWidth + 1 : xSrc;
    int64_t srcBottomOrTop = SrcHeight < 0 ? int64_t(ySrc) + SrcHeight + 1 : ySrc;
    // Row of the rectangle's top in memory order.
    int64_t srcTopRow = dib->TopDown() ? srcBottomOrTop : int64_t(dib->Height()) - srcBottomOrTop - sh;

    std::vector<uint32_t> line(size_t(dw), 0);
    for (int64_t j = 0; j < dh; ++j) {
        int64_t rowInRect = (2 * j + 1) * sh / (2 * dh);
        if (mirrorY) rowInRect = sh - 1 - rowInRect;
        int64_t imageRow = srcTopRow + rowInRect;  // from the top of the image
        if (imageRow < 0 || imageRow >= dib->Height()) continue;
        int64_t bufferRow = dib->TopDown() ? imageRow : dib->Height() - 1 - imageRow;
        int64_t count = 0, firstX = 0;
        for (int64_t i = 0; i < dw; ++i) {
            int64_t colInRect = (2 * i + 1) * sw / (2 * dw);
            if (mirrorX) colInRect = sw - 1 - colInRect;
            int64_t sx = srcLeft + colInRect;
            if (sx < 0 || sx >= dib->Width()) {
                if (count == 0) firstX = i + 1;
                continue;
            }
            line[size_t(count++)] = ApplyRop(rop, dib->Pixel(int(sx), int(bufferRow)));
        }
        WriteRow(*dc, *target, int(left + firstX), int(top + j), line.data(), int(count));
    }
    Present(*dc, *target, left, top, left + dw, top + dh);
    return int(sh);
} catch (...) {
    return tesk::FailAtBoundary(0);
}

int WINAPI GetDIBits(HDC hdc, HBITMAP hbm, UINT start, UINT cLines, LPVOID lpvBits, LPBITMAPINFO lpbmi, UINT usage) try {
    auto lock = gdi::Lock();
    if (!gdi::FindDeviceContext(hdc)) return 0;
    gdi::Bitmap* bitmap = gdi::FindBitmap(hbm);
    if (!bitmap) return 0;
    if (!lpbmi || lpbmi->bmiHeader.biSize < sizeof(BITMAPINFOHEADER) || usage != DIB_RGB_COLORS) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    BITMAPINFOHEADER& header = lpbmi->bmiHeader;
    if (!lpvBits) {
        // Describe the bitmap.
        header.biWidth = bitmap->width;
        header.biHeight = bitmap->height;
        header.biPlanes = 1;
        header.biBitCount = 32;
        header.biCompression = BI_RGB;
        header.biSizeImage = DWORD(gdi::DibStride(bitmap->width, 32) * size_t(bitmap->height));
        return bitmap->height;
    }
    if ((header.biBitCount != 24 && header.biBitCount != 32) || header.biCompression != BI_RGB ||
        header.biWidth != bitmap->width || header.biHeight == 0 || header.biHeight == INT32_MIN) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    bool topDown = header.biHeight < 0;
    int height = std::abs(header.biHeight);
    if (start >= UINT(height)) return 0;
    UINT lines = std::min<UINT>(cLines, UINT(height) - start);
    size_t stride = gdi::DibStride(bitmap->width, header.biBitCount);
    auto* out = static_cast<uint8_t*>(lpvBits);
    for (UINT n = 0; n < lines; ++n) {
        // Scan line start + n, counted from the top or the bottom as the DIB runs.
        int64_t fromTop = topDown ? int64_t(start) + n : int64_t(height) - 1 - (int64_t(start) + n);
        uint8_t* row = out + size_t(n) * stride;
        std::memset(row, 0, stride);
        if (fromTop >= bitmap->height) continue;
        const uint32_t* pixels = bitmap->Row(int(fromTop));
        for (int x = 0; x < bitmap->width; ++x) {
            uint8_t* p = row + size_t(x) * (header.biBitCount / 8);
            p[0] = uint8_t(pixels[x]);
            p[1] = uint8_t(pixels[x] >> 8);
            p[2] = uint8_t(pixels[x] >> 16);
        }
    }
    return int(lines);
} catch (...) {
    return tesk::FailAtBoundary(0);
}
