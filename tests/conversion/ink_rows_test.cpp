// Rows of ink planes: the byte arithmetic around the platform translation,
// checked with a platform whose translation returns known quads.
#include <tesk/loader.h>

#include <cstring>

#include "conversion/HighByteReduction.h"
#include "conversion_test_support.h"

using namespace conversion_test;

namespace {

BYTE g_quad[4] = {200, 10, 0, 100};
std::vector<BYTE> g_lastInput;

// Writes g_quad for every pixel of a CMYK output; records CMYK input bytes.
BOOL WINAPI FixedTranslate(HTRANSFORM, PVOID in, BMFORMAT inFormat, DWORD width, DWORD, DWORD, PVOID out,
                           BMFORMAT outFormat, DWORD, PBMCALLBACKFN, LPARAM) {
    if (inFormat == BM_KYMCQUADS) g_lastInput.assign(static_cast<BYTE*>(in), static_cast<BYTE*>(in) + width * 4);
    if (outFormat == BM_KYMCQUADS)
        for (DWORD x = 0; x < width; ++x) std::memcpy(static_cast<BYTE*>(out) + x * 4, g_quad, 4);
    return TRUE;
}

class InkRowsTest : public ConversionTest {
protected:
    void SetUp() override {
        tesk::loader::Substitute fixed;
        fixed.overrides["TranslateBitmapBits"] = reinterpret_cast<FARPROC>(&FixedTranslate);
        tesk::loader::SetSubstitute(L"MSCMS.DLL", fixed);
        ConversionTest::SetUp();
    }
};

}  // namespace

TEST_F(InkRowsTest, PlatesAreComplementsAndCMYFoldsTheBlackInWithSaturation) {
    BYTE rgb[6] = {}, c[2], m[2], y[2], k[2];
    ASSERT_EQ(Manager().ConvertRGBtoCMYK(c, m, y, k, rgb, 2, 8, 6), VELL_OK);
    EXPECT_EQ((std::vector<int>{c[1], m[1], y[1], k[1]}), (std::vector<int>{55, 245, 255, 155}));
    ASSERT_EQ(Manager().ConvertRGBtoCMY(c, m, y, rgb, 2, 8, 6), VELL_OK);
    EXPECT_EQ((std::vector<int>{c[0], m[0], y[0]}), (std::vector<int>{0, 145, 155}));  // 200 + 100 saturates
}

TEST_F(InkRowsTest, PlanarInksAreComplementedAndPackedRowsPassUntouched) {
    BYTE c[2] = {0, 255}, m[2] = {10, 20}, y[2] = {30, 40}, k[2] = {50, 60}, rgb[6];
    ASSERT_EQ(Manager().ConvertCMYKtoRGB(c, m, y, k, rgb, 2, 8, 6, 1), VELL_OK);
    EXPECT_EQ(g_lastInput, (std::vector<BYTE>{255, 245, 225, 205, 0, 235, 215, 195}));
    BYTE packed[8] = {1, 2, 3, 4, 5, 6, 7, 8};
    ASSERT_EQ(Manager().ConvertCMYKtoRGB(packed, nullptr, nullptr, nullptr, rgb, 2, 8, 6, 0), VELL_OK);
    EXPECT_EQ(g_lastInput, (std::vector<BYTE>{1, 2, 3, 4, 5, 6, 7, 8}));
    // Three inks a plane step apart; no black.
    BYTE inks[6] = {0, 100, 200, 10, 110, 210};
    ASSERT_EQ(Manager().ConvertCMYtoRGB(inks, inks + 1, inks + 2, rgb, 2, 6, 6, 3), VELL_OK);
    EXPECT_EQ(g_lastInput, (std::vector<BYTE>{255, 155, 55, 0, 245, 145, 45, 0}));
}

TEST(HighByteReduction, EqualsShiftingEveryValueAtEveryLength) {
    std::mt19937 random(11);
    for (size_t length : {0u, 1u, 31u, 32u, 33u, 64u, 100u, 1027u}) {
        std::vector<uint16_t> in(length);
        for (auto& v : in) v = static_cast<uint16_t>(random());
        std::vector<uint8_t> out(length + 1, 0xAB);
        ReduceToHighBytes(in.data(), out.data(), length);
        for (size_t i = 0; i < length; ++i) ASSERT_EQ(out[i], in[i] >> 8) << length << "/" << i;
        EXPECT_EQ(out[length], 0xAB) << "wrote past the end";
    }
}
