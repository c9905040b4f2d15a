// Ink plates, or one packed CMYK image, back to RGB through the CMYK profile;
// and CMYK images re-targeted to the CMYK profile of the settings.
#include <algorithm>
#include <memory>
#include <new>
#include <vector>

#include "colormgr/ColorManager.h"
#include "conversion/PlatformRows.h"
#include "conversion/RowAccess.h"
#include "host/imaging/RowIteratorBands.h"
#include "module/Trace.h"

namespace {

// Work byte = complement of the plate's 8-bit value; 16-bit plates give their high byte.
void PackInks(const BYTE* const plates[4], int width, bool sixteenBit, BYTE* quads) {
    for (int p = 0; p < 4; ++p) {
        if (sixteenBit) {
            const auto* plate = reinterpret_cast<const uint16_t*>(plates[p]);
            for (int x = 0; x < width; ++x) quads[x * 4 + p] = static_cast<BYTE>(~(plate[x] >> 8));
        } else {
            for (int x = 0; x < width; ++x) quads[x * 4 + p] = static_cast<BYTE>(~plates[p][x]);
        }
    }
}

}  // namespace

HTRANSFORM CColorManager::OpenCMYKToRGBTransform(void* cmykProfile, CICCReadColorProfile& rgbReader, HPROFILE& rgb) {
    rgb = OpenWorkingRGBProfile(rgbReader);
    if (!rgb) return nullptr;
    CICCReadColorProfile cmykReader;
    HPROFILE cmyk = cmykProfile ? cmykProfile : OpenDefaultCMYKProfile(cmykReader);
    const DWORD intent = SeparationIntent();
    HPROFILE profiles[2] = {cmyk, rgb};
    DWORD intents[2] = {intent, intent};
    HTRANSFORM transform = CreateTransform(profiles, 2, intents, 2);
    if (!cmykProfile && cmyk) cmykReader.CloseProfile(cmyk);  // a caller's profile stays open
    if (!transform) rgbReader.CloseProfile(rgb);
    return transform;
}

VellErrorCode CColorManager::TransformFromCMYKToRGB(CStatusControl* status, CRowIterator& cyan, CRowIterator& magenta,
                                                    CRowIterator& yellow, CRowIterator& black, CRowIterator& output) {
    CStatusControl progress(status);
    CICCReadColorProfile rgbReader;
    HPROFILE rgb = nullptr;
    HTRANSFORM transform = OpenCMYKToRGBTransform(nullptr, rgbReader, rgb);
    if (!transform) return VELL_OK;
    auto finish = [&](VellErrorCode code) {
        if (m_pfnDeleteColorTransform) m_pfnDeleteColorTransform(transform);
        rgbReader.CloseProfile(rgb);
        return code;
    };

    CRowIterator* plates[4] = {&cyan, &magenta, &yellow, &black};
    for (CRowIterator* plate : plates)
        if (!CRowIteratorBands::IsAttached(*plate)) return finish(VELL_ERR_TRANSLATE);
    const int width = cyan.GetWidth(), height = cyan.GetHeight();
    for (int p = 1; p < 4; ++p)
        if (plates[p]->GetWidth() != width) return finish(VELL_ERR_PLANE_SIZE);
    for (int p = 1; p < 4; ++p)
        if (plates[p]->GetHeight() != height) return finish(VELL_ERR_PLANE_SIZE);
    const bool sixteenBit = CVPixelFormat::Is16bit(cyan.GetPixelFormat());
    const EVPixelFormat expected = sixteenBit ? VPF_GREY_16 : VPF_GREY_8;
    for (CRowIterator* plate : plates)
        if (plate->GetPixelFormat() != expected) return finish(VELL_ERR_TRANSLATE);

    const bool made = sixteenBit ? CRowIteratorBands::Create(output, width, height, VPF_RGB_16)
                                 : CRowIteratorBands::CreateRGB(output, width, height);
    if (!made) return finish(VELL_ERR_NO_MEMORY);
    progress.SetProgressRange(height);
    std::unique_ptr<BYTE[]> quads(new (std::nothrow) BYTE[static_cast<size_t>(width) * 4 + 4]);
    if (!quads) return finish(VELL_ERR_NO_MEMORY);

    const BMFORMAT outputFormat = sixteenBit ? BM_16b_RGB : BM_RGBTRIPLETS;
    const DWORD outputStride = static_cast<DWORD>(output.GetBytesPerRow());
    for (int y = 0; y < height; ++y) {
        progress.SetProgress(y);
        const BYTE* rows[4] = {cyan.GetRow(y), magenta.GetRow(y), yellow.GetRow(y), black.GetRow(y)};
        PackInks(rows, width, sixteenBit, quads.get());
        if (!m_pfnTranslateBitmapBits(transform, quads.get(), BM_KYMCQUADS, static_cast<DWORD>(width), 1,
                                      static_cast<DWORD>(width) * 4, output.GetRow(y), outputFormat, outputStride,
                                      nullptr, 0))
            break;  // reported by the result of nothing: the output keeps the rows done
    }
    return finish(VELL_OK);
}

