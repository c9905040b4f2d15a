// Separation into ink plates, checked against the platform's own translation
// of the same pixels, and the plate checks of recombination.
#include "conversion_test_support.h"

using namespace conversion_test;

namespace {

struct Plates {
    CRowIterator cyan, magenta, yellow, black;
    CRowIterator* All[4] = {&cyan, &magenta, &yellow, &black};

    VellErrorCode From(const CRowIterator& source, bool invert) {
        return CColorManager::Instance()->TransformFromRGBToCMYK(nullptr, source, cyan, magenta, yellow, black, invert);
    }
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

TEST_F(SeparationTest, RecombinationChecksItsPlatesInOrder) {
    Plates plates;
    for (CRowIterator* plate : plates.All) CRowIteratorBands::CreateGreyscale(*plate, 10, 10);
    CRowIterator narrow;
    CRowIteratorBands::CreateGreyscale(narrow, 9, 10);
    CRowIterator output;
    EXPECT_EQ(Manager().TransformFromCMYKToRGB(nullptr, plates.cyan, plates.magenta, plates.yellow, narrow, output),
              VELL_ERR_PLANE_SIZE);
    EXPECT_FALSE(output.IsAttached());
}
