// The platform's own 8-bit paths against lcms2's hi-res precalculation.
// Measured on 4 million samples per case below: no sample differs, so the
// tests ask for lcms2's bytes exactly, on the AVX2 and the baseline code.
#include <gtest/gtest.h>

#include <cstdlib>

#include "transform_test_support.h"

namespace tesk::test {
namespace {

struct ClutCase {
    bool fromRgb;
    BMFORMAT inFormat, outFormat;
    cmsUInt32Number lcmsIn, lcmsOut;
    size_t inBytes, outBytes;
    DWORD mode;
    cmsUInt32Number lcmsFlags;
    DWORD intent;
};

constexpr ClutCase kClutCases[] = {
    {true, BM_RGBTRIPLETS, BM_KYMCQUADS, TYPE_BGR_8, TYPE_CMYK_8, 3, 4, BEST_MODE, cmsFLAGS_HIGHRESPRECALC,
     INTENT_RELATIVE_COLORIMETRIC},
    {true, BM_xRGBQUADS, BM_CMYKQUADS, TYPE_BGRA_8, TYPE_KYMC_8, 4, 4, NORMAL_MODE, 0, INTENT_PERCEPTUAL},
    {true, BM_BGRTRIPLETS, BM_KYMCQUADS, TYPE_RGB_8, TYPE_CMYK_8, 3, 4, PROOF_MODE, cmsFLAGS_LOWRESPRECALC,
     INTENT_ABSOLUTE_COLORIMETRIC},
    {false, BM_KYMCQUADS, BM_RGBTRIPLETS, TYPE_CMYK_8, TYPE_BGR_8, 4, 3, BEST_MODE, cmsFLAGS_HIGHRESPRECALC,
     INTENT_RELATIVE_COLORIMETRIC},
    {false, BM_CMYKQUADS, BM_xBGRQUADS, TYPE_KYMC_8, TYPE_RGBA_8, 4, 4, NORMAL_MODE, 0, INTENT_PERCEPTUAL},
};

class EightBitPaths : public IsolatedTest {
protected:
    void TearDown() override { unsetenv("TESK_TRANSLATE_SIMD"); }

