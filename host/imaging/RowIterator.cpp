#include "host/imaging/RowIterator.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "host/imaging/PixelBlocks.h"
#include "host/imaging/PixelCodec.h"

namespace {

struct SGiveBack {
    size_t bytes = 0;
    void operator()(BYTE* p) const { vimaging::GiveBackBlock(p, bytes); }
};

}  // namespace

struct CRowIterator::SImage {
    std::unique_ptr<BYTE, SGiveBack> owned;
    BYTE* firstRow = nullptr;
    std::ptrdiff_t stride = 0;
    int width = 0;
    int height = 0;
    int resolution = -1;
    EVPixelFormat format = VPF_UNKNOWN;
    CVPalette palette;
};

namespace {

bool ValidGeometry(int width, int height, EVPixelFormat format) {
    return width >= 0 && height >= 0 && CVPixelFormat::IsValid(format);
}

}  // namespace

bool CRowIterator::Create(int width, int height, EVPixelFormat format, const CVPalette* palette,
                          const CColorRef* background, int resolution) {
    m_image.reset();
    if (!ValidGeometry(width, height, format)) return false;
    const long long rowBytes = CVPixelFormat::GetRowBytes(format, width);
    const long long stride = (rowBytes + 3) / 4 * 4;
    auto image = std::make_shared<SImage>();
    if (height > 0 && size_t(stride) > SIZE_MAX / size_t(height)) return false;
    const size_t total = size_t(stride) * size_t(height);
    if (total > 0) {
        image->owned = std::unique_ptr<BYTE, SGiveBack>(vimaging::TakeZeroedBlock(total), SGiveBack{total});
        if (!image->owned) return false;
    }
    image->firstRow = image->owned.get();
    image->stride = std::ptrdiff_t(stride);
    image->width = width;
    image->height = height;
    image->format = format;
    image->resolution = resolution;
    if (palette) image->palette = *palette;
    if (background) {
        for (int y = 0; y < height; ++y) {
            vimaging::FillRow(image->firstRow + std::ptrdiff_t(y) * image->stride, format, width, *background);
        }
    }
    m_image = std::move(image);
    return true;
}

bool CRowIterator::Attach(BYTE* firstRow, int width, int height, EVPixelFormat format, std::ptrdiff_t stride,
                          const CVPalette* palette, int resolution) {
    m_image.reset();
    if (!ValidGeometry(width, height, format)) return false;
    const long long rowBytes = CVPixelFormat::GetRowBytes(format, width);
    if (height > 0 && rowBytes > 0 && (!firstRow || (height > 1 && std::abs(stride) < rowBytes))) return false;
    auto image = std::make_shared<SImage>();
    image->firstRow = firstRow;
    image->stride = stride;
    image->width = width;
    image->height = height;
    image->format = format;
    image->resolution = resolution;
    if (palette) image->palette = *palette;
    m_image = std::move(image);
    return true;
}

int CRowIterator::GetWidth() const { return m_image ? m_image->width : 0; }
int CRowIterator::GetHeight() const { return m_image ? m_image->height : 0; }
EVPixelFormat CRowIterator::GetPixelFormat() const { return m_image ? m_image->format : VPF_UNKNOWN; }
int CRowIterator::GetBitsPerPixel() const { return CVPixelFormat::GetBitsPerPixel(GetPixelFormat()); }
int CRowIterator::GetResolution() const { return m_image ? m_image->resolution : -1; }
std::ptrdiff_t CRowIterator::GetStride() const { return m_image ? m_image->stride : 0; }
int CRowIterator::GetBytesPerRow() const { return int(CVPixelFormat::GetRowBytes(GetPixelFormat(), GetWidth())); }
RECT CRowIterator::GetRect() const { return RECT{0, 0, GetWidth(), GetHeight()}; }

BYTE* CRowIterator::GetRow(int y, int x) {
    if (!m_image || y < 0 || y >= m_image->height || x < 0 || x >= std::max(m_image->width, 1)) return nullptr;
    return m_image->firstRow + std::ptrdiff_t(y) * m_image->stride +
           std::ptrdiff_t(x) * CVPixelFormat::GetBitsPerPixel(m_image->format) / 8;
}

const BYTE* CRowIterator::GetRow(int y, int x) const { return const_cast<CRowIterator*>(this)->GetRow(y, x); }

const CVPalette* CRowIterator::GetPalette() const {
    return m_image && !m_image->palette.IsEmpty() ? &m_image->palette : nullptr;
}

int CRowIterator::GetPaletteCount() const { return m_image ? m_image->palette.GetCount() : 0; }

bool CRowIterator::SetPalette(const RGBQUAD* entries, int count) {
    return m_image && m_image->palette.Set(entries, count);
}

bool CRowIterator::SetPalette(const CVPalette& palette) {
    if (!m_image) return false;
    m_image->palette = palette;
    return true;
}
