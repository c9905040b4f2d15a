#include "cli/ColourEquivalence.h"

#include <lcms2.h>

#include <algorithm>
#include <cstdlib>
#include <memory>

namespace teskcolor {

namespace {

struct SProfileCloser {
    void operator()(void* profile) const { cmsCloseProfile(profile); }
};
using ProfilePtr = std::unique_ptr<void, SProfileCloser>;

ProfilePtr OpenRgb(const std::vector<uint8_t>& bytes) {
    if (bytes.empty()) return nullptr;
    ProfilePtr profile(cmsOpenProfileFromMem(bytes.data(), cmsUInt32Number(bytes.size())));
    if (profile && cmsGetColorSpace(profile.get()) != cmsSigRgbData) profile.reset();
    return profile;
}

// Levels per channel: every curve and the matrix are seen at 17 points.
constexpr int kLevels = 17;
constexpr int kTolerance = 257;  // 1/255 in 16-bit steps

}  // namespace

bool SameRgbColours(const std::vector<uint8_t>& from, const std::vector<uint8_t>& to) {
    if (from == to) return true;
    const ProfilePtr source = OpenRgb(from), target = OpenRgb(to);
    if (!source || !target) return false;
    // Unoptimised: lcms2's own 16-bit precalculation would blur the comparison.
    cmsHTRANSFORM transform = cmsCreateTransform(source.get(), TYPE_RGB_16, target.get(), TYPE_RGB_16,
                                                 INTENT_RELATIVE_COLORIMETRIC, cmsFLAGS_NOOPTIMIZE | cmsFLAGS_NOCACHE);
    if (!transform) return false;
    std::vector<cmsUInt16Number> grid;
    grid.reserve(size_t(kLevels) * kLevels * kLevels * 3);
    for (int r = 0; r < kLevels; ++r)
        for (int g = 0; g < kLevels; ++g)
            for (int b = 0; b < kLevels; ++b)
                for (int level : {r, g, b}) grid.push_back(cmsUInt16Number(level * 65535 / (kLevels - 1)));
    std::vector<cmsUInt16Number> converted(grid.size());
    cmsDoTransform(transform, grid.data(), converted.data(), cmsUInt32Number(grid.size() / 3));
    cmsDeleteTransform(transform);
    return std::equal(grid.begin(), grid.end(), converted.begin(),
                      [](int a, int b) { return std::abs(a - b) <= kTolerance; });
}

}  // namespace teskcolor
