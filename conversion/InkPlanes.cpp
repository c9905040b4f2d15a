// Rows of ink planes to and from RGB through the cached CMYK transforms.
#include <algorithm>
#include <cstring>
#include <memory>
#include <new>

#include "colormgr/ColorManager.h"
#include "conversion/PlateSplit.h"

namespace {

constexpr UINT kDefaultWorkingSpaceString = 10401;

// A zero-filled work buffer; null when memory is short.
std::unique_ptr<BYTE[]> WorkBuffer(size_t bytes) { return std::unique_ptr<BYTE[]>(new (std::nothrow) BYTE[bytes]()); }

}  // namespace

// Built on first use and kept until the CMYK profile changes: a new working
// space or intent does not rebuild them, by design.
HTRANSFORM CColorManager::CachedInkTransform(bool cmykToRgb) {
    HTRANSFORM& cached = cmykToRgb ? m_hCMYKToRGBTransform : m_hRGBToCMYKTransform;
    if (cached) return cached;

    CString rgbName;
    if (!m_strWorkingSpace.IsNull())
        rgbName = m_strWorkingSpace.Get();
    else
        rgbName.LoadString(kDefaultWorkingSpaceString);
    CICCReadColorProfile rgbReader;
    HPROFILE rgb = rgbReader.OpenICCProfile(const_cast<wchar_t*>(rgbName.GetString()));
    if (!rgb) rgb = GetRGBProfile(rgbReader);

    CString cmykName;
    GetDefaultCMYKString(cmykName);
    CICCReadColorProfile cmykReader;
    HPROFILE cmyk = cmykReader.OpenICCProfile(const_cast<wchar_t*>(cmykName.GetString()));
    if (!cmyk) cmyk = GetCMYKProfile(cmykReader);

    const DWORD intent = SeparationIntent();
    HPROFILE profiles[2] = {cmykToRgb ? cmyk : rgb, cmykToRgb ? rgb : cmyk};
    DWORD intents[2] = {intent, intent};
    cached = CreateTransform(profiles, 2, intents, 2);
    if (rgb) rgbReader.CloseProfile(rgb);
    if (cmyk) cmykReader.CloseProfile(cmyk);
    return cached;
}

VellErrorCode CColorManager::ConvertCMYKtoRGB(unsigned char* cyan, unsigned char* magenta, unsigned char* yellow,
                                              unsigned char* black, unsigned char* rgb, int width, int inputStride,
                                              int outputStride, int planar) {
    HTRANSFORM transform = CachedInkTransform(true);
    if (!transform) return VELL_OK;
    width = std::max(width, 0);
    std::unique_ptr<BYTE[]> packed;
    BYTE* quads = cyan;
    if (planar == 1) {
        // Sized as the stride asks, and never smaller than the quads written.
        const size_t bytes = std::max<size_t>(static_cast<size_t>(std::max(inputStride, 0)) * 4 + 4,
                                              static_cast<size_t>(width) * 4);
        packed = WorkBuffer(bytes);
        if (!packed) return VELL_ERR_NO_MEMORY;
        for (int x = 0; x < width; ++x) {
            packed[x * 4] = static_cast<BYTE>(~cyan[x]);
            packed[x * 4 + 1] = static_cast<BYTE>(~magenta[x]);
            packed[x * 4 + 2] = static_cast<BYTE>(~yellow[x]);
            packed[x * 4 + 3] = static_cast<BYTE>(~black[x]);
        }
        quads = packed.get();
    }
    if (!rgb || !m_pfnTranslateBitmapBits) return VELL_OK;
    if (!m_pfnTranslateBitmapBits(transform, quads, BM_KYMCQUADS, static_cast<DWORD>(width), 1,
                                  static_cast<DWORD>(inputStride), rgb, BM_RGBTRIPLETS,
                                  static_cast<DWORD>(outputStride), nullptr, 0))
        return VELL_ERR_TRANSLATE;
    return VELL_OK;
}

