// Whole images, tiles, rows, palettes and single colours through the
// display transform or a one-off transform into the working space.
#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <vector>

#include "colormgr/ColorManager.h"
#include "host/imaging/GammaCorrect.h"
#include "host/imaging/RowIteratorBands.h"
#include "module/Trace.h"

namespace {

constexpr UINT kDefaultWorkingSpaceString = 10401;
constexpr int kPaletteEntries = 256;

// The platform bitmap format of a pixel format, or false when the colour
// code does not handle it. Indexed formats go through their palette.
bool PlatformFormat(EVPixelFormat format, BMFORMAT& platform, bool& indexed) {
    indexed = false;
    switch (format) {
        case VPF_INDEXED_1:
        case VPF_INDEXED_2:
        case VPF_INDEXED_4:
        case VPF_INDEXED_8:
            indexed = true;
            platform = BM_RGBTRIPLETS;
            return true;
        case VPF_GREY_8:  // handed over as if it were RGB triplets, as the colour code always has
        case VPF_RGB_8:
            platform = BM_RGBTRIPLETS;
            return true;
        case VPF_RGBA_8:
            platform = BM_xRGBQUADS;
            return true;
        case VPF_GREY_16:
        case VPF_GREY_ALPHA_16:
            platform = BM_16b_GRAY;
            return true;
        case VPF_RGB_16:
        case VPF_RGBA_16:
            platform = BM_16b_RGB;
            return true;
        default:
            return false;
    }
}

// The size measure the destination check uses; deliberately not byte-exact.
long long SizeMeasure(const CRowIterator& image) {
    return static_cast<long long>(image.GetHeight()) * (((static_cast<long long>(image.GetWidth()) + 1) * 3 / 4) * 4);
}

RTRACE ConversionTrace(const wchar_t* operation) { return RTRACE(operation, nullptr, kTraceInfoTag, 0); }

}  // namespace

HPROFILE CColorManager::OpenWorkingSpaceProfile() {
    CString name;
    if (!m_strWorkingSpace.IsNull())
        name = m_strWorkingSpace.Get();
    else
        name.LoadString(kDefaultWorkingSpaceString);
    if (name.IsEmpty()) return nullptr;
    return OpenProfileWithRetry(name.GetString());
}

HTRANSFORM CColorManager::OneOffTransformToWorkingSpace(HPROFILE source, HPROFILE workingSpace) {
    HPROFILE profiles[2] = {source, workingSpace};
    DWORD intents[2] = {INTENT_RELATIVE_COLORIMETRIC, INTENT_RELATIVE_COLORIMETRIC};
    return CreateTransform(profiles, 2, intents, 2);
}

