// Separation into ink plates and recombination, checked against the
// platform's own translation of the same pixels.
#include <algorithm>

#include "conversion_test_support.h"
#include "host/imaging/StatusControl.h"

using namespace conversion_test;

namespace {

struct Plates {
    CRowIterator cyan, magenta, yellow, black;
    CRowIterator* All[4] = {&cyan, &magenta, &yellow, &black};

    VellErrorCode From(const CRowIterator& source, bool invert, CStatusControl* status = nullptr) {
        return CColorManager::Instance()->TransformFromRGBToCMYK(status, source, cyan, magenta, yellow, black, invert);
    }
    VellErrorCode Into(CRowIterator& output) {
        return CColorManager::Instance()->TransformFromCMYKToRGB(nullptr, cyan, magenta, yellow, black, output);
    }
};

struct ProgressLog : IVProgressSink {
    void OnProgress(long long position, long long range) override {
        last = position;
        ranges.push_back(range);
    }
    long long last = -1;
    std::vector<long long> ranges;
};

class SeparationTest : public ConversionTest {};

}  // namespace

TEST_F(SeparationTest, PlatesAreTheComplementedPlatformTranslation) {
    CRowIterator source = RandomRGB(67, 9, 1);
    Plates plates;
    ASSERT_EQ(plates.From(source, true), VELL_OK);
    std::vector<BYTE> quads = PlatformQuads(SrgbPath(), SwopPath(), source, INTENT_PERCEPTUAL);
    for (int p = 0; p < 4; ++p) {
        ASSERT_EQ(plates.All[p]->GetPixelFormat(), VPF_GREY_8);
        ASSERT_EQ(plates.All[p]->GetWidth(), 67);
        for (int y = 0; y < 9; ++y)
            for (int x = 0; x < 67; ++x)
                ASSERT_EQ(plates.All[p]->GetRow(y)[x], 255 - quads[(size_t(y) * 67 + x) * 4 + p])
                    << "plate " << p << " at " << x << "," << y;
    }
}

TEST_F(SeparationTest, SixteenBitPlatesAreTheEightBitOnesTimes257) {
    CRowIterator eight = RandomRGB(41, 5, 2);
    CRowIterator sixteen;
    CRowIteratorBands::Create(sixteen, 41, 5, VPF_RGB_16);
    std::mt19937 random(3);
    for (int y = 0; y < 5; ++y) {
        auto* wide = reinterpret_cast<uint16_t*>(sixteen.GetRow(y));
        for (int i = 0; i < 41 * 3; ++i) wide[i] = uint16_t(eight.GetRow(y)[i] << 8 | (random() & 0xFF));
    }
    // Full white and 0xFF00 reduce to the same 8-bit value.
    reinterpret_cast<uint16_t*>(sixteen.GetRow(0))[0] = 0xFFFF;
    eight.GetRow(0)[0] = 0xFF;
    for (bool invert : {false, true}) {
        Plates small, large;
        ASSERT_EQ(small.From(eight, invert), VELL_OK);
        ASSERT_EQ(large.From(sixteen, invert), VELL_OK);
        for (int p = 0; p < 4; ++p) {
            ASSERT_EQ(large.All[p]->GetPixelFormat(), VPF_GREY_16);
            for (int y = 0; y < 5; ++y)
                for (int x = 0; x < 41; ++x)
                    ASSERT_EQ(reinterpret_cast<const uint16_t*>(large.All[p]->GetRow(y))[x],
                              small.All[p]->GetRow(y)[x] * 257);
        }
    }
}

TEST_F(SeparationTest, RefusedFormatsFailBeforeAnyPlateExists) {
    CRowIterator source;
    CRowIteratorBands::Create(source, 4, 4, VPF_GREY_ALPHA_16);
    Plates plates;
    EXPECT_EQ(plates.From(source, false), VELL_ERR_PIXEL_FORMAT);
    for (CRowIterator* plate : plates.All) EXPECT_FALSE(plate->IsAttached());

    CRowIterator indexed;
    CRowIteratorBands::Create(indexed, 4, 4, VPF_INDEXED_8);
    EXPECT_EQ(plates.From(indexed, false), VELL_ERR_TRANSLATE);
}

TEST_F(SeparationTest, ProgressCoversEveryRowAndAnEmptyImageIsFine) {
    ProgressLog log;
    CStatusControl status(&log);
    CRowIterator source = RandomRGB(8, 30, 4);
    Plates plates;
    ASSERT_EQ(plates.From(source, false, &status), VELL_OK);
    EXPECT_EQ(log.last, 29);

    CRowIterator empty;
    CRowIteratorBands::CreateRGB(empty, 8, 0);
    EXPECT_EQ(plates.From(empty, false, &status), VELL_OK);
}

