#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "host/imaging/RowIteratorBands.h"

namespace {

using Bytes = std::vector<BYTE>;
Bytes At(const BYTE* p, size_t n) { return {p, p + n}; }

WORD Word(const BYTE* p) {
    WORD w;
    std::memcpy(&w, p, 2);
    return w;
}

void PutWord(BYTE* p, WORD w) { std::memcpy(p, &w, 2); }

// Grey image whose pixel (x, y) is 10 * y + x.
CRowIterator Numbered(int width, int height) {
    CRowIterator image;
    EXPECT_TRUE(CRowIteratorBands::CreateGreyscale(image, width, height));
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) image.GetRow(y)[x] = BYTE(10 * y + x);
    return image;
}

}  // namespace

TEST(CopyRect, ClipsAtEveryEdge) {
    const CRowIterator source = Numbered(5, 4);
    CRowIterator dest;
    const CColorRef white(255, 255, 255);
    ASSERT_TRUE(CRowIteratorBands::Create(dest, 4, 3, VPF_GREY_8, nullptr, &white));

    // Source rectangle starting left of and above the source, landing at (-1, 1).
    const RECT from{-2, -1, 4, 3};
    ASSERT_TRUE(RowIterator::CopyRect(dest, source, &from, -1, 1));
    // The rectangle's corner (-2, -1) goes to (-1, 1): destination = source + (1, 2).
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 4; ++x) {
            const int sx = x - 1, sy = y - 2;
            const bool copied = sx >= 0 && sx < 4 && sy >= 0 && sy < 3;
            EXPECT_EQ(dest.GetRow(y)[x], copied ? 10 * sy + sx : 255) << x << "," << y;
        }
    // Landing left of and above the destination drops the source's first columns and rows.
    ASSERT_TRUE(RowIterator::CopyRect(dest, source, nullptr, -2, -1));
    EXPECT_EQ(dest.GetRow(0)[0], 12);
    EXPECT_EQ(dest.GetRow(2)[2], 34);
    // Running past the right and bottom edges stops there.
    ASSERT_TRUE(RowIterator::CopyRect(dest, Numbered(5, 4), nullptr, 3, 2));
    EXPECT_EQ(dest.GetRow(2)[3], 0);
    EXPECT_EQ(dest.GetRow(1)[3], 255);  // above the landing row: untouched

    ASSERT_TRUE(CRowIteratorBands::Create(dest, 4, 3, VPF_GREY_8, nullptr, &white));
    // Wholly outside: nothing to do, and nothing written.
    ASSERT_TRUE(RowIterator::CopyRect(dest, source, nullptr, 4, 0));
    ASSERT_TRUE(RowIterator::CopyRect(dest, source, nullptr, 0, -4));
    EXPECT_EQ(dest.GetRow(0)[0], 255);
}

TEST(CopyRect, OverlappingCopyWithinOneImage) {
    CRowIterator image = Numbered(6, 6);
    const RECT from{0, 0, 4, 4};
    ASSERT_TRUE(RowIterator::CopyRect(image, image, &from, 1, 2));
    for (int y = 0; y < 4; ++y)
        for (int x = 0; x < 4; ++x) EXPECT_EQ(image.GetRow(y + 2)[x + 1], 10 * y + x);
}

TEST(CopyRect, PackedIndexesAtAnyBitPosition) {
    CVPalette palette;
    palette.CreateGreyscale(4);
    CRowIterator source, dest;
    ASSERT_TRUE(CRowIteratorBands::Create(source, 9, 1, VPF_INDEXED_2, &palette));
    ASSERT_TRUE(CRowIteratorBands::Create(dest, 9, 1, VPF_INDEXED_2, &palette));
    source.GetRow(0)[0] = 0b00011011;  // pixels 0, 1, 2, 3
    source.GetRow(0)[1] = 0b11100100;  // pixels 3, 2, 1, 0
    const RECT from{1, 0, 7, 1};
    ASSERT_TRUE(RowIterator::CopyRect(dest, source, &from, 3, 0));
    // Destination pixels 3..8 = source pixels 1..6 = 1, 2, 3, 3, 2, 1.
    EXPECT_EQ(At(dest.GetRow(0), 3), (Bytes{0b00000001, 0b10111110, 0b01000000}));
    // Within one row, moved right onto itself.
    ASSERT_TRUE(RowIterator::CopyRect(source, source, &from, 2, 0));
    EXPECT_EQ(At(source.GetRow(0), 2), (Bytes{0b00010110, 0b11111001}));
}

