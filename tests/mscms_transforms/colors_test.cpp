// TranslateColors with 16-bit COLOR values of every colour type.
#include <gtest/gtest.h>

#include <cstring>

#include "transform_test_support.h"

namespace tesk::test {
namespace {

COLOR Rgb(WORD red, WORD green, WORD blue) {
    COLOR color{};
    color.rgb = {red, green, blue};
    return color;
}

class Colors : public IsolatedTest {
protected:
    Bytes srgb_ = SrgbProfileBytes();
};

TEST_F(Colors, RgbToCmykMatchesLcms2SixteenBit) {
    const Bytes fogra = FograProfile();
    Transform transform = MakeTransform({&srgb_, &fogra}, {INTENT_RELATIVE_COLORIMETRIC});
    COLOR in[3] = {Rgb(0xFFFF, 0, 0), Rgb(0x1234, 0x8000, 0xFEDC), Rgb(0, 0, 0)};
    COLOR out[3];
    ASSERT_TRUE(TranslateColors(transform.Get(), in, 3, COLOR_RGB, out, COLOR_CMYK));

    Bytes packed(3 * 6);
    for (int i = 0; i < 3; ++i) std::memcpy(packed.data() + i * 6, &in[i].rgb, 6);
    const Bytes expected = LcmsReference(srgb_, fogra, TYPE_RGB_16, TYPE_CMYK_16, INTENT_RELATIVE_COLORIMETRIC,
                                         cmsFLAGS_HIGHRESPRECALC, packed, 3);
    for (int i = 0; i < 3; ++i) EXPECT_EQ(std::memcmp(&out[i].cmyk, expected.data() + i * 8, 8), 0) << i;
    EXPECT_GT(out[0].cmyk.magenta, 0xE000);  // red: magenta and yellow
    EXPECT_LT(out[0].cmyk.cyan, 0x0800);
    EXPECT_GT(out[2].cmyk.black, 0xC000);

    // And back: no ink is paper white.
    Transform back = MakeTransform({&fogra, &srgb_}, {INTENT_RELATIVE_COLORIMETRIC});
    COLOR paper{}, rgb{};
    ASSERT_TRUE(TranslateColors(back.Get(), &paper, 1, COLOR_CMYK, &rgb, COLOR_RGB));
    EXPECT_GT(rgb.rgb.red, 0xF800);
    EXPECT_GT(rgb.rgb.green, 0xF800);
    EXPECT_GT(rgb.rgb.blue, 0xF800);
}

TEST_F(Colors, LabAndXyzUseIccSixteenBitEncodings) {
    const Bytes lab = LabProfile();
    const Bytes xyz = XyzProfile();
    Transform toLab = MakeTransform({&srgb_, &lab}, {INTENT_RELATIVE_COLORIMETRIC});
    Transform toXyz = MakeTransform({&srgb_, &xyz}, {INTENT_RELATIVE_COLORIMETRIC});
    Transform fromLab = MakeTransform({&lab, &srgb_}, {INTENT_RELATIVE_COLORIMETRIC});
    Transform fromXyz = MakeTransform({&xyz, &srgb_}, {INTENT_RELATIVE_COLORIMETRIC});

    COLOR in[2] = {Rgb(0xFFFF, 0xFFFF, 0xFFFF), Rgb(0, 0, 0)};
    COLOR out[2];
    ASSERT_TRUE(TranslateColors(toLab.Get(), in, 2, COLOR_RGB, out, COLOR_Lab));
    EXPECT_NEAR(out[0].Lab.L, 0xFFFF, 2);  // L 100
    EXPECT_NEAR(out[0].Lab.a, 0x8080, 16);  // a 0
    EXPECT_NEAR(out[0].Lab.b, 0x8080, 16);
    EXPECT_NEAR(out[1].Lab.L, 0, 2);

    ASSERT_TRUE(TranslateColors(toXyz.Get(), in, 1, COLOR_RGB, out, COLOR_XYZ));
    EXPECT_NEAR(out[0].XYZ.X, 0.9642 * 32768, 40);  // D50 white, 0x8000 for 1.0
    EXPECT_NEAR(out[0].XYZ.Y, 32768, 40);
    EXPECT_NEAR(out[0].XYZ.Z, 0.8249 * 32768, 40);

    COLOR labWhite{}, xyzWhite{}, rgb[2];
    labWhite.Lab = {0xFFFF, 0x8080, 0x8080};
    xyzWhite.XYZ = {WORD(0.9642 * 32768), 32768, WORD(0.8249 * 32768)};
    ASSERT_TRUE(TranslateColors(fromLab.Get(), &labWhite, 1, COLOR_Lab, &rgb[0], COLOR_RGB));
    ASSERT_TRUE(TranslateColors(fromXyz.Get(), &xyzWhite, 1, COLOR_XYZ, &rgb[1], COLOR_RGB));
    for (const COLOR& c : rgb) {
        EXPECT_GT(c.rgb.red, 0xFE00);
        EXPECT_GT(c.rgb.green, 0xFE00);
        EXPECT_GT(c.rgb.blue, 0xFE00);
    }
}

TEST_F(Colors, GrayIsOneWordAndTheRestOfTheOutputIsCleared) {
    const Bytes gray = GreyProfileBytes();
    Transform transform = MakeTransform({&srgb_, &gray}, {INTENT_RELATIVE_COLORIMETRIC});
    COLOR in[3] = {Rgb(0xFFFF, 0xFFFF, 0xFFFF), Rgb(0, 0, 0), Rgb(0, 0xFFFF, 0)};
    COLOR out[3];
    std::memset(out, 0xAB, sizeof out);
    ASSERT_TRUE(TranslateColors(transform.Get(), in, 3, COLOR_RGB, out, COLOR_GRAY));
    EXPECT_EQ(out[0].gray.gray, 0xFFFF);
    EXPECT_EQ(out[1].gray.gray, 0);
    EXPECT_GT(out[2].gray.gray, 0x8000);  // green is light
    EXPECT_EQ(out[2].rgb.green, 0);
    EXPECT_EQ(out[2].cmyk.black, 0);
}

TEST_F(Colors, InputAndOutputMayBeTheSameArray) {
    const Bytes fogra = FograProfile();
    Transform transform = MakeTransform({&srgb_, &fogra}, {INTENT_PERCEPTUAL});
    COLOR colors[4] = {Rgb(1, 2, 3), Rgb(0xFFFF, 0, 0x8000), Rgb(0x4000, 0x4000, 0x4000), Rgb(0, 0xFFFF, 0)};
    COLOR separate[4];
    ASSERT_TRUE(TranslateColors(transform.Get(), colors, 4, COLOR_RGB, separate, COLOR_CMYK));
    ASSERT_TRUE(TranslateColors(transform.Get(), colors, 4, COLOR_RGB, colors, COLOR_CMYK));
    for (int i = 0; i < 4; ++i) EXPECT_EQ(std::memcmp(&colors[i].cmyk, &separate[i].cmyk, 8), 0) << i;
}

TEST_F(Colors, WrongTypesHandlesAndPointersFail) {
    Transform transform = MakeTransform({&srgb_, &srgb_}, {INTENT_PERCEPTUAL});
    COLOR in = Rgb(1, 2, 3), out{};
    auto failure = [&](HTRANSFORM handle, PCOLOR from, COLORTYPE inType, PCOLOR to, COLORTYPE outType) {
        SetLastError(0);
        EXPECT_FALSE(TranslateColors(handle, from, 1, inType, to, outType));
        return GetLastError();
    };
    EXPECT_EQ(failure(transform.Get(), &in, COLOR_CMYK, &out, COLOR_RGB), DWORD{ERROR_COLORSPACE_MISMATCH});
    EXPECT_EQ(failure(transform.Get(), &in, COLOR_RGB, &out, COLOR_Lab), DWORD{ERROR_COLORSPACE_MISMATCH});
    EXPECT_EQ(failure(transform.Get(), &in, COLOR_NAMED, &out, COLOR_RGB), DWORD{ERROR_NOT_SUPPORTED});
    EXPECT_EQ(failure(transform.Get(), &in, COLORTYPE(99), &out, COLOR_RGB), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(failure(transform.Get(), nullptr, COLOR_RGB, &out, COLOR_RGB), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(failure(nullptr, &in, COLOR_RGB, &out, COLOR_RGB), DWORD{ERROR_INVALID_HANDLE});
    EXPECT_EQ(failure(reinterpret_cast<HTRANSFORM>(&in), &in, COLOR_RGB, &out, COLOR_RGB),
              DWORD{ERROR_INVALID_HANDLE});
    EXPECT_TRUE(TranslateColors(transform.Get(), nullptr, 0, COLOR_RGB, nullptr, COLOR_RGB));
}

}  // namespace
}  // namespace tesk::test