TEST_F(SeparationTest, RecombinedInvertedPlatesGiveTheInGamutColoursBack) {
    // Muted colours that a coated press reproduces.
    CRowIterator source = RandomRGB(64, 16, 5, 90, 170);
    Plates plates;
    ASSERT_EQ(plates.From(source, true), VELL_OK);
    CRowIterator back;
    ASSERT_EQ(plates.Into(back), VELL_OK);
    ASSERT_EQ(back.GetPixelFormat(), VPF_RGB_8);
    const auto [worst, mean] = tesk::test::DeltaE2000(source, back);
    EXPECT_LT(mean, 1.0);
    EXPECT_LT(worst, 3.0);
    RecordProperty("mean_de2000", std::to_string(mean));
    RecordProperty("worst_de2000", std::to_string(worst));
}

TEST_F(SeparationTest, RecombinationChecksItsPlatesInOrder) {
    Plates plates;
    for (CRowIterator* plate : plates.All) CRowIteratorBands::CreateGreyscale(*plate, 10, 10);
    CRowIterator narrow;
    CRowIteratorBands::CreateGreyscale(narrow, 9, 10);
    CRowIterator output;
    EXPECT_EQ(Manager().TransformFromCMYKToRGB(nullptr, plates.cyan, plates.magenta, plates.yellow, narrow, output),
              VELL_ERR_PLANE_SIZE);
    EXPECT_FALSE(output.IsAttached());

    CRowIterator deep;
    CRowIteratorBands::Create(deep, 10, 10, VPF_GREY_16);
    EXPECT_EQ(Manager().TransformFromCMYKToRGB(nullptr, plates.cyan, plates.magenta, deep, plates.black, output),
              VELL_ERR_TRANSLATE);
    CRowIterator detached;
    EXPECT_EQ(Manager().TransformFromCMYKToRGB(nullptr, plates.cyan, detached, plates.yellow, plates.black, output),
              VELL_ERR_TRANSLATE);
}

TEST_F(SeparationTest, BlankPlatesGiveThePaperColour) {
    Plates plates;
    for (CRowIterator* plate : plates.All) {
        CRowIteratorBands::CreateGreyscale(*plate, 3, 2);
        for (int y = 0; y < 2; ++y) std::fill_n(plate->GetRow(y), 3, BYTE{255});
    }
    CRowIterator output;
    ASSERT_EQ(plates.Into(output), VELL_OK);
    // Paper white: light and nearly neutral.
    const BYTE* pixel = output.GetRow(1) + 6;
    EXPECT_GT(std::min({pixel[0], pixel[1], pixel[2]}), 225);
    EXPECT_LT(std::max({pixel[0], pixel[1], pixel[2]}) - std::min({pixel[0], pixel[1], pixel[2]}), 20);
}

TEST_F(SeparationTest, PackedSeparationMatchesThePlatformAndReadsBack) {
    CRowIterator source = RandomRGB(33, 7, 6);
    CRowIterator packed;
    ASSERT_EQ(Manager().OutputFromRGBToCMYK(nullptr, source, packed), VELL_OK);
    std::vector<BYTE> quads = PlatformQuads(SrgbPath(), SwopPath(), source, INTENT_PERCEPTUAL);
    for (int y = 0; y < 7; ++y)
        ASSERT_TRUE(std::equal(quads.begin() + y * 33 * 4, quads.begin() + (y + 1) * 33 * 4, packed.GetRow(y)));
    CRowIterator rgb;
    ASSERT_EQ(Manager().InputFromCMYKtoRGB(nullptr, packed, rgb), VELL_OK);
    EXPECT_EQ(rgb.GetWidth(), 33);
    EXPECT_EQ(rgb.GetPixelFormat(), VPF_RGB_8);
}

TEST_F(SeparationTest, OneColourGoesRelativeColorimetric) {
    DWORD white = 0x00FFFFFF;
    BYTE c = 1, m = 1, y = 1, k = 1;
    ASSERT_EQ(Manager().ColorTransformRGBtoCMYK(white, c, m, y, k, true), VELL_OK);
    // Relative colorimetric maps the source white onto the paper: no ink at all.
    EXPECT_EQ((std::vector<int>{c, m, y, k}), (std::vector<int>{255, 255, 255, 255}));
}