TEST(CopyRect, SixteenToEightBitsTakesTheHighByte) {
    CRowIterator wide, narrow;
    ASSERT_TRUE(CRowIteratorBands::Create(wide, 2, 1, VPF_RGBA_16));
    BYTE* p = wide.GetRow(0);
    const WORD values[8] = {0x12FF, 0x3400, 0xFFFF, 0x00FF, 1, 2, 3, 0x8080};
    for (int i = 0; i < 8; ++i) PutWord(p + 2 * i, values[i]);
    ASSERT_TRUE(CRowIteratorBands::Create(narrow, 2, 1, CVPixelFormat::Get8bitFormat(VPF_RGBA_16)));
    ASSERT_TRUE(RowIterator::CopyRect(narrow, wide));
    EXPECT_EQ(At(narrow.GetRow(0), 8), (Bytes{0x12, 0x34, 0xFF, 0x00, 0, 0, 0, 0x80}));

    // And back: 8 bits widen by 257, so white stays white.
    ASSERT_TRUE(RowIterator::CopyRect(wide, narrow));
    EXPECT_EQ(Word(wide.GetRow(0) + 4), 0xFFFF);
    EXPECT_EQ(Word(wide.GetRow(0) + 0), 0x1212);
}

TEST(CopyRect, ConvertsBetweenGreyRgbAndAlpha) {
    CRowIterator rgb, grey, rgba;
    ASSERT_TRUE(CRowIteratorBands::CreateRGB(rgb, 2, 1));
    BYTE* p = rgb.GetRow(0);
    p[0] = 90, p[1] = 90, p[2] = 90;  // neutral
    p[3] = 0, p[4] = 0, p[5] = 255;   // pure red (B, G, R)
    ASSERT_TRUE(CRowIteratorBands::Create(grey, 2, 1, VPF_GREY_16));
    ASSERT_TRUE(RowIterator::CopyRect(grey, rgb));
    EXPECT_EQ(Word(grey.GetRow(0)), 90 * 257);
    EXPECT_NEAR(Word(grey.GetRow(0) + 2), 0.299 * 65535, 40);

    ASSERT_TRUE(CRowIteratorBands::CreateRGBA(rgba, 2, 1));
    ASSERT_TRUE(RowIterator::CopyRect(rgba, grey));
    EXPECT_EQ(At(rgba.GetRow(0), 4), (Bytes{90, 90, 90, 255}));  // alpha added as opaque
}

TEST(CopyRect, RefusesWhatCannotBeConverted) {
    CRowIterator indexed, rgb, detached;
    ASSERT_TRUE(CRowIteratorBands::Create(indexed, 2, 2, VPF_INDEXED_8));
    ASSERT_TRUE(CRowIteratorBands::CreateRGB(rgb, 2, 2));
    EXPECT_FALSE(RowIterator::CopyRect(rgb, indexed));
    EXPECT_FALSE(RowIterator::CopyRect(indexed, rgb));
    EXPECT_FALSE(RowIterator::CopyRect(rgb, detached));
    EXPECT_FALSE(RowIterator::CopyRect(detached, rgb));
}

TEST(CopyColor, MovesColourAndKeepsDestinationAlpha) {
    CRowIterator rgba, rgb;
    ASSERT_TRUE(CRowIteratorBands::Create(rgba, 3, 2, VPF_RGBA_16));
    for (int y = 0; y < 2; ++y)
        for (int i = 0; i < 12; ++i) PutWord(rgba.GetRow(y) + 2 * i, WORD(1000 * y + i));
    ASSERT_TRUE(CRowIteratorBands::Create(rgb, 3, 2, VPF_RGB_16));
    ASSERT_TRUE(RowIterator::CopyColor(rgb, rgba));
    EXPECT_EQ(Word(rgb.GetRow(1, 2)), 1008);      // blue of pixel 2
    EXPECT_EQ(Word(rgb.GetRow(1, 2) + 4), 1010);  // red

    // Changed colours go back; the alpha words stay as they were.
    for (int y = 0; y < 2; ++y)
        for (int i = 0; i < 9; ++i) PutWord(rgb.GetRow(y) + 2 * i, 50000);
    ASSERT_TRUE(RowIterator::CopyColor(rgba, rgb));
    for (int y = 0; y < 2; ++y)
        for (int x = 0; x < 3; ++x) {
            EXPECT_EQ(Word(rgba.GetRow(y, x) + 2), 50000);
            EXPECT_EQ(Word(rgba.GetRow(y, x) + 6), 1000 * y + 4 * x + 3);
        }
}

TEST(CopyColor, RequiresSameChannelsAndDepth) {
    CRowIterator rgba16, rgb8, grey16, greyAlpha16;
    ASSERT_TRUE(CRowIteratorBands::Create(rgba16, 1, 1, VPF_RGBA_16));
    ASSERT_TRUE(CRowIteratorBands::CreateRGB(rgb8, 1, 1));
    ASSERT_TRUE(CRowIteratorBands::Create(grey16, 1, 1, VPF_GREY_16));
    ASSERT_TRUE(CRowIteratorBands::Create(greyAlpha16, 1, 1, VPF_GREY_ALPHA_16));
    EXPECT_FALSE(RowIterator::CopyColor(rgb8, rgba16));
    EXPECT_FALSE(RowIterator::CopyColor(grey16, rgba16));
    EXPECT_TRUE(RowIterator::CopyColor(grey16, greyAlpha16));
    EXPECT_FALSE(RowIterator::CopyColor(grey16, CRowIterator()));
}
