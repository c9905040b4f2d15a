// Images, palettes and colours through the display transform or a one-off
// transform into the working space.
#include <cstring>

#include "conversion_test_support.h"

using namespace conversion_test;
using Access = CColorManagerTestAccess;

namespace {

class DisplayTransformTest : public ConversionTest {};

std::vector<BYTE> Bytes(CRowIterator& image) {
    std::vector<BYTE> bytes;
    for (int y = 0; y < image.GetHeight(); ++y)
        bytes.insert(bytes.end(), image.GetRow(y), image.GetRow(y) + image.GetBytesPerRow());
    return bytes;
}

}  // namespace

TEST_F(DisplayTransformTest, SixteenBitAlphaSurvivesInPlace) {
    colormgr_test::WriteRgbProfile(ColorDir() + "/Monitor.icc", 1.8);
    CString monitor(L"Monitor.icc");
    Manager().SetMonitorProfile(monitor);
    ASSERT_NE(Access::ImageTransform(Manager()), nullptr);
    CRowIterator image;
    CRowIteratorBands::Create(image, 6, 3, VPF_RGBA_16);
    for (int y = 0; y < 3; ++y) {
        auto* p = reinterpret_cast<uint16_t*>(image.GetRow(y));
        for (int x = 0; x < 6; ++x) {
            p[x * 4] = p[x * 4 + 1] = p[x * 4 + 2] = uint16_t(0x4000 + x * 0x1000);
            p[x * 4 + 3] = uint16_t(0x1234 + x * 7 + y);
        }
    }
    ASSERT_TRUE(Manager().TransformIterator(image, nullptr, false));
    bool changed = false;
    for (int y = 0; y < 3; ++y) {
        auto* p = reinterpret_cast<uint16_t*>(image.GetRow(y));
        for (int x = 0; x < 6; ++x) {
            EXPECT_EQ(p[x * 4 + 3], uint16_t(0x1234 + x * 7 + y));
            changed |= p[x * 4] != uint16_t(0x4000 + x * 0x1000);
        }
    }
    EXPECT_TRUE(changed) << "a gamma 2.2 to 1.8 transform must move mid tones";
}

TEST_F(DisplayTransformTest, ProcessedColoursKeepTheirFourthByteWithoutATransformAllIsCopied) {
    RGBQUAD in[2] = {{0, 0, 255, 9}, {128, 128, 128, 9}}, out[2] = {{0, 0, 0, 77}, {0, 0, 0, 77}};
    ASSERT_NE(Access::ImageTransform(Manager()), nullptr);
    EXPECT_TRUE(Manager().ProcessColors(in, out, 2));
    EXPECT_EQ(out[0].rgbReserved, 77);
    EXPECT_EQ(out[1].rgbReserved, 77);
    // No colours still go through the platform, whose empty row succeeds.
    EXPECT_TRUE(Manager().ProcessColors(nullptr, nullptr, 0));

    CString missing(L"NoSuchMonitor.icc");
    Manager().SetMonitorProfile(missing);
    ASSERT_EQ(Access::ImageTransform(Manager()), nullptr);
    EXPECT_FALSE(Manager().ProcessColors(in, out, 2));
    EXPECT_EQ(std::memcmp(in, out, sizeof in), 0);
}

TEST_F(DisplayTransformTest, EmbeddedProfileBringsTilesIntoTheWorkingSpace) {
    // A source profile equal to the working space leaves the pixels (nearly) alone,
    // whichever way the tiles run.
    HPROFILE source = OpenProfile(SrgbPath());
    ASSERT_NE(source, nullptr);
    CRowIterator image = RandomRGB(3000, 3, 8);
    std::vector<BYTE> before = Bytes(image);
    CDibIterator unusedSource, unusedDestination;
    ASSERT_TRUE(Manager().TransformImage(source, unusedSource, unusedDestination, &image, nullptr, false));
    std::vector<BYTE> after = Bytes(image);
    for (size_t i = 0; i < before.size(); ++i) ASSERT_NEAR(int(after[i]), int(before[i]), 1) << i;
    CloseColorProfile(source);
}
