// RGB images separated into four ink plates, or into one packed CMYK image,
// through the CMYK profile.
#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <vector>

#include "colormgr/ColorManager.h"
#include "conversion/HighByteReduction.h"
#include "conversion/PlateSplit.h"
#include "conversion/PlatformRows.h"
#include "conversion/RowAccess.h"
#include "host/imaging/RowIteratorBands.h"

namespace {

constexpr UINT kDefaultWorkingSpaceString = 10401;

// How a source row becomes the platform's input.
enum class WorkConversion { None, GreyToRGB, Grey16ToRGB, HighBytes };

struct SeparationInput {
    WorkConversion conversion = WorkConversion::None;
    BMFORMAT format = BM_RGBTRIPLETS;
    size_t workBytesPerPixel = 0;  // 0: the source row goes to the platform as it is
    size_t samplesPerPixel = 0;    // 16-bit samples reduced per pixel
};

bool DescribeSeparationInput(EVPixelFormat format, SeparationInput& input) {
    static constexpr struct {
        EVPixelFormat format;
        SeparationInput input;
    } kInputs[] = {
        {VPF_GREY_8, {WorkConversion::GreyToRGB, BM_RGBTRIPLETS, 3, 0}},
        {VPF_RGB_8, {WorkConversion::None, BM_RGBTRIPLETS, 0, 0}},
        {VPF_RGBA_8, {WorkConversion::None, BM_xRGBQUADS, 0, 0}},
        {VPF_GREY_16, {WorkConversion::Grey16ToRGB, BM_RGBTRIPLETS, 3, 0}},
        {VPF_RGB_16, {WorkConversion::HighBytes, BM_RGBTRIPLETS, 3, 3}},
        {VPF_RGBA_16, {WorkConversion::HighBytes, BM_xRGBQUADS, 4, 4}},
    };
    for (const auto& entry : kInputs)
        if (entry.format == format) {
            input = entry.input;
            return true;
        }
    return false;
}

// 16-bit plates carry the 8-bit ink value times 257.
void WritePlates(const BYTE* quads, int width, bool sixteenBit, bool invert, BYTE* const plates[4]) {
    if (!sixteenBit) {
        SplitQuads(quads, static_cast<size_t>(width), plates, invert ? 0xFF : 0x00);
        return;
    }
    uint16_t* const widePlates[4] = {reinterpret_cast<uint16_t*>(plates[0]), reinterpret_cast<uint16_t*>(plates[1]),
                                     reinterpret_cast<uint16_t*>(plates[2]), reinterpret_cast<uint16_t*>(plates[3])};
    SplitQuadsWide(quads, static_cast<size_t>(width), widePlates, invert ? 0xFFFF : 0x0000);
}

}  // namespace

HPROFILE CColorManager::OpenWorkingRGBProfile(CICCReadColorProfile& reader) {
    CString name;
    if (!m_strWorkingSpace.IsNull())
        name = m_strWorkingSpace.Get();
    else
        name.LoadString(kDefaultWorkingSpaceString);
    HPROFILE profile = reader.OpenICCProfile(const_cast<wchar_t*>(name.GetString()));
    return profile ? profile : GetRGBProfile(reader);
}

HPROFILE CColorManager::OpenDefaultCMYKProfile(CICCReadColorProfile& reader) {
    CString name;
    GetDefaultCMYKString(name);
    HPROFILE profile = reader.OpenICCProfile(const_cast<wchar_t*>(name.GetString()));
    return profile ? profile : GetCMYKProfile(reader);
}

HTRANSFORM CColorManager::OpenRGBToCMYKTransform(DWORD intent, CICCReadColorProfile& cmykReader, HPROFILE& cmyk) {
    cmyk = OpenDefaultCMYKProfile(cmykReader);
    if (!cmyk) return nullptr;
    CICCReadColorProfile rgbReader;
    HPROFILE rgb = OpenWorkingRGBProfile(rgbReader);
    HTRANSFORM transform = nullptr;
    if (rgb) {
        HPROFILE profiles[2] = {rgb, cmyk};
        DWORD intents[2] = {intent, intent};
        transform = CreateTransform(profiles, 2, intents, 2);
        rgbReader.CloseProfile(rgb);
    }
    if (!transform) cmykReader.CloseProfile(cmyk);
    return transform;
}

