#include <gtest/gtest.h>

#include <cstring>

#include "host/imaging/PixelFormat.h"
#include "host/imaging/RowIterator.h"

TEST(PixelFormat, PredicatesOfEveryFormat) {
    struct Expect {
        EVPixelFormat format;
        int bits;
        bool indexed, wide, alpha, grey;
        EVPixelFormat eightBit;
    };
    const Expect table[] = {
        {VPF_INDEXED_1, 1, true, false, false, false, VPF_INDEXED_1},
        {VPF_INDEXED_2, 2, true, false, false, false, VPF_INDEXED_2},
        {VPF_INDEXED_4, 4, true, false, false, false, VPF_INDEXED_4},
        {VPF_INDEXED_8, 8, true, false, false, false, VPF_INDEXED_8},
        {VPF_GREY_8, 8, false, false, false, true, VPF_GREY_8},
        {VPF_GREY_ALPHA_8, 16, false, false, true, true, VPF_GREY_ALPHA_8},
        {VPF_RGB_8, 24, false, false, false, false, VPF_RGB_8},
        {VPF_RGBA_8, 32, false, false, true, false, VPF_RGBA_8},
        {VPF_RGB_555, 16, false, false, false, false, VPF_RGB_555},
        {VPF_GREY_16, 16, false, true, false, true, VPF_GREY_8},
        {VPF_GREY_ALPHA_16, 32, false, true, true, true, VPF_GREY_ALPHA_8},
        {VPF_RGB_16, 48, false, true, false, false, VPF_RGB_8},
        {VPF_RGBA_16, 64, false, true, true, false, VPF_RGBA_8},
    };
    for (const Expect& e : table) {
        SCOPED_TRACE(int(e.format));
        EXPECT_EQ(int(e.format), int(&e - table) + 1);  // the numbers the colour code relies on
        EXPECT_TRUE(CVPixelFormat::IsValid(e.format));
        EXPECT_EQ(CVPixelFormat::GetBitsPerPixel(e.format), e.bits);
        EXPECT_EQ(CVPixelFormat::IsIndexed(e.format), e.indexed);
        EXPECT_EQ(CVPixelFormat::Is16bit(e.format), e.wide);
        EXPECT_EQ(CVPixelFormat(e.format).Is16bit(), e.wide);
        EXPECT_EQ(CVPixelFormat::IsAlphaChannelPresent(e.format), e.alpha);
        EXPECT_EQ(CVPixelFormat::IsGreyscale(e.format), e.grey);
        EXPECT_EQ(CVPixelFormat::Get8bitFormat(e.format), e.eightBit);
        EXPECT_EQ(CVPixelFormat::IsIndexed(e.format) ? 1 << e.bits : 0, CVPixelFormat::GetPaletteSize(e.format));
    }
    for (int bad : {0, -1, 14, 255}) {
        EXPECT_FALSE(CVPixelFormat::IsValid(EVPixelFormat(bad)));
        EXPECT_EQ(CVPixelFormat::GetBitsPerPixel(EVPixelFormat(bad)), 0);
        EXPECT_FALSE(CVPixelFormat::Is16bit(EVPixelFormat(bad)));
    }
}

TEST(PixelFormat, RowBytesRoundUpPartialBytes) {
    EXPECT_EQ(CVPixelFormat::GetRowBytes(VPF_INDEXED_1, 9), 2);
    EXPECT_EQ(CVPixelFormat::GetRowBytes(VPF_INDEXED_2, 5), 2);
    EXPECT_EQ(CVPixelFormat::GetRowBytes(VPF_INDEXED_4, 3), 2);
    EXPECT_EQ(CVPixelFormat::GetRowBytes(VPF_RGB_16, 7), 42);
    EXPECT_EQ(CVPixelFormat::GetRowBytes(VPF_RGB_8, 0), 0);
}

namespace {

WORD Word(const BYTE* p) {
    WORD w;
    std::memcpy(&w, p, 2);
    return w;
}

}  // namespace

// The colour code hands these rows to the platform as BM_RGBTRIPLETS,
// BM_xRGBQUADS, BM_16b_RGB and BM_16b_GRAY: blue comes first.
TEST(PixelFormat, BackgroundLandsInPlatformChannelOrder) {
    const CColorRef colour(0x10, 0x80, 0xF0, 0x40);
    CRowIterator image;

    ASSERT_TRUE(image.Create(3, 2, VPF_RGB_8, nullptr, &colour));
    const BYTE* p = image.GetRow(1, 2);
    EXPECT_EQ(p[0], 0xF0);
    EXPECT_EQ(p[1], 0x80);
    EXPECT_EQ(p[2], 0x10);

    ASSERT_TRUE(image.Create(3, 2, VPF_RGBA_8, nullptr, &colour));
    p = image.GetRow(1, 2);
    EXPECT_EQ(p[2], 0x10);
    EXPECT_EQ(p[3], 0x40);

    ASSERT_TRUE(image.Create(3, 2, VPF_RGB_16, nullptr, &colour));
    p = image.GetRow(1, 1);
    EXPECT_EQ(p - image.GetRow(1), 6);
    EXPECT_EQ(Word(p), 0xF0F0);
    EXPECT_EQ(Word(p + 2), 0x8080);
    EXPECT_EQ(Word(p + 4), 0x1010);

    ASSERT_TRUE(image.Create(3, 2, VPF_RGBA_16, nullptr, &colour));
    p = image.GetRow(0, 2);
    EXPECT_EQ(Word(p + 4), 0x1010);
    EXPECT_EQ(Word(p + 6), 0x4040);

    ASSERT_TRUE(image.Create(2, 1, VPF_GREY_ALPHA_16, nullptr, &colour));
    EXPECT_EQ(Word(image.GetRow(0, 1) + 2), 0x4040);

    ASSERT_TRUE(image.Create(2, 1, VPF_RGB_555, nullptr, &colour));
    EXPECT_EQ(Word(image.GetRow(0, 1)), (0x10 >> 3) << 10 | (0x80 >> 3) << 5 | (0xF0 >> 3));

    const CColorRef index(0, 0, 0, 255, 2);
    ASSERT_TRUE(image.Create(5, 1, VPF_INDEXED_2, nullptr, &index));
    EXPECT_EQ(image.GetRow(0)[0], 0xAA);
    EXPECT_EQ(image.GetRow(0)[1] & 0xC0, 0x80);
}