bool CColorManager::TransformImage(void* sourceProfile, CDibIterator& source, CDibIterator& destination,
                                   CRowIterator* sourceRows, CRowIterator* destinationRows, bool) {
    HPROFILE workingSpace = OpenWorkingSpaceProfile();
    HTRANSFORM transform = OneOffTransformToWorkingSpace(sourceProfile, workingSpace);
    bool result = true;

    if (!sourceRows && !destinationRows) {
        const int width = source.GetWidth(), height = source.GetHeight();
        if (IVError* error = destination.Create(width, height, source.GetPixelFormat(), CColorRef(0, 0, 0, 255),
                                                source.GetPalette(), source.GetResolution()))
            error->Release();
        const DWORD rowBytes = static_cast<DWORD>(width) * 3;
        for (int y = 0; y < height; ++y) {
            BYTE* to = nullptr;
            BYTE* from = nullptr;
            if (IVError* error = destination.GetRow(y, 0, width, 0, &to)) error->Release();
            if (IVError* error = source.GetRow(y, 0, width, 0, &from)) error->Release();
            if (to && from && m_pfnTranslateBitmapBits &&
                !m_pfnTranslateBitmapBits(transform, from, BM_RGBTRIPLETS, static_cast<DWORD>(width), 1, rowBytes, to,
                                          BM_RGBTRIPLETS, rowBytes, nullptr, 0))
                Trace(ConversionTrace(L"CColorManager::TransformImage"), L"Error %u \n", GetLastError());
            if (to) destination.ReleaseRow(to);
            if (from) source.ReleaseRow(from);
        }
    } else if (sourceRows) {
        CRowIterator& target = destinationRows ? *destinationRows : *sourceRows;
        const int width = sourceRows->GetWidth(), height = sourceRows->GetHeight();
        const EVPixelFormat format = sourceRows->GetPixelFormat();
        if (format == VPF_RGB_8 && m_pfnTranslateBitmapBits) {
            const RECT whole = {0, 0, width, height};
            STileLayout layout = CRowIteratorBands::ImageToTile(*sourceRows, whole);
            for (int row = 0; row < layout.rows; ++row) {
                for (int column = 0; column < layout.columns; ++column) {
                    STile from, to;
                    if (!CRowIteratorBands::GetTile(*sourceRows, layout.At(row, column), from)) continue;
                    if (destinationRows && !CRowIteratorBands::GetTile(*destinationRows, layout.At(row, column), to))
                        continue;
                    if (!destinationRows) to = from;
                    // The platform walks rows downwards in memory: start bottom-up tiles at their last row.
                    for (STile* tile : {&from, &to})
                        if (tile->stride < 0) {
                            tile->bits += (tile->height - 1) * tile->stride;
                            tile->stride = -tile->stride;
                        }
                    m_pfnTranslateBitmapBits(transform, from.bits, BM_RGBTRIPLETS, static_cast<DWORD>(from.width),
                                             static_cast<DWORD>(from.height), static_cast<DWORD>(from.stride), to.bits,
                                             BM_RGBTRIPLETS, static_cast<DWORD>(to.stride), nullptr, 0);
                }
            }
        } else if (format == VPF_RGB_16 && m_pfnTranslateBitmapBits) {
            const size_t values = static_cast<size_t>(width) * 3;
            std::unique_ptr<uint16_t[]> input(new (std::nothrow) uint16_t[values + 1]);
            std::unique_ptr<uint16_t[]> output(new (std::nothrow) uint16_t[values + 1]);
            if (!input || !output) {
                result = false;
            } else {
                const DWORD rowBytes = static_cast<DWORD>(values * sizeof(uint16_t));
                for (int y = 0; y < height; ++y) {
                    const BYTE* from = sourceRows->GetRow(y);
                    BYTE* to = target.GetRow(y);
                    if (!from || !to) continue;
                    std::memcpy(input.get(), from, rowBytes);
                    std::memset(output.get(), 0, rowBytes);
                    m_pfnTranslateBitmapBits(transform, input.get(), BM_16b_RGB, static_cast<DWORD>(width), 1,
                                             rowBytes, output.get(), BM_16b_RGB, rowBytes, nullptr, 0);
                    std::memcpy(to, output.get(), rowBytes);
                }
            }
        }
    }

    if (transform && m_pfnDeleteColorTransform) m_pfnDeleteColorTransform(transform);
    if (workingSpace && m_pfnCloseColorProfile) m_pfnCloseColorProfile(workingSpace);
    return result;
}

