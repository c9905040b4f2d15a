#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "host/imaging/RowIteratorBands.h"

namespace {

// Pixel (x, y) of an 8-bit RGB image holds (x, y, x ^ y).
void Paint(CRowIterator& image) {
    for (int y = 0; y < image.GetHeight(); ++y) {
        BYTE* row = image.GetRow(y);
        for (int x = 0; x < image.GetWidth(); ++x) {
            row[3 * x] = BYTE(x);
            row[3 * x + 1] = BYTE(y);
            row[3 * x + 2] = BYTE(x ^ y);
        }
    }
}

}  // namespace

TEST(Image, CreateRejectsBadArgumentsAndDetaches) {
    CRowIterator image;
    ASSERT_TRUE(image.Create(4, 4, VPF_RGB_8));
    EXPECT_FALSE(image.Create(4, 4, EVPixelFormat(14)));
    EXPECT_FALSE(image.IsAttached());
    EXPECT_FALSE(CRowIteratorBands::Create(image, -1, 4, VPF_RGB_8));
    EXPECT_EQ(image.GetRow(0), nullptr);
    EXPECT_EQ(image.GetPixelFormat(), VPF_UNKNOWN);
    // A size whose byte count does not fit fails instead of wrapping around.
    EXPECT_FALSE(image.Create(0x7FFFFFFF, 0x7FFFFFFF, VPF_RGBA_16));
    EXPECT_FALSE(image.IsAttached());
}

TEST(Image, RowsArePaddedAndBoundsChecked) {
    CRowIterator image;
    ASSERT_TRUE(CRowIteratorBands::CreateRGB(image, 5, 3));
    EXPECT_EQ(image.GetPixelFormat(), VPF_RGB_8);
    EXPECT_EQ((std::pair{image.GetBytesPerRow(), int(image.GetStride())}), (std::pair{15, 16}));
    EXPECT_EQ(image.GetRow(2, 4) - image.GetRow(0), 2 * 16 + 12);
    for (BYTE* outside : {image.GetRow(3), image.GetRow(-1), image.GetRow(0, 5)}) EXPECT_EQ(outside, nullptr);
    // A fresh image without background is black.
    EXPECT_EQ(image.GetRow(2, 4)[2], 0);
}

// A bottom-up image: row 0 lies at the highest address. A tile of it walked
// from its re-based start (last row, stride negated) touches the same pixels.
TEST(Tiles, NegativeStrideTilesRebaseOntoTheSamePixels) {
    const int width = 6, height = 5, stride = 20;
    std::vector<BYTE> memory(size_t(stride * height), 0xEE);
    CRowIterator image;
    ASSERT_TRUE(image.Attach(memory.data() + (height - 1) * stride, width, height, VPF_RGB_8, -stride));
    Paint(image);
    EXPECT_EQ(memory[0 * stride + 1], height - 1);  // the lowest address holds the last row

    STile tile;
    ASSERT_TRUE(CRowIteratorBands::GetTile(image, RECT{2, 1, 5, 4}, tile));
    EXPECT_EQ((std::vector<int>{int(tile.stride), tile.width, tile.height, tile.bits[0], tile.bits[1]}),
              (std::vector<int>{-stride, 3, 3, 2, 1}));

    BYTE* start = tile.bits + (tile.height - 1) * tile.stride;
    const std::ptrdiff_t upward = -tile.stride;
    for (int r = 0; r < tile.height; ++r)
        for (int x = 0; x < tile.width; ++x) {
            BYTE* pixel = start + r * upward + 3 * x;
            EXPECT_EQ(pixel[0], 2 + x);
            EXPECT_EQ(pixel[1], 3 - r);  // re-based rows run from the tile's last row up
            pixel[2] = 0;
        }
    // Only the tile's pixels were touched; padding and neighbours kept.
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const bool inside = x >= 2 && x < 5 && y >= 1 && y < 4;
            EXPECT_EQ(image.GetRow(y, x)[2], inside ? 0 : (x ^ y)) << x << "," << y;
        }
    EXPECT_EQ(memory[size_t(stride - 1)], 0xEE);
}
