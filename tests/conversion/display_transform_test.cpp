// Images, palettes and colours through the display transform or a one-off
// transform into the working space.
#include <cstring>

#include "conversion_test_support.h"
#include "host/VException.h"

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

TEST_F(DisplayTransformTest, OffAndTablesWithoutTheFlagTouchNothing) {
    CRowIterator source = RandomRGB(5, 5, 7);
    std::vector<BYTE> before = Bytes(source);
    Manager().SetMode(VCM_MODE_OFF);
    EXPECT_FALSE(Manager().TransformIterator(source, nullptr, true));
    Manager().SetMode(VCM_MODE_TABLES);
    EXPECT_FALSE(Manager().TransformIterator(source, nullptr, false));
    EXPECT_EQ(Bytes(source), before);
}

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

TEST_F(DisplayTransformTest, PaletteSizesOutsideOneTo256Fail) {
    CRowIterator indexed;
    CRowIteratorBands::Create(indexed, 4, 4, VPF_INDEXED_8);
    indexed.SetPalette(nullptr, 0);
    EXPECT_FALSE(Manager().TransformIterator(indexed, nullptr, false));
    CVPalette grey;
    grey.CreateGreyscale(256);
    indexed.SetPalette(grey);
    EXPECT_TRUE(Manager().TransformIterator(indexed, nullptr, false));
    EXPECT_EQ(indexed.GetPaletteCount(), 256);
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

TEST_F(DisplayTransformTest, SingleColourNeedsTheHostProfile) {
    DWORD colour = 0x00123456;
    try {
        Manager().TransformColor(colour);
        FAIL() << "no host profile: must throw";
    } catch (const CVException& error) {
        EXPECT_EQ(error.GetCode(), 102);
    }
    std::vector<uint8_t> srgb = tesk::test::ReadBytes(SrgbPath());
    int size = static_cast<int>(srgb.size());
    Manager().SetQFXColorProfile(srgb.data(), size);
    DWORD white = 0x00FFFFFF;
    Manager().TransformColor(white);
    EXPECT_EQ(white, 0x00FFFFFFu);
    Manager().TransformColor(colour);
    for (int shift : {0, 8, 16}) EXPECT_NEAR(int((colour >> shift) & 0xFF), int((0x00123456 >> shift) & 0xFF), 1);
    EXPECT_EQ(colour >> 24, 0u);
}

TEST_F(DisplayTransformTest, GreyscaleIndexUsesTheLowBytes) {
    EXPECT_EQ(Manager().FindGreyscaleIndex(0x00808080), 128);
    EXPECT_EQ(Manager().FindGreyscaleIndex(0x00000000), 0);
    EXPECT_EQ(Manager().FindGreyscaleIndex(0x00FFFFFF), 255);
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
