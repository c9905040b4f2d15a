#include "cli/plots/ProfileCurves.h"

#include <lcms2.h>

#include <memory>

#include "cli/Errors.h"

namespace teskcolor {

namespace {

constexpr int kSamples = 256;

SPoints Sample(const cmsToneCurve* curve) {
    SPoints points;
    for (int i = 0; i < kSamples; ++i) {
        const double x = double(i) / (kSamples - 1);
        points.emplace_back(x, double(cmsEvalToneCurveFloat(curve, cmsFloat32Number(x))));
    }
    return points;
}

}  // namespace

std::vector<SCurve> ToneCurvesOfProfile(const std::vector<uint8_t>& bytes, const std::string& label) {
    std::unique_ptr<void, decltype(&cmsCloseProfile)> profile(
        cmsOpenProfileFromMem(bytes.data(), cmsUInt32Number(bytes.size())), cmsCloseProfile);
    if (!profile) throw CCliError(EExit::Corrupt, label + ": lcms2 cannot open the profile to draw it");
    std::vector<SCurve> curves;
    const struct {
        cmsTagSignature tag;
        const char* name;
        SColour colour;
    } trcs[] = {{cmsSigRedTRCTag, "red", kChannelColours[0]},
                {cmsSigGreenTRCTag, "green", kChannelColours[1]},
                {cmsSigBlueTRCTag, "blue", kChannelColours[2]},
                {cmsSigGrayTRCTag, "grey", kChannelColours[3]}};
    for (const auto& trc : trcs)
        if (const auto* curve = static_cast<const cmsToneCurve*>(cmsReadTag(profile.get(), trc.tag)))
            curves.push_back({trc.name, trc.colour, Sample(curve)});
    // lcms2 reads either form of vcgt as three curves.
    if (const auto* vcgt = static_cast<cmsToneCurve* const*>(cmsReadTag(profile.get(), cmsSigVcgtTag))) {
        const char* names[3] = {"vcgt red", "vcgt green", "vcgt blue"};
        for (int channel = 0; channel < 3; ++channel)
            if (vcgt[channel]) curves.push_back({names[channel], kChannelColours[channel], Sample(vcgt[channel]), true});
    }
    return curves;
}

}  // namespace teskcolor
