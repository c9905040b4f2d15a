#include "cli/plots/ProfileGamut.h"

#include <lcms2.h>

#include <algorithm>
#include <cmath>
#include <memory>

#include "cli/Errors.h"

namespace teskcolor {

namespace {

struct SProfileCloser {
    void operator()(void* profile) const { cmsCloseProfile(profile); }
};
using ProfilePtr = std::unique_ptr<void, SProfileCloser>;

std::optional<std::pair<double, double>> Chromaticity(const cmsCIEXYZ& xyz) {
    const double sum = xyz.X + xyz.Y + xyz.Z;
    if (!(sum > 1e-6)) return std::nullopt;
    return std::make_pair(xyz.X / sum, xyz.Y / sum);
}

std::optional<std::pair<double, double>> TagChromaticity(cmsHPROFILE profile, cmsTagSignature tag) {
    const auto* xyz = static_cast<const cmsCIEXYZ*>(cmsReadTag(profile, tag));
    return xyz ? Chromaticity(*xyz) : std::nullopt;
}

double Cross(const std::pair<double, double>& o, const std::pair<double, double>& a, const std::pair<double, double>& b) {
    return (a.first - o.first) * (b.second - o.second) - (a.second - o.second) * (b.first - o.first);
}

// Convex hull, counter-clockwise (monotone chain).
SPoints ConvexHull(SPoints points) {
    std::sort(points.begin(), points.end());
    points.erase(std::unique(points.begin(), points.end()), points.end());
    if (points.size() < 3) return {};
    SPoints hull(2 * points.size());
    size_t k = 0;
    for (const auto& p : points) {
        while (k >= 2 && Cross(hull[k - 2], hull[k - 1], p) <= 0) --k;
        hull[k++] = p;
    }
    for (size_t i = points.size() - 1, lower = k + 1; i-- > 0;) {
        while (k >= lower && Cross(hull[k - 2], hull[k - 1], points[i]) <= 0) --k;
        hull[k++] = points[i];
    }
    hull.resize(k - 1);
    return hull;
}

// Every device colour on a grid through the profile to XYZ; the xy outline
// of the grid's colours is that of the whole device space to within a step.
SPoints SampledOutline(cmsHPROFILE profile) {
    const cmsColorSpaceSignature space = cmsGetColorSpace(profile);
    const int channels = int(cmsChannelsOf(space));
    if (channels < 1 || channels > 4) return {};
    const int steps = channels == 4 ? 9 : 17;
    const cmsUInt32Number format = COLORSPACE_SH(_cmsLCMScolorSpace(space)) | CHANNELS_SH(channels) | BYTES_SH(2);
    ProfilePtr xyzProfile(cmsCreateXYZProfile());
    cmsHTRANSFORM transform = cmsCreateTransform(profile, format, xyzProfile.get(), TYPE_XYZ_DBL,
                                                 INTENT_RELATIVE_COLORIMETRIC, cmsFLAGS_NOCACHE);
    if (!transform) return {};
    size_t count = 1;
    for (int c = 0; c < channels; ++c) count *= size_t(steps);
    std::vector<cmsUInt16Number> device(count * size_t(channels));
    for (size_t i = 0; i < count; ++i) {
        size_t rest = i;
        for (int c = 0; c < channels; ++c, rest /= size_t(steps))
            device[i * size_t(channels) + size_t(c)] = cmsUInt16Number((rest % size_t(steps)) * 65535 / size_t(steps - 1));
    }
    std::vector<cmsCIEXYZ> xyz(count);
    cmsDoTransform(transform, device.data(), xyz.data(), cmsUInt32Number(count));
    cmsDeleteTransform(transform);
    SPoints points;
    for (const cmsCIEXYZ& colour : xyz)
        if (auto xy = Chromaticity(colour)) points.push_back(*xy);
    return ConvexHull(std::move(points));
}

SGamut GamutOf(cmsHPROFILE profile, const std::string& label, const SColour& colour) {
    SGamut gamut{label, colour, {}, {}, TagChromaticity(profile, cmsSigMediaWhitePointTag)};
    if (cmsGetColorSpace(profile) == cmsSigRgbData && cmsIsMatrixShaper(profile)) {
        for (cmsTagSignature tag : {cmsSigRedColorantTag, cmsSigGreenColorantTag, cmsSigBlueColorantTag})
            if (auto xy = TagChromaticity(profile, tag)) gamut.primaries.push_back(*xy);
        if (gamut.primaries.size() == 3) {
            gamut.outline = gamut.primaries;
            return gamut;
        }
        gamut.primaries.clear();
    }
    gamut.outline = SampledOutline(profile);
    return gamut;
}

}  // namespace

SGamut GamutOfProfile(const std::vector<uint8_t>& bytes, const std::string& label, const SColour& colour) {
    ProfilePtr profile(cmsOpenProfileFromMem(bytes.data(), cmsUInt32Number(bytes.size())));
    if (!profile) throw CCliError(EExit::Corrupt, label + ": lcms2 cannot open the profile to draw it");
    return GamutOf(profile.get(), label, colour);
}

SGamut SRGBReferenceGamut() {
    ProfilePtr profile(cmsCreate_sRGBProfile());
    return GamutOf(profile.get(), "sRGB", kReferenceColour);
}

}  // namespace teskcolor