VellErrorCode CColorManager::InputFromCMYKtoRGB(CStatusControl* status, const CRowIterator& source,
                                                CRowIterator& output) {
    return InputFromCMYKtoRGB(status, source, output, nullptr);
}

VellErrorCode CColorManager::InputFromCMYKtoRGB(CStatusControl* status, const CRowIterator& source,
                                                CRowIterator& output, void* cmykProfile) {
    CStatusControl progress(status);
    CICCReadColorProfile rgbReader;
    HPROFILE rgb = nullptr;
    HTRANSFORM transform = OpenCMYKToRGBTransform(cmykProfile, rgbReader, rgb);
    if (!transform) return VELL_OK;
    progress.SetProgressRange(source.GetHeight());
    CRowIteratorBands::CreateRGB(output, source.GetWidth(), source.GetHeight());
    CImageRows from(source), to(output);
    VellErrorCode result = TranslateRows(progress, transform, from, BM_KYMCQUADS, to, BM_RGBTRIPLETS, false);
    if (m_pfnDeleteColorTransform) m_pfnDeleteColorTransform(transform);
    rgbReader.CloseProfile(rgb);
    return result;
}

VellErrorCode CColorManager::InputFromCMYKtoRGB(CStatusControl* status, CDibIterator& source, CDibIterator& output,
                                                void* cmykProfile) {
    CStatusControl progress(status);
    CICCReadColorProfile rgbReader;
    HPROFILE rgb = nullptr;
    HTRANSFORM transform = OpenCMYKToRGBTransform(cmykProfile, rgbReader, rgb);
    if (!transform) return VELL_OK;
    progress.SetProgressRange(source.GetHeight());
    if (IVError* error = CDibIterator::CreateRGB(output, source.GetWidth(), source.GetHeight())) error->Release();
    CDibRows from(source), to(output);
    VellErrorCode result = TranslateRows(progress, transform, from, BM_KYMCQUADS, to, BM_RGBTRIPLETS, false);
    if (m_pfnDeleteColorTransform) m_pfnDeleteColorTransform(transform);
    rgbReader.CloseProfile(rgb);
    return result;
}

// The transform and the CMYK profile opened here stay open: the operation has
// always left them to the process, and callers rely on nothing else.
bool CColorManager::TransformCMYKImage(void* sourceProfile, CDibIterator& source, CDibIterator& destination) {
    CString name;
    GetDefaultCMYKString(name);
    HPROFILE cmyk = name.IsEmpty() ? nullptr : OpenProfileWithRetry(name.GetString());
    HPROFILE profiles[2] = {sourceProfile, cmyk};
    DWORD intents[2] = {INTENT_RELATIVE_COLORIMETRIC, INTENT_RELATIVE_COLORIMETRIC};
    HTRANSFORM transform = CreateTransform(profiles, 2, intents, 2);

    const int width = source.GetWidth(), height = source.GetHeight();
    if (IVError* error = destination.Create(width, height, source.GetPixelFormat(), CColorRef(0, 0, 0, 255, 0),
                                            source.GetPalette(), source.GetResolution()))
        error->Release();
    if (source.GetPixelFormat() != VPF_RGBA_8) return false;

    const int bitsPerPixel = CDibIterator::GetBPP(destination.GetPixelFormat());
    const int pixelOffset = 0;
    const int startOffset = bitsPerPixel < 8 ? pixelOffset % 8 / bitsPerPixel : 0;
    const DWORD rowBytes = static_cast<DWORD>(width) * 4;
    for (int y = 0; y < height; ++y) {
        BYTE* to = nullptr;
        BYTE* from = nullptr;
        if (IVError* error = destination.GetRow(y, 0, width, startOffset, &to)) error->Release();
        if (IVError* error = source.GetRow(y, 0, width, startOffset, &from)) error->Release();
        if (to && from && m_pfnTranslateBitmapBits &&
            !m_pfnTranslateBitmapBits(transform, from, BM_KYMCQUADS, static_cast<DWORD>(width), 1, rowBytes, to,
                                      BM_KYMCQUADS, rowBytes, nullptr, 0))
            Trace(RTRACE(L"CColorManager::TransformCMYKImage", nullptr, nullptr, 0), L"Error %u \n", GetLastError());
        if (to) destination.ReleaseRow(to);
        if (from) source.ReleaseRow(from);
    }
    return true;
}
