#include <gtest/gtest.h>

#include <tuple>
#include <vector>

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
    const std::tuple<EVPixelFormat, int, int> cases[] = {
        {VPF_INDEXED_1, 9, 2}, {VPF_INDEXED_2, 5, 2}, {VPF_INDEXED_4, 3, 2}, {VPF_RGB_16, 7, 42}, {VPF_RGB_8, 0, 0}};
    for (auto [format, width, bytes] : cases) EXPECT_EQ(CVPixelFormat::GetRowBytes(format, width), bytes) << format;
}

// The colour code hands these rows to the platform as BM_RGBTRIPLETS,
// BM_xRGBQUADS, BM_16b_RGB and BM_16b_GRAY: blue comes first.
TEST(PixelFormat, BackgroundLandsInPlatformChannelOrder) {
    struct Row {
        EVPixelFormat format;
        int x, offset;
        std::vector<BYTE> bytes;
    };
    const Row rows[] = {
        {VPF_RGB_8, 2, 0, {0xF0, 0x80, 0x10}},
        {VPF_RGBA_8, 2, 0, {0xF0, 0x80, 0x10, 0x40}},
        {VPF_RGB_16, 1, 0, {0xF0, 0xF0, 0x80, 0x80, 0x10, 0x10}},
        {VPF_RGBA_16, 2, 0, {0xF0, 0xF0, 0x80, 0x80, 0x10, 0x10, 0x40, 0x40}},
        {VPF_GREY_ALPHA_16, 1, 2, {0x40, 0x40}},
        {VPF_RGB_555, 1, 0, {0x1E, 0x0A}},  // 5 bits each: red 2, green 16, blue 30
    };
    const CColorRef colour(0x10, 0x80, 0xF0, 0x40);
    CRowIterator image;
    for (const Row& row : rows) {
        SCOPED_TRACE(int(row.format));
        ASSERT_TRUE(image.Create(3, 2, row.format, nullptr, &colour));
        const BYTE* p = image.GetRow(1, row.x) + row.offset;
        EXPECT_EQ(std::vector<BYTE>(p, p + row.bytes.size()), row.bytes);
    }
    EXPECT_EQ(image.GetRow(1, 1) - image.GetRow(1), 2);
    ASSERT_TRUE(image.Create(3, 2, VPF_RGB_16));
    EXPECT_EQ(image.GetRow(1, 1) - image.GetRow(1), 6);

    const CColorRef index(0, 0, 0, 255, 2);
    ASSERT_TRUE(image.Create(5, 1, VPF_INDEXED_2, nullptr, &index));
    EXPECT_EQ(image.GetRow(0)[0], 0xAA);
    EXPECT_EQ(image.GetRow(0)[1] & 0xC0, 0x80);
}
