#include "builtin_srgb.h"

#include <cmath>

#include "matrix_profile.h"
#include "profile_access.h"

namespace tesk::mscms {

namespace {

// 1024 samples of the sRGB curve, rounded to nearest: fine enough that the
// sampled curve is recognised as sRGB rather than reduced to a gamma.
std::vector<uint16_t> SampledSrgbCurve() {
    constexpr size_t kCount = 1024;
    std::vector<uint16_t> curve(kCount);
    for (size_t i = 0; i < kCount; ++i) {
        const double x = static_cast<double>(i) / (kCount - 1);
        const double linear = x <= 0.04045 ? x / 12.92 : std::pow((x + 0.055) / 1.055, 2.4);
        curve[i] = static_cast<uint16_t>(std::lround(linear * 65535.0));
    }
    return curve;
}

Bytes MakeSrgbProfile() {
    MatrixProfileSpec profile;
    profile.red = {0.64, 0.33};
    profile.green = {0.30, 0.60};
    profile.blue = {0.15, 0.06};
    profile.white = {0.3127, 0.3290};
    profile.sampledCurve = SampledSrgbCurve();
    profile.description = "sRGB IEC61966-2.1";
    profile.copyright = "No copyright, use freely";
    return BuildMatrixProfile(profile);
}

}  // namespace

const std::vector<uint8_t>& BuiltInSrgbProfileBytes() {
    static const Bytes bytes = MakeSrgbProfile();
    return bytes;
}

}  // namespace tesk::mscms
