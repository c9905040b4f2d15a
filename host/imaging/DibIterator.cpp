#include "host/imaging/DibIterator.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>

#include "host/imaging/ImagingError.h"
#include "host/imaging/PixelCodec.h"

CDibIterator::CDibIterator() { UpdateHeader(); }
CDibIterator::~CDibIterator() = default;

IVError* CDibIterator::Create(int width, int height, EVPixelFormat format, const CColorRef& background,
                              const CVPalette* palette, int resolution) {
    m_bCreated = false;
    m_borrowed.clear();
    m_bits.clear();
    if (width < 0 || height < 0 || !CVPixelFormat::IsValid(format)) {
        UpdateHeader();
        return VImaging_MakeError(VIMG_ERR_ARGUMENT);
    }
    const size_t stride = (size_t(width) * size_t(GetBPP(format)) + 31) / 32 * 4;
    if (stride > size_t(INT32_MAX) || (height > 0 && stride > SIZE_MAX / size_t(height))) {
        UpdateHeader();
        return VImaging_MakeError(VIMG_ERR_NO_MEMORY);
    }
    try {
        m_bits.assign(stride * size_t(height), 0);
    } catch (const std::bad_alloc&) {
        UpdateHeader();
        return VImaging_MakeError(VIMG_ERR_NO_MEMORY);
    }
    m_nWidth = width;
    m_nHeight = height;
    m_nStride = int(stride);
    m_eFormat = format;
    m_nResolution = resolution;
    m_palette = palette ? *palette : CVPalette();
    m_bCreated = true;
    for (int y = 0; y < height; ++y) vimaging::FillRow(RowStart(y), format, width, background);
    UpdateHeader();
    return nullptr;
}

IVError* CDibIterator::CreateRGB(CDibIterator& dib, int width, int height, const CVPalette* palette) {
    return dib.Create(width, height, VPF_RGB_8, CColorRef(0, 0, 0), palette);
}

IVError* CDibIterator::CreateRGBA(CDibIterator& dib, int width, int height, const CVPalette* palette) {
    return dib.Create(width, height, VPF_RGBA_8, CColorRef(0, 0, 0, 0), palette);
}

IVError* CDibIterator::GetRow(int y, int x, int width, int pixelOffset, BYTE** row) {
    if (!row) return VImaging_MakeError(VIMG_ERR_ARGUMENT);
    *row = nullptr;
    if (!m_bCreated) return VImaging_MakeError(VIMG_ERR_NOT_ATTACHED);
    const int bits = GetBPP();
    const int perByte = bits < 8 ? 8 / bits : 1;
    if (y < 0 || y >= m_nHeight || x < 0 || width < 0 || (long long)x + width > m_nWidth || pixelOffset < 0 ||
        pixelOffset >= perByte)
        return VImaging_MakeError(VIMG_ERR_ARGUMENT);
    if (bits >= 8 || x % perByte == pixelOffset) {
        *row = RowStart(y) + size_t(x) * size_t(bits) / 8;
        return nullptr;
    }
    // The pixels do not lie where the caller wants them: lend a realigned copy.
    SBorrowedRow borrowed;
    const size_t bytes = (size_t(pixelOffset + width) * size_t(bits) + 7) / 8;
    borrowed.copy.reset(new (std::nothrow) BYTE[bytes]());
    if (!borrowed.copy) return VImaging_MakeError(VIMG_ERR_NO_MEMORY);
    const BYTE* source = RowStart(y);
    for (int i = 0; i < width; ++i)
        vimaging::SetPackedIndex(borrowed.copy.get(), pixelOffset + i, bits, vimaging::GetPackedIndex(source, x + i, bits));
    borrowed.y = y;
    borrowed.x = x;
    borrowed.width = width;
    borrowed.pixelOffset = pixelOffset;
    *row = borrowed.copy.get();
    m_borrowed.push_back(std::move(borrowed));
    return nullptr;
}

IVError* CDibIterator::ReleaseRow(BYTE* row) {
    auto it = std::find_if(m_borrowed.begin(), m_borrowed.end(),
                           [row](const SBorrowedRow& b) { return b.copy.get() == row; });
    if (it != m_borrowed.end()) {
        const int bits = GetBPP();
        BYTE* target = RowStart(it->y);
        for (int i = 0; i < it->width; ++i)
            vimaging::SetPackedIndex(target, it->x + i, bits, vimaging::GetPackedIndex(row, it->pixelOffset + i, bits));
        m_borrowed.erase(it);
        return nullptr;
    }
    if (row && !m_bits.empty() && row >= m_bits.data() && row < m_bits.data() + m_bits.size()) return nullptr;
    return VImaging_MakeError(VIMG_ERR_ARGUMENT);
}

const BITMAPINFO* CDibIterator::GetBitmapInfo() const { return reinterpret_cast<const BITMAPINFO*>(m_header.data()); }

bool CDibIterator::SetPalette(const RGBQUAD* entries, int count) {
    if (!m_palette.Set(entries, count)) return false;
    UpdateHeader();
    return true;
}

void CDibIterator::UpdateHeader() {
    // A colour count of 0 tells GDI to read a full table: room for one is always there.
    const int entries = std::max({m_palette.GetCount(), CVPixelFormat::GetPaletteSize(m_eFormat), 1});
    m_header.assign(sizeof(BITMAPINFOHEADER) + sizeof(RGBQUAD) * size_t(entries), 0);
    BITMAPINFOHEADER header{};
    header.biSize = sizeof(BITMAPINFOHEADER);
    header.biWidth = m_nWidth;
    header.biHeight = m_nHeight;  // bottom-up
    header.biPlanes = 1;
    header.biBitCount = WORD(GetBPP());
    header.biCompression = BI_RGB;
    header.biSizeImage = DWORD(m_bits.size());
    if (m_nResolution > 0) {
        // Dots per inch to pixels per metre, rounded.
        header.biXPelsPerMeter = header.biYPelsPerMeter = LONG((m_nResolution * 10000LL + 127) / 254);
    }
    header.biClrUsed = DWORD(m_palette.GetCount());
    std::memcpy(m_header.data(), &header, sizeof header);
    if (!m_palette.IsEmpty())
        std::memcpy(m_header.data() + sizeof header, m_palette.GetEntries(), sizeof(RGBQUAD) * size_t(m_palette.GetCount()));
}
