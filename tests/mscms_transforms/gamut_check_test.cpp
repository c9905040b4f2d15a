// CheckBitmapBits against lcms2's own gamut check: the pixels it paints with
// the alarm colour when soft-proofing through the same profile.
#include <gtest/gtest.h>

#include "transform_test_support.h"

namespace tesk::test {
namespace {

// Out of the proof profile's gamut, as a proofing transform with lcms2's gamut
// check marks it: the default alarm colour, which no in-gamut pixel of these
// gives at 16 bits. `bgr` holds B,G,R bytes.
std::vector<bool> LcmsOutOfGamut(const Bytes& source, const Bytes& proof, cmsUInt32Number intent, const Bytes& bgr) {
    cmsHPROFILE in = cmsOpenProfileFromMem(source.data(), static_cast<cmsUInt32Number>(source.size()));
    cmsHPROFILE gamut = cmsOpenProfileFromMem(proof.data(), static_cast<cmsUInt32Number>(proof.size()));
    cmsHTRANSFORM transform = cmsCreateProofingTransform(in, TYPE_BGR_8, in, TYPE_RGB_16, gamut, intent,
                                                         INTENT_RELATIVE_COLORIMETRIC, cmsFLAGS_GAMUTCHECK);
    cmsCloseProfile(in);
    cmsCloseProfile(gamut);
    const size_t pixels = bgr.size() / 3;
    std::vector<uint16_t> out(pixels * 3);
    cmsDoTransform(transform, bgr.data(), out.data(), static_cast<cmsUInt32Number>(pixels));
    cmsDeleteTransform(transform);
    std::vector<bool> outside(pixels);
    for (size_t i = 0; i < pixels; ++i)
        outside[i] = out[3 * i] == 0x7F00 && out[3 * i + 1] == 0x7F00 && out[3 * i + 2] == 0x7F00;
    return outside;
}

class GamutCheckTest : public IsolatedTest {
protected:
    Bytes srgb_ = SrgbProfileBytes();
    Bytes fogra_ = FograProfile();
};

TEST_F(GamutCheckTest, MarksWhatLcmsMarks) {
    // Blue, grey, green, a skin tone, white, cyan, then noise enough for threads.
    Bytes bgr = {255, 0, 0, 128, 128, 128, 0, 255, 0, 120, 150, 200, 255, 255, 255, 255, 255, 0};
    const Bytes noise = NoiseBytes(3 * 64 * 100, 7);
    bgr.insert(bgr.end(), noise.begin(), noise.end());
    const DWORD width = 64, height = static_cast<DWORD>(bgr.size() / 3 / width);
    bgr.resize(size_t{width} * height * 3);
    const std::vector<bool> expected = LcmsOutOfGamut(srgb_, fogra_, INTENT_PERCEPTUAL, bgr);
    ASSERT_TRUE(expected[0] && !expected[1] && expected[2] && !expected[3]);
    Transform transform = MakeTransform({&srgb_, &fogra_}, {INTENT_PERCEPTUAL});
    Bytes results(size_t{width} * height, 0x55);
    ASSERT_TRUE(CheckBitmapBits(transform.Get(), bgr.data(), BM_RGBTRIPLETS, width, height, 0, results.data(),
                                nullptr, 0));
    for (size_t i = 0; i < results.size(); ++i) ASSERT_EQ(results[i] != 0, expected[i]) << "pixel " << i;
}

// No gamut to check against: pixels that do not fit, or a chain ending in the
// connection space.
TEST_F(GamutCheckTest, RefusesWhatItCannotCheck) {
    const Bytes lab = LabProfile();
    Transform toCmyk = MakeTransform({&srgb_, &fogra_}, {INTENT_PERCEPTUAL});
    Transform toLab = MakeTransform({&srgb_, &lab}, {INTENT_PERCEPTUAL});
    uint8_t pixel[4] = {}, result = 0;
    const struct {
        HTRANSFORM transform;
        BMFORMAT format;
        DWORD error;
    } cases[] = {{toCmyk.Get(), BM_KYMCQUADS, ERROR_COLORSPACE_MISMATCH},
                 {toLab.Get(), BM_RGBTRIPLETS, ERROR_INVALID_TRANSFORM}};
    for (const auto& c : cases) {
        SetLastError(0);
        EXPECT_FALSE(CheckBitmapBits(c.transform, pixel, c.format, 1, 1, 0, &result, nullptr, 0)) << c.error;
        EXPECT_EQ(GetLastError(), c.error);
    }
}

}  // namespace
}  // namespace tesk::test