    Bytes srgb_ = SrgbProfileBytes();
    Bytes fogra_ = FograProfile();
};

TEST_F(EightBitPaths, ClutPathsGiveLcms2sBytesInEveryLayoutModeAndIntent) {
    const DWORD width = 997, height = 61;  // odd, so the last pixel of a row runs alone
    for (const char* simd : {"avx2", "sse2"}) {
        setenv("TESK_TRANSLATE_SIMD", simd, 1);
        for (const ClutCase& c : kClutCases) {
            const Bytes& from = c.fromRgb ? srgb_ : fogra_;
            const Bytes& to = c.fromRgb ? fogra_ : srgb_;
            Transform transform = MakeTransform({&from, &to}, {c.intent}, c.mode);
            Bytes in = NoiseBytes(size_t{width} * height * c.inBytes, 21);
            // White, black and every corner of the grid, which lcms2 patches or clips.
            for (size_t i = 0; i < 16 * c.inBytes; ++i) in[i] = (i / c.inBytes) >> (i % c.inBytes) & 1 ? 255 : 0;
            const Bytes reference = LcmsReference(from, to, c.lcmsIn, c.lcmsOut, c.intent, c.lcmsFlags, in,
                                                  size_t{width} * height);
            Bytes out(reference.size());
            // lcms2 leaves an output padding byte as it was when the input has none.
            if (c.lcmsOut == TYPE_RGBA_8)
                for (size_t i = 3; i < out.size(); i += 4) out[i] = reference[i];
            auto translate = [&](const uint8_t* from, uint8_t* to) {
                return TranslateBitmapBits(transform.Get(), const_cast<uint8_t*>(from), c.inFormat, width, height,
                                           DWORD(width * c.inBytes), to, c.outFormat, DWORD(width * c.outBytes),
                                           nullptr, 0);
            };
            ASSERT_TRUE(translate(in.data(), out.data()));
            EXPECT_TRUE(out == reference) << simd << " " << c.inFormat << " to " << c.outFormat;
            if (c.inBytes == c.outBytes && c.lcmsOut != TYPE_RGBA_8) {
                ASSERT_TRUE(translate(in.data(), in.data()));
                EXPECT_TRUE(in == reference) << simd << " in place " << c.inFormat;
            }
        }
    }
}

// A gamma 2.2 RGB with wide primaries, so that the matrix is far from identity.
Bytes WideGamutProfile() {
    const cmsCIExyY white = {0.3127, 0.3290, 1.0};
    const cmsCIExyYTRIPLE primaries = {{0.7347, 0.2653, 1.0}, {0.1152, 0.8264, 1.0}, {0.1566, 0.0177, 1.0}};
    cmsToneCurve* gamma = cmsBuildGamma(nullptr, 2.2);
    cmsToneCurve* curves[3] = {gamma, gamma, gamma};
    Bytes bytes = SavedProfile(cmsCreateRGBProfile(&white, &primaries, curves));
    cmsFreeToneCurve(gamma);
    return bytes;
}

struct RgbCase {
    BMFORMAT inFormat, outFormat;
    cmsUInt32Number lcmsIn, lcmsOut;
    size_t inBytes, outBytes;
    DWORD mode;
    cmsUInt32Number lcmsFlags;
    DWORD intent;
};

constexpr RgbCase kRgbCases[] = {
    {BM_RGBTRIPLETS, BM_RGBTRIPLETS, TYPE_BGR_8, TYPE_BGR_8, 3, 3, BEST_MODE, cmsFLAGS_HIGHRESPRECALC,
     INTENT_RELATIVE_COLORIMETRIC},
    {BM_xRGBQUADS, BM_xBGRQUADS, TYPE_BGRA_8, TYPE_RGBA_8, 4, 4, NORMAL_MODE, 0, INTENT_PERCEPTUAL},
    {BM_BGRTRIPLETS, BM_xRGBQUADS, TYPE_RGB_8, TYPE_BGRA_8, 3, 4, BEST_MODE, cmsFLAGS_HIGHRESPRECALC,
     INTENT_SATURATION},
};

TEST_F(EightBitPaths, MatrixShaperPathGivesLcms2sBytes) {
    const Bytes wide = WideGamutProfile();
    const DWORD width = 640, height = 80;
    for (const Bytes* to : {&wide, static_cast<const Bytes*>(&srgb_)}) {
        for (const RgbCase& c : kRgbCases) {
            Transform transform = MakeTransform({&srgb_, to}, {c.intent}, c.mode);
            Bytes in = NoiseBytes(size_t{width} * height * c.inBytes, 22);
            Bytes reference =
                LcmsReference(srgb_, *to, c.lcmsIn, c.lcmsOut, c.intent, c.lcmsFlags, in, size_t{width} * height);
            if (c.inBytes == 4 && c.outBytes == 4)  // extra bytes travel, as lcms2 copies alpha when asked
                for (size_t i = 3; i < reference.size(); i += 4) reference[i] = in[i];
            Bytes out(reference.size());
            if (c.lcmsIn == TYPE_RGB_8)  // no extra byte in: lcms2 leaves the output's as it was
                for (size_t i = 3; i < out.size(); i += 4) out[i] = reference[i];
            ASSERT_TRUE(TranslateBitmapBits(transform.Get(), in.data(), c.inFormat, width, height,
                                            DWORD(width * c.inBytes), out.data(), c.outFormat,
                                            DWORD(width * c.outBytes), nullptr, 0));
            EXPECT_TRUE(out == reference) << c.inFormat << " to " << c.outFormat << (to == &wide ? " wide" : "");
        }
    }
}

}  // namespace
}  // namespace tesk::test
