// Large images take back the memory of images given up before them.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "host/imaging/PixelBlocks.h"
#include "host/imaging/RowIterator.h"

namespace {

constexpr int kSide = 1024;  // 1 MiB at 8 bits: large enough to be kept

bool Clear(const CRowIterator& image) {
    for (int y = 0; y < image.GetHeight(); ++y) {
        const BYTE* row = image.GetRow(y);
        if (!std::all_of(row, row + image.GetBytesPerRow(), [](BYTE b) { return b == 0; })) return false;
    }
    return true;
}

TEST(PixelBlocks, AReCreatedImageGetsItsOldMemoryBackCleared) {
    CRowIterator image;
    ASSERT_TRUE(image.Create(kSide, kSide, VPF_GREY_8));
    BYTE* const first = image.GetRow(0);
    std::memset(first, 0xAB, size_t(kSide) * kSide);
    // Re-creating gives the old block back before taking one.
    ASSERT_TRUE(image.Create(kSide, kSide, VPF_GREY_8));
    EXPECT_EQ(image.GetRow(0), first);
    EXPECT_TRUE(Clear(image));
    EXPECT_EQ(vimaging::KeptBlockCount(), 0u);

    // Another size does not take it, and a small image is never kept.
    CRowIterator other, small;
    ASSERT_TRUE(other.Create(kSide, kSide + 1, VPF_GREY_8));
    ASSERT_TRUE(small.Create(16, 16, VPF_GREY_8));
    image.Detach();
    small.Detach();
    EXPECT_EQ(vimaging::KeptBlockCount(), 1u);
}

}  // namespace
