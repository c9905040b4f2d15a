// Where each channel of each bitmap format lives in memory.
#include <gtest/gtest.h>

#include <array>

#include "transform_test_support.h"

namespace tesk::test {
namespace {

struct RgbLayout {
    BMFORMAT format;
    size_t bytesPerPixel;
    size_t red, green, blue;  // byte offsets in a pixel
};

constexpr RgbLayout kRgbLayouts[] = {
    {BM_RGBTRIPLETS, 3, 2, 1, 0},
    {BM_BGRTRIPLETS, 3, 0, 1, 2},
    {BM_xRGBQUADS, 4, 2, 1, 0},
    {BM_xBGRQUADS, 4, 0, 1, 2},
};

Bytes PrimariesIn(const RgbLayout& layout) {
    Bytes pixels(3 * layout.bytesPerPixel, 0);
    pixels[0 * layout.bytesPerPixel + layout.red] = 255;
    pixels[1 * layout.bytesPerPixel + layout.green] = 255;
    pixels[2 * layout.bytesPerPixel + layout.blue] = 255;
    return pixels;
}

class BitmapLayout : public IsolatedTest {
protected:
    Bytes srgb_ = SrgbProfileBytes();
};

TEST_F(BitmapLayout, EightBitRgbFormatsPutEachPrimaryInItsByte) {
    Transform transform = MakeTransform({&srgb_, &srgb_}, {INTENT_RELATIVE_COLORIMETRIC});
    for (const RgbLayout& from : kRgbLayouts) {
        for (const RgbLayout& to : kRgbLayouts) {
            SCOPED_TRACE(testing::Message() << "from " << from.format << " to " << to.format);
            Bytes in = PrimariesIn(from);
            Bytes out(3 * to.bytesPerPixel, 0x55);
            ASSERT_TRUE(TranslatePacked(transform, in.data(), from.format, 3, 1, out.data(), to.format));
            for (size_t pixel = 0; pixel < 3; ++pixel) {
                const uint8_t* p = out.data() + pixel * to.bytesPerPixel;
                EXPECT_EQ(p[to.red], pixel == 0 ? 255 : 0) << "pixel " << pixel;
                EXPECT_EQ(p[to.green], pixel == 1 ? 255 : 0) << "pixel " << pixel;
                EXPECT_EQ(p[to.blue], pixel == 2 ? 255 : 0) << "pixel " << pixel;
            }
        }
    }
}

TEST_F(BitmapLayout, QuadPaddingByteTravelsFromQuadToQuad) {
    Transform transform = MakeTransform({&srgb_, &srgb_}, {INTENT_PERCEPTUAL});
    Bytes in = {10, 20, 30, 0xA5, 40, 50, 60, 0x5A};
    Bytes out(8, 0);
    ASSERT_TRUE(TranslateBitmapBits(transform.Get(), in.data(), BM_xRGBQUADS, 2, 1, 8, out.data(), BM_xBGRQUADS, 8,
                                    nullptr, 0));
    EXPECT_EQ(out[3], 0xA5);
    EXPECT_EQ(out[7], 0x5A);
}

TEST_F(BitmapLayout, SixteenBitRgbIsBlueGreenRedWords) {
    Transform transform = MakeTransform({&srgb_, &srgb_}, {INTENT_RELATIVE_COLORIMETRIC});
    Bytes in = PrimariesIn(kRgbLayouts[1]);  // R,G,B bytes
    std::array<uint16_t, 9> wide{};
    ASSERT_TRUE(TranslatePacked(transform, in.data(), BM_BGRTRIPLETS, 3, 1, wide.data(), BM_16b_RGB));
    EXPECT_EQ(wide, (std::array<uint16_t, 9>{0, 0, 0xFFFF, 0, 0xFFFF, 0, 0xFFFF, 0, 0}));

    Bytes back(9, 0x55);
    ASSERT_TRUE(TranslatePacked(transform, wide.data(), BM_16b_RGB, 3, 1, back.data(), BM_BGRTRIPLETS));
    EXPECT_EQ(back, in);
}

TEST_F(BitmapLayout, CmykQuadsAreReversedKymcQuads) {
    const Bytes fogra = FograProfile();
    Transform transform = MakeTransform({&srgb_, &fogra}, {INTENT_RELATIVE_COLORIMETRIC});
    // Red, blue, black as B,G,R triplets.
    Bytes in = {0, 0, 255, 255, 0, 0, 0, 0, 0};
    Bytes kymc(12), cmyk(12);
    ASSERT_TRUE(TranslatePacked(transform, in.data(), BM_RGBTRIPLETS, 3, 1, kymc.data(), BM_KYMCQUADS));
    ASSERT_TRUE(TranslatePacked(transform, in.data(), BM_RGBTRIPLETS, 3, 1, cmyk.data(), BM_CMYKQUADS));
    for (size_t pixel = 0; pixel < 3; ++pixel)
        for (size_t c = 0; c < 4; ++c) EXPECT_EQ(kymc[pixel * 4 + c], cmyk[pixel * 4 + 3 - c]);
    // BM_KYMCQUADS is C,M,Y,K in memory: red is magenta and yellow ink,
    // blue is cyan and magenta, black needs much K.
    EXPECT_LT(kymc[0], 10);
    EXPECT_GT(kymc[1], 220);
    EXPECT_GT(kymc[2], 220);
    EXPECT_GT(kymc[4], 220);
    EXPECT_LT(kymc[6], 10);
    EXPECT_GT(kymc[11], 200);

    // And as input: cyan ink alone gives little red and much blue.
    Transform back = MakeTransform({&fogra, &srgb_}, {INTENT_RELATIVE_COLORIMETRIC});
    Bytes cyanKymc = {255, 0, 0, 0}, cyanCmyk = {0, 0, 0, 255};
    Bytes rgbFromKymc(3), rgbFromCmyk(3);
    ASSERT_TRUE(TranslatePacked(back, cyanKymc.data(), BM_KYMCQUADS, 1, 1, rgbFromKymc.data(), BM_BGRTRIPLETS));
    ASSERT_TRUE(TranslatePacked(back, cyanCmyk.data(), BM_CMYKQUADS, 1, 1, rgbFromCmyk.data(), BM_BGRTRIPLETS));
    EXPECT_EQ(rgbFromKymc, rgbFromCmyk);
    EXPECT_LT(rgbFromKymc[0], 60);
    EXPECT_GT(rgbFromKymc[2], 200);
}

TEST_F(BitmapLayout, GrayFormatsHoldOneChannel) {
    const Bytes gray = GreyProfileBytes();
    Transform toGray = MakeTransform({&srgb_, &gray}, {INTENT_RELATIVE_COLORIMETRIC});
    Bytes rgb = {255, 255, 255, 0, 0, 0, 0, 255, 0, 0, 0, 255};  // white, black, green, red (B,G,R)
    Bytes levels(4);
    ASSERT_TRUE(TranslatePacked(toGray, rgb.data(), BM_RGBTRIPLETS, 4, 1, levels.data(), BM_GRAY));
    EXPECT_EQ(levels[0], 255);
    EXPECT_EQ(levels[1], 0);
    EXPECT_GT(levels[2], levels[3]);  // green is lighter than red

    Transform grayToGray = MakeTransform({&gray, &gray}, {INTENT_RELATIVE_COLORIMETRIC});
    std::array<uint16_t, 3> in16{0, 0x8000, 0xFFFF}, out16{};
    ASSERT_TRUE(TranslatePacked(grayToGray, in16.data(), BM_16b_GRAY, 3, 1, out16.data(), BM_16b_GRAY));
    EXPECT_EQ(out16[0], 0);
    EXPECT_NEAR(out16[1], 0x8000, 2);
    EXPECT_EQ(out16[2], 0xFFFF);
}

TEST_F(BitmapLayout, LabAndXyzFormatsListChannelsInReverse) {
    const Bytes lab = LabProfile();
    const Bytes xyz = XyzProfile();
    Transform toLab = MakeTransform({&srgb_, &lab}, {INTENT_RELATIVE_COLORIMETRIC});
    Transform toXyz = MakeTransform({&srgb_, &xyz}, {INTENT_RELATIVE_COLORIMETRIC});
    Bytes whiteAndRed = {255, 255, 255, 0, 0, 255};  // B,G,R

    Bytes lab8(6);
    ASSERT_TRUE(TranslatePacked(toLab, whiteAndRed.data(), BM_RGBTRIPLETS, 2, 1, lab8.data(), BM_LabTRIPLETS));
    EXPECT_EQ(lab8[2], 255);  // L of white
    EXPECT_NEAR(lab8[1], 128, 1);
    EXPECT_NEAR(lab8[0], 128, 1);
    EXPECT_GT(lab8[4], 128 + 50);  // red: a* large
    EXPECT_GT(lab8[3], 128 + 40);  // and b* positive

    std::array<uint16_t, 6> lab16{};
    ASSERT_TRUE(TranslatePacked(toLab, whiteAndRed.data(), BM_RGBTRIPLETS, 2, 1, lab16.data(), BM_16b_Lab));
    EXPECT_NEAR(lab16[2], 0xFFFF, 2);
    EXPECT_NEAR(lab16[1], 0x8080, 64);
    EXPECT_NEAR(lab16[0], 0x8080, 64);

    // XYZ as u1Fixed15: D50 white is X 0.9642, Y 1.0, Z 0.8249.
    std::array<uint16_t, 6> xyz16{};
    ASSERT_TRUE(TranslatePacked(toXyz, whiteAndRed.data(), BM_RGBTRIPLETS, 2, 1, xyz16.data(), BM_16b_XYZ));
    EXPECT_NEAR(xyz16[2], 0.9642 * 32768, 40);
    EXPECT_NEAR(xyz16[1], 32768, 40);
    EXPECT_NEAR(xyz16[0], 0.8249 * 32768, 40);
}

TEST_F(BitmapLayout, GenericThreeChannelTripletsMatchRgbTriplets) {
    Transform transform = MakeTransform({&srgb_, &srgb_}, {INTENT_PERCEPTUAL});
    const Bytes in = NoiseBytes(30, 7);
    Bytes viaRgb(30), viaGeneric(30);
    ASSERT_TRUE(TranslatePacked(transform, in.data(), BM_RGBTRIPLETS, 10, 1, viaRgb.data(), BM_RGBTRIPLETS));
    ASSERT_TRUE(TranslatePacked(transform, in.data(), BM_G3CHTRIPLETS, 10, 1, viaGeneric.data(), BM_G3CHTRIPLETS));
    EXPECT_EQ(viaRgb, viaGeneric);
}

TEST_F(BitmapLayout, UnusableFormatsFailWithTheirReason) {
    Transform transform = MakeTransform({&srgb_, &srgb_}, {INTENT_PERCEPTUAL});
    Bytes in(16), out(16);
    auto translate = [&](BMFORMAT from, BMFORMAT to) {
        SetLastError(0);
        EXPECT_FALSE(TranslatePacked(transform, in.data(), from, 1, 1, out.data(), to));
        return GetLastError();
    };
    EXPECT_EQ(translate(BM_x555RGB, BM_RGBTRIPLETS), DWORD{ERROR_NOT_SUPPORTED});
    EXPECT_EQ(translate(BM_RGBTRIPLETS, BM_10b_RGB), DWORD{ERROR_NOT_SUPPORTED});
    EXPECT_EQ(translate(static_cast<BMFORMAT>(0x7777), BM_RGBTRIPLETS), DWORD{ERROR_INVALID_PARAMETER});
    EXPECT_EQ(translate(BM_KYMCQUADS, BM_RGBTRIPLETS), DWORD{ERROR_COLORSPACE_MISMATCH});
    EXPECT_EQ(translate(BM_RGBTRIPLETS, BM_GRAY), DWORD{ERROR_COLORSPACE_MISMATCH});
}

}  // namespace
}  // namespace tesk::test
