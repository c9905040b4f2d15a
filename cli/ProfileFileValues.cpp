#include "cli/ProfileFileValues.h"

#include <lcms2.h>

#include <memory>

#include "cli/ProfileHeader.h"

namespace teskcolor {

namespace {

using Json = nlohmann::ordered_json;

constexpr size_t kHeaderSize = 128;

struct SProfileCloser {
    void operator()(void* profile) const { cmsCloseProfile(profile); }
};
using ProfilePtr = std::unique_ptr<void, SProfileCloser>;

ProfilePtr Open(const std::vector<uint8_t>& bytes) {
    if (bytes.size() < kHeaderSize) return nullptr;
    return ProfilePtr(cmsOpenProfileFromMem(bytes.data(), cmsUInt32Number(bytes.size())));
}

Json CurveValues(cmsHPROFILE profile, cmsTagSignature tag) {
    const auto* curve = static_cast<const cmsToneCurve*>(cmsReadTag(profile, tag));
    if (!curve) return Json{{"readable", false}};
    Json out = Json::object();
    const cmsInt32Number type = cmsGetToneCurveParametricType(curve);
    if (type != 0) {
        out["parametric_type"] = type;
        const cmsFloat64Number* parameters = cmsGetToneCurveParams(curve);
        const int counts[] = {1, 3, 4, 5, 7};
        const int kind = type < 0 ? -type : type;
        const int count = kind >= 1 && kind <= 5 ? counts[kind - 1] : 0;
        Json values = Json::array();
        for (int i = 0; parameters && i < count; ++i) values.push_back(parameters[i]);
        out["parameters"] = values;
    } else {
        out["entries"] = cmsGetToneCurveEstimatedTableEntries(curve);
    }
    out["linear"] = cmsIsToneCurveLinear(curve) != 0;
    out["gamma_estimate"] = cmsEstimateGamma(curve, 0.01);
    return out;
}

}  // namespace

std::string ProfileRefusalReason(const std::vector<uint8_t>& bytes) {
    if (bytes.size() < kHeaderSize)
        return "truncated: " + std::to_string(bytes.size()) + " bytes, shorter than the 128-byte header";
    const auto header = ParseProfileHeader(bytes.data(), bytes.size());
    if (!header || header->signature != 0x61637370) return "not an ICC profile: no 'acsp' signature";
    if (header->size > bytes.size())
        return "truncated: header says " + std::to_string(header->size) + " bytes, file has " +
               std::to_string(bytes.size());
    if (header->size < kHeaderSize) return "damaged: header says " + std::to_string(header->size) + " bytes";
    return "";
}

Json ProfileFileValues(const std::vector<uint8_t>& bytes) {
    ProfilePtr profile = Open(bytes);
    if (!profile) return nullptr;
    Json out = Json::object();
    const std::pair<cmsTagSignature, const char*> curves[] = {{cmsSigRedTRCTag, "rTRC"},
                                                              {cmsSigGreenTRCTag, "gTRC"},
                                                              {cmsSigBlueTRCTag, "bTRC"},
                                                              {cmsSigGrayTRCTag, "kTRC"}};
    for (const auto& [tag, name] : curves)
        if (cmsIsTag(profile.get(), tag)) out[name] = CurveValues(profile.get(), tag);
    const std::pair<cmsTagSignature, const char*> colours[] = {{cmsSigRedColorantTag, "rXYZ"},
                                                               {cmsSigGreenColorantTag, "gXYZ"},
                                                               {cmsSigBlueColorantTag, "bXYZ"},
                                                               {cmsSigMediaWhitePointTag, "white_point"},
                                                               {cmsSigMediaBlackPointTag, "black_point"}};
    for (const auto& [tag, name] : colours)
        if (const auto* xyz = static_cast<const cmsCIEXYZ*>(cmsReadTag(profile.get(), tag)))
            out[name] = Json::array({xyz->X, xyz->Y, xyz->Z});
    if (const auto* matrix = static_cast<const cmsFloat64Number*>(cmsReadTag(profile.get(), cmsSigChromaticAdaptationTag))) {
        Json values = Json::array();
        for (int i = 0; i < 9; ++i) values.push_back(matrix[i]);
        out["chromatic_adaptation"] = values;
    }
    return out;
}

std::string NonImageProfileKind(const std::vector<uint8_t>& bytes) {
    ProfilePtr profile = Open(bytes);
    if (!profile) return "";
    switch (cmsGetDeviceClass(profile.get())) {
        case cmsSigNamedColorClass: return "a named-colour profile: it names colours and serves no image transform";
        case cmsSigLinkClass: return "a device link: it joins two devices and is not a source or target profile";
        case cmsSigAbstractClass: return "an abstract profile: it edits colours in the connection space";
        default: return "";
    }
}

}  // namespace teskcolor
