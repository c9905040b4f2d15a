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

    Bytes srgb_ = SrgbProfile();
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

}  // namespace
}  // namespace tesk::test