bool CColorManager::TransformIterator(CRowIterator& source, CRowIterator* destination, bool gamma) {
    if (destination) {
        if (source.GetBitsPerPixel() != destination->GetBitsPerPixel()) return false;
        if (SizeMeasure(source) > SizeMeasure(*destination)) return false;
    }
    if (m_eMode != VCM_MODE_PROFILES) {
        if (m_eMode != VCM_MODE_TABLES || !gamma) return false;
        if (destination) RowIterator::CopyRect(*destination, source);
        GammaCorrectDIBInplace(destination ? *destination : source, m_abGammaTable0, m_abGammaTable1,
                               m_abGammaTable2);
        return true;
    }

    const EVPixelFormat format = source.GetPixelFormat();
    BMFORMAT platform = BM_RGBTRIPLETS;
    bool indexed = false;
    if (!PlatformFormat(format, platform, indexed) || !m_pfnTranslateBitmapBits) return false;

    if (indexed) {
        CRowIterator& target = destination ? *destination : source;
        if (destination) RowIterator::CopyRect(*destination, source);
        const CVPalette* palette = source.GetPalette();
        const int count = source.GetPaletteCount();
        if (!palette || count < 1 || count > kPaletteEntries) return false;
        BYTE table[kPaletteEntries * 3] = {};
        for (int i = 0; i < count; ++i) {
            const RGBQUAD& entry = (*palette)[i];
            table[i * 3] = entry.rgbBlue;
            table[i * 3 + 1] = entry.rgbGreen;
            table[i * 3 + 2] = entry.rgbRed;
        }
        if (!m_pfnTranslateBitmapBits(m_hImageTransform, table, BM_RGBTRIPLETS, static_cast<DWORD>(count), 1,
                                      static_cast<DWORD>(count), table, BM_RGBTRIPLETS, static_cast<DWORD>(count),
                                      nullptr, 0))
            return false;
        RGBQUAD entries[kPaletteEntries] = {};
        for (int i = 0; i < count; ++i) entries[i] = {table[i * 3], table[i * 3 + 1], table[i * 3 + 2], 0};
        target.SetPalette(entries, count);
        return true;
    }

    if (!m_hImageTransform) return false;
    CRowIterator temporary;
    CRowIterator* target = &source;
    if (destination) {
        RowIterator::CopyRect(*destination, source);
        target = destination;
    } else if (format == VPF_RGBA_16 || format == VPF_GREY_ALPHA_16) {
        // Only the colour channels may pass the transform; alpha stays behind.
        const EVPixelFormat colourOnly = format == VPF_RGBA_16 ? VPF_RGB_16 : VPF_GREY_16;
        if (CRowIteratorBands::Create(temporary, source.GetWidth(), source.GetHeight(), colourOnly) &&
            RowIterator::CopyColor(temporary, source))
            target = &temporary;
    }

    const int width = target->GetWidth();
    const DWORD rowBytes = static_cast<DWORD>(target->GetBytesPerRow());
    // Grey rows go over as RGB triplets, three bytes a pixel: give the platform a
    // row that long so it never reads or writes past the image's own row.
    std::vector<BYTE> widened;
    if (platform == BM_RGBTRIPLETS && format == VPF_GREY_8) widened.resize(static_cast<size_t>(width) * 3 + 4);
    for (int y = 0; y < target->GetHeight(); ++y) {
        BYTE* row = target->GetRow(y);
        if (!row) continue;
        if (widened.empty()) {
            m_pfnTranslateBitmapBits(m_hImageTransform, row, platform, static_cast<DWORD>(width), 1, rowBytes, row,
                                     platform, rowBytes, nullptr, 0);
        } else {
            std::fill(widened.begin(), widened.end(), BYTE{0});
            std::memcpy(widened.data(), row, rowBytes);
            m_pfnTranslateBitmapBits(m_hImageTransform, widened.data(), platform, static_cast<DWORD>(width), 1,
                                     rowBytes, widened.data(), platform, rowBytes, nullptr, 0);
            std::memcpy(row, widened.data(), rowBytes);
        }
    }
    if (target == &temporary) RowIterator::CopyColor(source, temporary);
    return true;
}

