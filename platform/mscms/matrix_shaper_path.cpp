// 8-bit RGB to RGB between two matrix-shaper profiles, as lcms2 optimises
// it: input curves to 1.14 fixed point, one 3x3 matrix in 1.14, a clip to
// 0..1 and output curves on 16385 steps. The matrix products for each input
// value are laid out as one register per value, so a pixel is three loads
// and two additions before the output curves.
#include <emmintrin.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <random>
#include <vector>

#include "eight_bit_path.h"
#include "transform_chain.h"

namespace tesk::mscms {
namespace {

constexpr int kOne = 1 << 14;  // 1.0 in 1.14 fixed point

int32_t ToFixed14(double value) { return static_cast<int32_t>(std::floor(value * kOne + 0.5)); }

uint8_t ToByte(double value) {  // lcms2's saturation to 16 bits, then its 16 to 8 bits
    const double scaled = std::clamp(value, 0.0, 1.0) * 65535.0 + 0.5;
    const uint32_t word = scaled >= 65535.0 ? 65535 : static_cast<uint32_t>(scaled);
    return static_cast<uint8_t>((word * 65281u + 8388608u) >> 24);
}

struct MatrixShaper {
    PixelBytes in, out;
    // For input channel c (lcms2's order) and value v: the 1.14 products of
    // the matrix column c with the input curve's value, one lane per output
    // byte (the rounding half of 1.14 in channel 0's).
    alignas(16) int32_t columns[3][256][4];
    uint8_t curves[3][kOne + 1];  // output curve of each output byte
};

template <Output kind>
void RunMatrixShaper(const MatrixShaper& m, const uint8_t* in, uint8_t* out, size_t count) {
    const unsigned o0 = m.in.offsets[0], o1 = m.in.offsets[1], o2 = m.in.offsets[2];
    const unsigned inSize = m.in.size, outSize = m.out.size;
    const __m128i zero = _mm_setzero_si128(), one = _mm_set1_epi16(kOne);
    for (size_t i = 0; i < count; ++i, in += inSize, out += outSize) {
        __m128i sum = _mm_load_si128(reinterpret_cast<const __m128i*>(m.columns[0][in[o0]]));
        sum = _mm_add_epi32(sum, _mm_load_si128(reinterpret_cast<const __m128i*>(m.columns[1][in[o1]])));
        sum = _mm_add_epi32(sum, _mm_load_si128(reinterpret_cast<const __m128i*>(m.columns[2][in[o2]])));
        // Clipped to 0..1; the 16-bit saturation on the way keeps the order.
        __m128i linear = _mm_packs_epi32(_mm_srai_epi32(sum, 14), zero);
        linear = _mm_min_epi16(_mm_max_epi16(linear, zero), one);
        const uint32_t bytes = uint32_t{m.curves[0][_mm_extract_epi16(linear, 0)]} |
                               uint32_t{m.curves[1][_mm_extract_epi16(linear, 1)]} << 8 |
                               uint32_t{m.curves[2][_mm_extract_epi16(linear, 2)]} << 16;
        Store<kind>(in, out, bytes);
    }
}

class MatrixShaperPath final : public EightBitPath {
public:
    explicit MatrixShaperPath(std::unique_ptr<MatrixShaper> tables) : m_(std::move(tables)) {
        switch (OutputKind(m_->in, m_->out)) {
        case Output::Three: run_ = RunMatrixShaper<Output::Three>; break;
        case Output::Four: run_ = RunMatrixShaper<Output::Four>; break;
        case Output::ExtraFromInput: run_ = RunMatrixShaper<Output::ExtraFromInput>; break;
        case Output::ExtraKept: run_ = RunMatrixShaper<Output::ExtraKept>; break;
        }
    }
    void Run(const uint8_t* in, uint8_t* out, size_t count) const override { run_(*m_, in, out, count); }

private:
    std::unique_ptr<MatrixShaper> m_;
    void (*run_)(const MatrixShaper&, const uint8_t*, uint8_t*, size_t) = nullptr;
};

struct Profile {
    explicit Profile(const std::vector<uint8_t>& bytes)
        : handle(cmsOpenProfileFromMem(bytes.data(), static_cast<cmsUInt32Number>(bytes.size()))) {}
    ~Profile() {
        if (handle) cmsCloseProfile(handle);
    }
    Profile(const Profile&) = delete;
    Profile& operator=(const Profile&) = delete;
    cmsHPROFILE handle;
};

// An RGB profile lcms2 uses through its colorants and curves for `intent`.
bool IsRgbMatrixShaper(cmsHPROFILE profile, cmsUInt32Number intent, int direction) {
    return profile && cmsGetColorSpace(profile) == cmsSigRgbData && cmsGetPCS(profile) == cmsSigXYZData &&
           cmsIsMatrixShaper(profile) && !cmsIsCLUT(profile, intent, direction);
}

using Matrix = double[3][3];

// Colorants as columns: RGB to XYZ.
bool Colorants(cmsHPROFILE profile, Matrix& m) {
    const cmsTagSignature tags[3] = {cmsSigRedColorantTag, cmsSigGreenColorantTag, cmsSigBlueColorantTag};
    for (int c = 0; c < 3; ++c) {
        const auto* xyz = static_cast<const cmsCIEXYZ*>(cmsReadTag(profile, tags[c]));
        if (!xyz) return false;
        m[0][c] = xyz->X;
        m[1][c] = xyz->Y;
        m[2][c] = xyz->Z;
    }
    return true;
}

double Determinant(const Matrix& m) {
    return m[0][0] * (m[1][1] * m[2][2] - m[1][2] * m[2][1]) - m[0][1] * (m[1][0] * m[2][2] - m[1][2] * m[2][0]) +
           m[0][2] * (m[1][0] * m[2][1] - m[1][1] * m[2][0]);
}

bool Invert(const Matrix& m, Matrix& inverse) {
    const double det = Determinant(m);
    if (std::fabs(det) < 1e-9) return false;
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c) {
            const int r1 = (c + 1) % 3, r2 = (c + 2) % 3, c1 = (r + 1) % 3, c2 = (r + 2) % 3;
            inverse[r][c] = (m[r1][c1] * m[r2][c2] - m[r1][c2] * m[r2][c1]) / det;
        }
    return true;
}

bool Curves(cmsHPROFILE profile, const cmsToneCurve* (&curves)[3]) {
    const cmsTagSignature tags[3] = {cmsSigRedTRCTag, cmsSigGreenTRCTag, cmsSigBlueTRCTag};
    for (int c = 0; c < 3; ++c)
        if (!(curves[c] = static_cast<const cmsToneCurve*>(cmsReadTag(profile, tags[c])))) return false;
    return true;
}

// Whether lcms2 reverses both curves alike: the same curve, or two whose
// reversal works from equal sampled tables (lcms2 inverts a single
// parametric segment by formula instead, so those count only as the same).
bool SameReverse(const cmsToneCurve* a, const cmsToneCurve* b) {
    if (a == b) return true;
    if (cmsGetToneCurveParametricType(a) != 0 || cmsGetToneCurveParametricType(b) != 0) return false;
    const cmsUInt32Number entries = cmsGetToneCurveEstimatedTableEntries(a);
    return entries == cmsGetToneCurveEstimatedTableEntries(b) &&
           std::memcmp(cmsGetToneCurveEstimatedTable(a), cmsGetToneCurveEstimatedTable(b),
                       entries * sizeof(cmsUInt16Number)) == 0;
}

std::unique_ptr<MatrixShaper> BuildTables(cmsHPROFILE from, cmsHPROFILE to, const PixelBytes& in,
                                          const PixelBytes& out) {
    Matrix source, destination, inverse, m;
    const cmsToneCurve *inCurves[3], *outCurves[3];
    if (!Colorants(from, source) || !Colorants(to, destination) || !Invert(destination, inverse) ||
        !Curves(from, inCurves) || !Curves(to, outCurves))
        return nullptr;
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c)
            m[r][c] = inverse[r][0] * source[0][c] + inverse[r][1] * source[1][c] + inverse[r][2] * source[2][c];