VellErrorCode CColorManager::TranslateRows(CStatusControl& progress, HTRANSFORM transform, IRowAccess& source,
                                           BMFORMAT sourceFormat, IRowAccess& output, BMFORMAT outputFormat,
                                           bool stopOnFailure) {
    std::vector<unsigned char> scratch;
    VellErrorCode result = VELL_OK;
    const DWORD width = static_cast<DWORD>(source.Width());
    for (int y = 0; y < source.Height(); ++y) {
        progress.SetProgress(y);
        BYTE* from = source.Row(y);
        BYTE* to = output.Row(y);
        const bool translated = from && to &&
                                TranslateRow(m_pfnTranslateBitmapBits, transform, from, source.Stride(), sourceFormat,
                                             width, source.Stride(), to, outputFormat, output.Stride(), scratch);
        source.Release(from);
        output.Release(to);
        if (!translated) {
            result = VELL_ERR_TRANSLATE;
            if (stopOnFailure) break;
        }
    }
    return result;
}

VellErrorCode CColorManager::TransformFromRGBToCMYK(CStatusControl* status, const CRowIterator& source,
                                                    CRowIterator& cyan, CRowIterator& magenta, CRowIterator& yellow,
                                                    CRowIterator& black, bool invert) {
    CStatusControl progress(status);
    CICCReadColorProfile cmykReader;
    HPROFILE cmyk = nullptr;
    HTRANSFORM transform = OpenRGBToCMYKTransform(SeparationIntent(), cmykReader, cmyk);
    if (!transform) return VELL_ERR_NO_MEMORY;
    auto finish = [&](VellErrorCode code) {
        if (m_pfnDeleteColorTransform) m_pfnDeleteColorTransform(transform);
        cmykReader.CloseProfile(cmyk);
        return code;
    };

    const EVPixelFormat format = source.GetPixelFormat();
    const int width = source.GetWidth(), height = source.GetHeight();
    progress.SetProgressRange(height);

    if (format == VPF_GREY_ALPHA_8 || format == VPF_GREY_ALPHA_16) return finish(VELL_ERR_PIXEL_FORMAT);
    const bool sixteenBit = format == VPF_GREY_16 || format == VPF_RGB_16 || format == VPF_RGBA_16;
    CRowIterator* plates[4] = {&cyan, &magenta, &yellow, &black};
    for (CRowIterator* plate : plates) {
        bool made = sixteenBit ? CRowIteratorBands::Create(*plate, width, height, VPF_GREY_16)
                               : CRowIteratorBands::CreateGreyscale(*plate, width, height);
        if (!made) return finish(VELL_ERR_NO_MEMORY);
    }
    SeparationInput input;
    if (!DescribeSeparationInput(format, input)) return finish(VELL_ERR_TRANSLATE);

    // One set of work buffers for the whole image.
    std::unique_ptr<BYTE[]> quads(new (std::nothrow) BYTE[static_cast<size_t>(width) * 4 + 4]);
    std::unique_ptr<BYTE[]> work;
    if (input.workBytesPerPixel) work.reset(new (std::nothrow) BYTE[static_cast<size_t>(width) * input.workBytesPerPixel + 4]);
    if (!quads || (input.workBytesPerPixel && !work)) return finish(VELL_ERR_NO_MEMORY);
    std::vector<unsigned char> scratch;

    for (int y = 0; y < height; ++y) {
        progress.SetProgress(y);
        const BYTE* row = source.GetRow(std::min(y, height - 1));
        const void* platformInput = row;
        size_t inputBytes = static_cast<size_t>(source.GetBytesPerRow());
        DWORD inputStride = static_cast<DWORD>(inputBytes);
        switch (input.conversion) {
            case WorkConversion::None:
                break;
            case WorkConversion::GreyToRGB:
                for (int x = 0; x < width; ++x) std::memset(&work[x * 3], row[x], 3);
                break;
            case WorkConversion::Grey16ToRGB: {
                const auto* grey = reinterpret_cast<const uint16_t*>(row);
                for (int x = 0; x < width; ++x) std::memset(&work[x * 3], grey[x] >> 8, 3);
                break;
            }
            case WorkConversion::HighBytes:
                ReduceToHighBytes(reinterpret_cast<const uint16_t*>(row), work.get(),
                                  static_cast<size_t>(width) * input.samplesPerPixel);
                break;
        }
        if (input.conversion != WorkConversion::None) {
            platformInput = work.get();
            inputBytes = static_cast<size_t>(width) * input.workBytesPerPixel;
            inputStride = static_cast<DWORD>(inputBytes);
        }
        if (!TranslateRow(m_pfnTranslateBitmapBits, transform, platformInput, inputBytes, input.format,
                          static_cast<DWORD>(width), inputStride, quads.get(), BM_KYMCQUADS,
                          static_cast<DWORD>(width) * 4, scratch))
            return finish(VELL_ERR_TRANSLATE);
        BYTE* rows[4] = {cyan.GetRow(y), magenta.GetRow(y), yellow.GetRow(y), black.GetRow(y)};
        WritePlates(quads.get(), width, sixteenBit, invert, rows);
    }
    return finish(VELL_OK);
}