void CColorManager::TransformPaletteColors(void* sourceProfile, RGBQUAD* palette, int count) {
    HPROFILE workingSpace = OpenWorkingSpaceProfile();
    HTRANSFORM transform = OneOffTransformToWorkingSpace(sourceProfile, workingSpace);
    if (palette && count > 0 && m_pfnTranslateBitmapBits) {
        std::vector<BYTE> triplets(static_cast<size_t>(count) * 3);
        // Red first here, unlike the display palette path: the byte order is reversed on purpose.
        for (int i = 0; i < count; ++i) {
            triplets[i * 3] = palette[i].rgbRed;
            triplets[i * 3 + 1] = palette[i].rgbGreen;
            triplets[i * 3 + 2] = palette[i].rgbBlue;
        }
        const DWORD rowBytes = static_cast<DWORD>(count) * 3;
        m_pfnTranslateBitmapBits(transform, triplets.data(), BM_RGBTRIPLETS, static_cast<DWORD>(count), 1, rowBytes,
                                 triplets.data(), BM_RGBTRIPLETS, rowBytes, nullptr, 0);
        GetLastError();
        for (int i = 0; i < count; ++i) {
            palette[i].rgbRed = triplets[i * 3];
            palette[i].rgbGreen = triplets[i * 3 + 1];
            palette[i].rgbBlue = triplets[i * 3 + 2];
        }
    }
    if (transform && m_pfnDeleteColorTransform) m_pfnDeleteColorTransform(transform);
    if (workingSpace && m_pfnCloseColorProfile) m_pfnCloseColorProfile(workingSpace);
}

void CColorManager::TransformColor(DWORD& color) {
    HPROFILE workingSpace = OpenWorkingSpaceProfile();
    if (!m_pQFXProfile) {
        if (workingSpace && m_pfnCloseColorProfile) m_pfnCloseColorProfile(workingSpace);
        throw CVException(VELL_ERR_NO_MEMORY);
    }
    CICCReadColorProfile qfx;
    bool valid = false;
    qfx.CreateFromRawData(m_pQFXProfile, static_cast<unsigned long>(m_nQFXProfileSize), valid);
    HTRANSFORM transform = OneOffTransformToWorkingSpace(qfx.GetProfile(), workingSpace);

    COLOR input{}, output{};
    input.rgb.red = static_cast<WORD>((color & 0xFF) * 256);
    input.rgb.green = static_cast<WORD>(color & 0xFF00);
    input.rgb.blue = static_cast<WORD>((color >> 8) & 0xFF00);
    output = input;
    if (m_pfnTranslateColors) m_pfnTranslateColors(transform, &input, 1, COLOR_RGB, &output, COLOR_RGB);
    color = (static_cast<DWORD>(output.rgb.blue >> 8) << 16) | (output.rgb.green & 0xFF00u) | (output.rgb.red >> 8);

    if (transform && m_pfnDeleteColorTransform) m_pfnDeleteColorTransform(transform);
    if (workingSpace && m_pfnCloseColorProfile) m_pfnCloseColorProfile(workingSpace);
}

bool CColorManager::ProcessColors(RGBQUAD* input, RGBQUAD* output, int count) {
    // The table holds 256 colours; a negative count converts none. Within
    // that the platform sees the count as given, even 0.
    const int colours = std::clamp(count, 0, kPaletteEntries);
    if (colours > 0 && (!input || !output)) return false;
    if (m_eMode == VCM_MODE_PROFILES && m_hImageTransform && m_pfnTranslateBitmapBits) {
        BYTE table[kPaletteEntries * 3] = {};
        for (int i = 0; i < colours; ++i) std::memcpy(&table[i * 3], &input[i], 3);
        if (!m_pfnTranslateBitmapBits(m_hImageTransform, table, BM_RGBTRIPLETS, static_cast<DWORD>(colours), 1,
                                      static_cast<DWORD>(colours), table, BM_RGBTRIPLETS,
                                      static_cast<DWORD>(colours), nullptr, 0))
            return false;
        for (int i = 0; i < colours; ++i) std::memcpy(&output[i], &table[i * 3], 3);
        return true;
    }
    if (count > 0) std::memmove(output, input, static_cast<size_t>(count) * sizeof(RGBQUAD));
    return false;
}

int CColorManager::FindGreyscaleIndex(DWORD color) {
    if (m_greyPalette.IsEmpty()) m_greyPalette.CreateGreyscale();
    return m_greyPalette.FindNearestEntry(static_cast<int>(color), static_cast<int>(color >> 8),
                                          static_cast<int>(color >> 16));
}