    auto tables = std::make_unique<MatrixShaper>();
    tables->in = in;
    tables->out = out;
    for (int c = 0; c < 3; ++c) {
        for (unsigned v = 0; v < 256; ++v) {
            const double y = cmsEvalToneCurveFloat(inCurves[c], static_cast<cmsFloat32Number>(v / 255.0));
            const int32_t shaped = y < 131072.0 ? ToFixed14(y) : 0x7FFFFFFF;
            int32_t* lanes = tables->columns[c][v];
            lanes[3] = 0;
            for (int r = 0; r < 3; ++r)
                lanes[out.offsets[r]] = static_cast<int32_t>(static_cast<uint32_t>(ToFixed14(m[r][c])) *
                                                             static_cast<uint32_t>(shaped)) +
                                        (c == 0 ? kOne / 2 : 0);
        }
    }
    for (int r = 0; r < 3; ++r) {
        uint8_t* curve = tables->curves[out.offsets[r]];
        // Reversing a sampled curve is the costliest step here, and the
        // three channels usually share one curve.
        const int same = r == 0 ? -1 : SameReverse(outCurves[r], outCurves[r - 1]) ? r - 1
                                   : SameReverse(outCurves[r], outCurves[0])     ? 0
                                                                                 : -1;
        if (same >= 0) {
            std::memcpy(curve, tables->curves[out.offsets[same]], kOne + 1);
            continue;
        }
        cmsToneCurve* reversed = cmsReverseToneCurve(outCurves[r]);
        if (!reversed) return nullptr;
        for (int i = 0; i <= kOne; ++i)
            curve[i] = ToByte(cmsEvalToneCurveFloat(reversed, static_cast<cmsFloat32Number>(i / double{kOne})));
        cmsFreeToneCurve(reversed);
    }
    return tables;
}

