#include "support/lcms_profiles.h"

#include <stdexcept>

#include "support/big_endian.h"

namespace tesk::test {
namespace {

void Save(cmsHPROFILE profile, const std::string& path) {
    const bool saved = profile && cmsSaveProfileToFile(profile, path.c_str());
    if (profile) cmsCloseProfile(profile);
    if (!saved) throw std::runtime_error("cannot write profile " + path);
}

}  // namespace

Bytes SavedProfile(cmsHPROFILE profile) {
    cmsUInt32Number size = 0;
    if (!profile || !cmsSaveProfileToMem(profile, nullptr, &size)) throw std::runtime_error("lcms2 profile");
    Bytes bytes(size);
    cmsSaveProfileToMem(profile, bytes.data(), &size);
    cmsCloseProfile(profile);
    return bytes;
}

Bytes SrgbProfileBytes() { return SavedProfile(cmsCreate_sRGBProfile()); }

Bytes GreyProfileBytes() {
    cmsToneCurve* curve = cmsBuildGamma(nullptr, 2.2);
    cmsHPROFILE profile = cmsCreateGrayProfile(cmsD50_xyY(), curve);
    cmsFreeToneCurve(curve);
    return SavedProfile(profile);
}

void WriteRgbProfile(const std::string& path, double gamma, const std::vector<uint16_t>& vcgt,
                     uint16_t vcgtChannels) {
    cmsCIExyY white;
    cmsWhitePointFromTemp(&white, 6504);
    cmsCIExyYTRIPLE primaries = {{0.64, 0.33, 1.0}, {0.21, 0.71, 1.0}, {0.15, 0.06, 1.0}};
    cmsToneCurve* curve = cmsBuildGamma(nullptr, gamma);
    cmsToneCurve* curves[3] = {curve, curve, curve};
    cmsHPROFILE profile = cmsCreateRGBProfile(&white, &primaries, curves);
    cmsFreeToneCurve(curve);
    if (!profile) throw std::runtime_error("lcms2 profile");
    cmsSetProfileVersion(profile, 2.1);
    if (!vcgt.empty()) {
        Bytes tag = {'v', 'c', 'g', 't', 0, 0, 0, 0, 0, 0, 0, 0};
        PutBE16(tag, 12, vcgtChannels);
        PutBE16(tag, 14, static_cast<uint16_t>(vcgt.size() / vcgtChannels));
        PutBE16(tag, 16, 2);
        for (uint16_t value : vcgt) PutBE16(tag, tag.size(), value);
        // Padding counted in the tag's size: the reader leaves a value that
        // ends exactly at the tag's end unread.
        PutBE16(tag, tag.size(), 0);
        cmsWriteRawTag(profile, static_cast<cmsTagSignature>(0x76636774), tag.data(),
                       static_cast<cmsUInt32Number>(tag.size()));
    }
    Save(profile, path);
}

void WriteSrgbProfile(const std::string& path) { Save(cmsCreate_sRGBProfile(), path); }

}  // namespace tesk::test
