#include <gtest/gtest.h>

#include <vector>

#include "host/imaging/GammaCorrect.h"
#include "host/imaging/RowIteratorBands.h"

namespace {

struct STables {
    BYTE red[256], green[256], blue[256];
    STables() {
        for (int i = 0; i < 256; ++i) red[i] = BYTE(255 - i), green[i] = BYTE(i / 2), blue[i] = BYTE(i);
    }
};

}  // namespace

TEST(GammaCorrect, EachChannelThroughItsOwnTable) {
    const STables t;
    CRowIterator image;
    const CColorRef colour(200, 100, 50, 77);
    ASSERT_TRUE(CRowIteratorBands::Create(image, 2, 2, VPF_RGBA_8, nullptr, &colour));
    ASSERT_TRUE(GammaCorrectDIBInplace(image, t.red, t.green, t.blue));
    // Blue through identity, green halved, red inverted, alpha untouched.
    EXPECT_EQ(std::vector<BYTE>(image.GetRow(1, 1), image.GetRow(1, 1) + 4), (std::vector<BYTE>{50, 50, 55, 77}));

    ASSERT_TRUE(CRowIteratorBands::Create(image, 1, 1, VPF_GREY_ALPHA_8, nullptr, &colour));
    const BYTE grey = image.GetRow(0)[0];
    ASSERT_TRUE(GammaCorrectDIBInplace(image, t.red, t.green, t.blue));
    EXPECT_EQ(image.GetRow(0)[0], grey / 2);
    EXPECT_EQ(image.GetRow(0)[1], 77);
}
