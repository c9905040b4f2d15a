// Untrusted profile bytes through the transform side of MSCMS.DLL: open from
// memory, join with sRGB in both directions, translate a few colours and a
// small bitmap. Nothing may crash, hang or touch memory it does not own.
#include <windows.h>

#include <icm.h>
#include <lcms2.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace {

HPROFILE OpenFromMemory(const uint8_t* data, size_t size) {
    PROFILE profile{PROFILE_MEMBUFFER, const_cast<uint8_t*>(data), static_cast<DWORD>(size)};
    return OpenColorProfileW(&profile, PROFILE_READ, FILE_SHARE_READ, OPEN_EXISTING);
}

HPROFILE Srgb() {
    static const std::vector<uint8_t> bytes = [] {
        cmsHPROFILE profile = cmsCreate_sRGBProfile();
        cmsUInt32Number size = 0;
        cmsSaveProfileToMem(profile, nullptr, &size);
        std::vector<uint8_t> saved(size);
        cmsSaveProfileToMem(profile, saved.data(), &size);
        cmsCloseProfile(profile);
        return saved;
    }();
    return OpenFromMemory(bytes.data(), bytes.size());
}

struct Formats {
    COLORTYPE color;
    BMFORMAT bitmap;
};

bool FormatsOf(DWORD space, Formats& formats) {
    switch (space) {
    case SPACE_RGB: formats = {COLOR_RGB, BM_RGBTRIPLETS}; return true;
    case SPACE_CMYK: formats = {COLOR_CMYK, BM_KYMCQUADS}; return true;
    case SPACE_GRAY: formats = {COLOR_GRAY, BM_GRAY}; return true;
    case SPACE_Lab: formats = {COLOR_Lab, BM_16b_Lab}; return true;
    case SPACE_XYZ: formats = {COLOR_XYZ, BM_16b_XYZ}; return true;
    default: return false;
    }
}

void Exercise(HTRANSFORM transform, COLORTYPE inColor, BMFORMAT inBitmap, COLORTYPE outColor, BMFORMAT outBitmap,
              const uint8_t* data, size_t size) {
    COLOR colors[4] = {};
    for (size_t i = 0; i < sizeof colors && i < size; ++i) reinterpret_cast<uint8_t*>(colors)[i] = data[i];
    COLOR out[4];
    TranslateColors(transform, colors, 4, inColor, out, outColor);

    uint8_t pixels[3 * 16 * 2] = {};
    for (size_t i = 0; i < sizeof pixels && i < size; ++i) pixels[i] = data[size - 1 - i];
    uint8_t result[3 * 16 * 2 + 64];
    TranslateBitmapBits(transform, pixels, inBitmap, 4, 2, 0, result, outBitmap, 0, nullptr, 0);
    GetCMMInfo(transform, CMM_IDENT);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    HPROFILE fuzzed = OpenFromMemory(data, size);
    if (!fuzzed) return 0;
    PROFILEHEADER header{};
    Formats formats{};
    if (GetColorProfileHeader(fuzzed, &header) && FormatsOf(header.phDataColorSpace, formats)) {
        HPROFILE srgb = Srgb();
        DWORD intent = header.phRenderingIntent & 3;
        HPROFILE forward[2] = {fuzzed, srgb};
        HPROFILE backward[2] = {srgb, fuzzed};
        // PROOF_MODE keeps lcms2's precalculation small, so the fuzzer stays fast.
        if (HTRANSFORM t = CreateMultiProfileTransform(forward, 2, &intent, 1, PROOF_MODE, INDEX_DONT_CARE)) {
            Exercise(t, formats.color, formats.bitmap, COLOR_RGB, BM_RGBTRIPLETS, data, size);
            DeleteColorTransform(t);
        }
        if (HTRANSFORM t = CreateMultiProfileTransform(backward, 2, &intent, 1, PROOF_MODE, INDEX_DONT_CARE)) {
            Exercise(t, COLOR_RGB, BM_RGBTRIPLETS, formats.color, formats.bitmap, data, size);
            DeleteColorTransform(t);
        }
        CloseColorProfile(srgb);
    }
    CloseColorProfile(fuzzed);
    return 0;
}
