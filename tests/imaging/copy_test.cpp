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
