#include "icm_matching.h"

#include <lcms2.h>

namespace tesk::gdi {

struct ColorMatcher {
    std::string profile;
    DWORD intent = 0;
    cmsHTRANSFORM transform = nullptr;  // null: the profile is not one to match RGB into
    ~ColorMatcher() {
        if (transform) cmsDeleteTransform(transform);
    }
};

namespace {

cmsUInt32Number IntentOf(const DeviceContext& dc) {
    if (dc.kind != DeviceKind::Printer) return INTENT_PERCEPTUAL;
    switch (dc.devMode.dmICMIntent) {
    case DMICM_SATURATE: return INTENT_SATURATION;
    case DMICM_COLORIMETRIC: return INTENT_RELATIVE_COLORIMETRIC;
    case DMICM_ABS_COLORIMETRIC: return INTENT_ABSOLUTE_COLORIMETRIC;
    default: return INTENT_PERCEPTUAL;
    }
}

std::shared_ptr<ColorMatcher> MakeMatcher(const std::string& profilePath, cmsUInt32Number intent) {
    auto matcher = std::make_shared<ColorMatcher>();
    matcher->profile = profilePath;
    matcher->intent = intent;
    cmsHPROFILE target = cmsOpenProfileFromFile(profilePath.c_str(), "r");
    if (!target) return matcher;
    if (cmsGetColorSpace(target) == cmsSigRgbData) {
        cmsHPROFILE srgb = cmsCreate_sRGBProfile();
        // 0x00RRGGBB in a little-endian word is B, G, R, x in memory.
        matcher->transform = cmsCreateTransform(srgb, TYPE_BGRA_8, target, TYPE_BGRA_8, intent, 0);
        cmsCloseProfile(srgb);
    }
    cmsCloseProfile(target);
    return matcher;
}

}  // namespace

void MatchPixels(DeviceContext& dc, uint32_t* pixels, int count) {
    if (dc.icmMode != ICM_ON || count <= 0) return;
    std::string profile = ProfileOf(dc);
    if (profile.empty()) return;
    cmsUInt32Number intent = IntentOf(dc);
    if (!dc.matcher || dc.matcher->profile != profile || dc.matcher->intent != intent)
        dc.matcher = MakeMatcher(profile, intent);
    if (!dc.matcher->transform) return;
    cmsDoTransform(dc.matcher->transform, pixels, pixels, cmsUInt32Number(count));
    for (int i = 0; i < count; ++i) pixels[i] &= 0x00FFFFFFu;
}

}  // namespace tesk::gdi