VellErrorCode CColorManager::ConvertCMYtoRGB(unsigned char* cyan, unsigned char* magenta, unsigned char* yellow,
                                             unsigned char* rgb, int width, int extraLength, int outputStride,
                                             int planeStep) {
    HTRANSFORM transform = CachedInkTransform(true);
    if (!transform) return VELL_OK;
    width = std::max(width, 0);
    const DWORD inputStride = static_cast<DWORD>(std::max(width + extraLength, 0));
    std::unique_ptr<BYTE[]> packed = WorkBuffer(std::max<size_t>(inputStride, static_cast<size_t>(width) * 4));
    if (!packed) return VELL_ERR_NO_MEMORY;
    for (int x = 0; x < width; ++x) {
        packed[x * 4] = static_cast<BYTE>(~*cyan);
        packed[x * 4 + 1] = static_cast<BYTE>(~*magenta);
        packed[x * 4 + 2] = static_cast<BYTE>(~*yellow);
        packed[x * 4 + 3] = 0;  // no black ink
        cyan += planeStep;
        magenta += planeStep;
        yellow += planeStep;
    }
    if (!rgb || !m_pfnTranslateBitmapBits) return VELL_OK;
    if (!m_pfnTranslateBitmapBits(transform, packed.get(), BM_KYMCQUADS, static_cast<DWORD>(width), 1, inputStride,
                                  rgb, BM_RGBTRIPLETS, static_cast<DWORD>(outputStride), nullptr, 0))
        return VELL_ERR_TRANSLATE;
    return VELL_OK;
}

namespace {

// One RGB row to packed C, M, Y, K quads in `quads`.
VellErrorCode TranslateToQuads(decltype(&TranslateBitmapBits) translate, HTRANSFORM transform, void* rgb, int width,
                               int outputStride, int inputStride, std::unique_ptr<BYTE[]>& quads) {
    quads.reset(new (std::nothrow) BYTE[static_cast<size_t>(width) * 4 + 4]);
    if (!quads) return VELL_ERR_NO_MEMORY;
    if (!translate || !translate(transform, rgb, BM_RGBTRIPLETS, static_cast<DWORD>(width), 1,
                                 static_cast<DWORD>(inputStride), quads.get(), BM_KYMCQUADS,
                                 static_cast<DWORD>(outputStride), nullptr, 0))
        return VELL_ERR_TRANSLATE;
    return VELL_OK;
}

}  // namespace

VellErrorCode CColorManager::ConvertRGBtoCMYK(unsigned char* cyan, unsigned char* magenta, unsigned char* yellow,
                                              unsigned char* black, void* rgb, int width, int outputStride,
                                              int inputStride) {
    HTRANSFORM transform = CachedInkTransform(false);
    if (!transform) return VELL_OK;
    width = std::max(width, 0);
    std::unique_ptr<BYTE[]> quads;
    if (VellErrorCode code =
            TranslateToQuads(m_pfnTranslateBitmapBits, transform, rgb, width, outputStride, inputStride, quads))
        return code;
    BYTE* const plates[4] = {cyan, magenta, yellow, black};
    SplitQuads(quads.get(), static_cast<size_t>(width), plates, 0xFF);
    return VELL_OK;
}

VellErrorCode CColorManager::ConvertRGBtoCMY(unsigned char* cyan, unsigned char* magenta, unsigned char* yellow,
                                             void* rgb, int width, int outputStride, int inputStride) {
    HTRANSFORM transform = CachedInkTransform(false);
    if (!transform) return VELL_OK;
    width = std::max(width, 0);
    std::unique_ptr<BYTE[]> quads;
    if (VellErrorCode code =
            TranslateToQuads(m_pfnTranslateBitmapBits, transform, rgb, width, outputStride, inputStride, quads))
        return code;
    // The black is added back into each ink, saturating: there is no fourth plate.
    for (int x = 0; x < width; ++x) {
        const int k = quads[x * 4 + 3];
        cyan[x] = static_cast<BYTE>(~std::min(quads[x * 4] + k, 255));
        magenta[x] = static_cast<BYTE>(~std::min(quads[x * 4 + 1] + k, 255));
        yellow[x] = static_cast<BYTE>(~std::min(quads[x * 4 + 2] + k, 255));
    }
    return VELL_OK;
}
