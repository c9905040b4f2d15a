#include <gtest/gtest.h>

#include <vector>

#include "host/imaging/PixelFormat.h"
#include "host/imaging/RowIterator.h"

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
