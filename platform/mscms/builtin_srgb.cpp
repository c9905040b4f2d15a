#include "builtin_srgb.h"

#include <cmath>
#include <memory>
#include <optional>

#include <tesk/big_endian.h>

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

// IEC 61966-2.1's reference conditions: an 80 cd/m2 D65 display, 64 lux of
// D65 ambient light and a surround of 20 % of it, 1 % veiling flare.
constexpr double kDisplayLuminance = 80.0;
constexpr double kAmbientLuminance = 64.0 / 3.14159265358979;  // a perfect diffuser under 64 lux
constexpr double kSurroundFactor = 0.2;
constexpr uint32_t kIlluminantD65 = 2;
constexpr uint32_t kObserver1931 = 1;

Xyz Scaled(const Xyz& xyz, double factor) { return {xyz[0] * factor, xyz[1] * factor, xyz[2] * factor}; }

std::shared_ptr<Bytes> Shared(Bytes bytes) { return std::make_shared<Bytes>(std::move(bytes)); }

// viewingConditionsType: illuminant, surround, illuminant type.
Bytes ViewingConditionsTag(const Xyz& d65) {
    Bytes tag(36, 0);
    PutBE32(&tag[0], 'view');
    const Xyz illuminant = Scaled(d65, kAmbientLuminance), surround = Scaled(d65, kAmbientLuminance * kSurroundFactor);
    for (int i = 0; i < 3; ++i) {
        PutBE32(&tag[8 + 4 * i], static_cast<uint32_t>(S15Fixed16(illuminant[i])));
        PutBE32(&tag[20 + 4 * i], static_cast<uint32_t>(S15Fixed16(surround[i])));
    }
    PutBE32(&tag[32], kIlluminantD65);
    return tag;
}

// measurementType: 1931 observer, no backing, unknown geometry, 1 % flare, D65.
Bytes MeasurementTag() {
    Bytes tag(36, 0);
    PutBE32(&tag[0], 'meas');
    PutBE32(&tag[8], kObserver1931);
    PutBE32(&tag[28], static_cast<uint32_t>(std::lround(0.01 * 65536.0)));
    PutBE32(&tag[32], kIlluminantD65);
    return tag;
}

Bytes SignatureTag(uint32_t signature) {
    Bytes tag(12, 0);
    PutBE32(&tag[0], 'sig ');
    PutBE32(&tag[8], signature);
    return tag;
}

// A complete display profile: the matrix/TRC tags that make it sRGB, and the
// device, viewing and measurement tags that a system's own sRGB profile has.
Bytes MakeSrgbProfile() {
    MatrixProfileSpec profile;
    profile.red = {0.64, 0.33};
    profile.green = {0.30, 0.60};
    profile.blue = {0.15, 0.06};
    profile.white = {0.3127, 0.3290};
    profile.sampledCurve = SampledSrgbCurve();
    profile.description = "sRGB IEC61966-2.1";
    profile.copyright = "No copyright, use freely";
    std::optional<IccContainer> container = ParseIccContainer(BuildMatrixProfile(profile));
    if (!container) return {};
    const Xyz d65 = XyzOf(profile.white);
    const auto add = [&](uint32_t signature, Bytes data) { container->tags.push_back({signature, Shared(std::move(data))}); };
    add('bkpt', XyzTag({0, 0, 0}));
    add('lumi', XyzTag(Scaled(d65, kDisplayLuminance)));
    add('dmnd', DescTag("International Electrotechnical Commission"));
    add('dmdd', DescTag("IEC 61966-2.1 default RGB colour space - sRGB"));
    add('vued', DescTag("Reference viewing condition of IEC 61966-2.1"));
    add('view', ViewingConditionsTag(d65));
    add('meas', MeasurementTag());
    add('tech', SignatureTag('CRT '));
    return SerializeIccContainer(*container);
}

}  // namespace

const std::vector<uint8_t>& BuiltInSrgbProfileBytes() {
    static const Bytes bytes = MakeSrgbProfile();
    return bytes;
}

}  // namespace tesk::mscms