VellErrorCode CColorManager::ColorTransformRGBtoCMYK(DWORD& color, BYTE& cyan, BYTE& magenta, BYTE& yellow,
                                                     BYTE& black, bool invert) {
    CICCReadColorProfile cmykReader, rgbReader;
    HPROFILE cmyk = OpenDefaultCMYKProfile(cmykReader);
    if (!cmyk) return VELL_OK;
    HPROFILE rgb = OpenWorkingRGBProfile(rgbReader);
    // One colour always goes relative colorimetric, whatever the image separation uses.
    HPROFILE profiles[2] = {rgb, cmyk};
    DWORD intents[2] = {INTENT_RELATIVE_COLORIMETRIC, INTENT_RELATIVE_COLORIMETRIC};
    HTRANSFORM transform = CreateTransform(profiles, 2, intents, 2);
    VellErrorCode result = VELL_OK;
    DWORD input = color;
    BYTE quad[4] = {};
    if (!m_pfnTranslateBitmapBits ||
        !m_pfnTranslateBitmapBits(transform, &input, BM_BGRTRIPLETS, 1, 1, 4, quad, BM_KYMCQUADS, 4, nullptr, 0)) {
        result = VELL_ERR_TRANSLATE;
    } else {
        const BYTE flip = invert ? 0xFF : 0x00;
        cyan = quad[0] ^ flip;
        magenta = quad[1] ^ flip;
        yellow = quad[2] ^ flip;
        black = quad[3] ^ flip;
    }
    if (transform && m_pfnDeleteColorTransform) m_pfnDeleteColorTransform(transform);
    if (rgb) rgbReader.CloseProfile(rgb);
    cmykReader.CloseProfile(cmyk);
    return result;
}

namespace {

BMFORMAT PackedSeparationInput(EVPixelFormat format) {
    switch (format) {
        case VPF_GREY_8:
            return BM_GRAY;  // grey goes as grey here, unlike the display path
        case VPF_RGBA_8:
            return BM_xRGBQUADS;
        case VPF_GREY_16:
        case VPF_GREY_ALPHA_16:
            return BM_16b_GRAY;
        case VPF_RGB_16:
        case VPF_RGBA_16:
            return BM_16b_RGB;
        default:
            return BM_RGBTRIPLETS;
    }
}

}  // namespace

VellErrorCode CColorManager::OutputFromRGBToCMYK(CStatusControl* status, CDibIterator& source, CDibIterator& output) {
    CStatusControl progress(status);
    CICCReadColorProfile cmykReader;
    HPROFILE cmyk = nullptr;
    HTRANSFORM transform = OpenRGBToCMYKTransform(SeparationIntent(), cmykReader, cmyk);
    if (!transform) return VELL_OK;
    progress.SetProgressRange(source.GetHeight());
    if (IVError* error = CDibIterator::CreateRGBA(output, source.GetWidth(), source.GetHeight())) error->Release();
    CDibRows from(source), to(output);
    VellErrorCode result = TranslateRows(progress, transform, from, PackedSeparationInput(source.GetPixelFormat()), to,
                                         BM_KYMCQUADS, true);
    if (m_pfnDeleteColorTransform) m_pfnDeleteColorTransform(transform);
    cmykReader.CloseProfile(cmyk);
    return result;
}

VellErrorCode CColorManager::OutputFromRGBToCMYK(CStatusControl* status, const CRowIterator& source,
                                                 CRowIterator& output) {
    CStatusControl progress(status);
    CICCReadColorProfile cmykReader;
    HPROFILE cmyk = nullptr;
    HTRANSFORM transform = OpenRGBToCMYKTransform(SeparationIntent(), cmykReader, cmyk);
    if (!transform) return VELL_OK;
    progress.SetProgressRange(source.GetHeight());
    CRowIteratorBands::CreateRGBA(output, source.GetWidth(), source.GetHeight());
    CImageRows from(source), to(output);
    VellErrorCode result = TranslateRows(progress, transform, from, PackedSeparationInput(source.GetPixelFormat()), to,
                                         BM_KYMCQUADS, true);
    if (m_pfnDeleteColorTransform) m_pfnDeleteColorTransform(transform);
    cmykReader.CloseProfile(cmyk);
    return result;
}