// The tables follow how lcms2 builds and optimises such a chain; this
// proves it for the chain at hand on every grid corner of 32 steps and on
// noise, against lcms2 itself: at most one code value apart, on no more
// than 0.1 % of the bytes.
bool AgreesWithLcms2(const EightBitPath& path, cmsHTRANSFORM lcms, const PixelBytes& in, const PixelBytes& out) {
    constexpr size_t kSteps = 32, kNoise = 16384, kCount = kSteps * kSteps * kSteps + kNoise;
    std::vector<uint8_t> pixels(kCount * in.size);
    std::mt19937 random(7);
    for (size_t i = 0; i < kCount; ++i)
        for (unsigned b = 0; b < in.size; ++b) {
            const size_t corner = ((i - kNoise) >> (5 * (b % 3))) % kSteps;
            pixels[i * in.size + b] = static_cast<uint8_t>(i < kNoise ? random() : corner * 255 / (kSteps - 1));
        }
    std::vector<uint8_t> ours(kCount * out.size, 0x5A), theirs(kCount * out.size, 0x5A);
    path.Run(pixels.data(), ours.data(), kCount);
    cmsDoTransform(lcms, pixels.data(), theirs.data(), static_cast<cmsUInt32Number>(kCount));
    size_t offByOne = 0;
    for (size_t i = 0; i < ours.size(); ++i) {
        const int difference = std::abs(int{ours[i]} - int{theirs[i]});
        if (difference > 1) return false;
        offByOne += difference;
    }
    return offByOne * 1000 <= ours.size();
}

}  // namespace

bool JoinsTwoMatrixShapers(const ChainKey& key) {
    if (key.uses.size() != 2 || (key.lcmsFlags & cmsFLAGS_GAMUTCHECK)) return false;
    const ProfileUse &first = key.uses[0], &second = key.uses[1];
    if (first.intent == INTENT_ABSOLUTE_COLORIMETRIC || second.intent == INTENT_ABSOLUTE_COLORIMETRIC) return false;
    Profile from(key.profiles[first.profile]), to(key.profiles[second.profile]);
    return IsRgbMatrixShaper(from.handle, first.intent, LCMS_USED_AS_INPUT) &&
           IsRgbMatrixShaper(to.handle, second.intent, LCMS_USED_AS_OUTPUT);
}

bool MatrixShapersSurelyJoin(const ChainKey& key) {
    if (!JoinsTwoMatrixShapers(key) || (key.lcmsFlags & cmsFLAGS_BLACKPOINTCOMPENSATION)) return false;
    for (const ProfileUse& use : key.uses) {
        Profile profile(key.profiles[use.profile]);
        Matrix colorants;
        const cmsToneCurve* curves[3];
        // lcms2 calls a matrix singular below a determinant of 1e-4; far
        // from that, inverting it cannot fail.
        if (!Colorants(profile.handle, colorants) || !Curves(profile.handle, curves) ||
            !(std::fabs(Determinant(colorants)) > 0.01))
            return false;
    }
    return true;
}

std::unique_ptr<EightBitPath> MakeMatrixShaperPath(ChainTransforms& chain, cmsUInt32Number inputFormat,
                                                   cmsUInt32Number outputFormat, const PixelBytes& in,
                                                   const PixelBytes& out) {
    const ChainKey& key = chain.Key();
    if (in.channels != 3 || out.channels != 3 || !JoinsTwoMatrixShapers(key)) return nullptr;
    Profile from(key.profiles[key.uses[0].profile]), to(key.profiles[key.uses[1].profile]);
    auto tables = BuildTables(from.handle, to.handle, in, out);
    if (!tables) return nullptr;
    auto path = std::make_unique<MatrixShaperPath>(std::move(tables));
    auto lcms = chain.For(inputFormat, outputFormat);
    if (!lcms || !AgreesWithLcms2(*path, lcms->Get(), in, out)) return nullptr;
    return path;
}

}  // namespace tesk::mscms
