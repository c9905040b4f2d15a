// Drawing into memory device contexts and reading the pixels back.
#include <windows.h>

#include <cstring>
#include <vector>

#include "gdi_test_support.h"

namespace tesk::test {
namespace {

// A DIB header with room for a palette behind it.
struct Dib {
    std::vector<uint8_t> header;
    std::vector<uint8_t> bits;
    const BITMAPINFO* Info() const { return reinterpret_cast<const BITMAPINFO*>(header.data()); }

    Dib(int width, int height, int bitCount) : header(sizeof(BITMAPINFOHEADER) + 256 * sizeof(RGBQUAD), 0) {
        BITMAPINFOHEADER h{};
        h.biSize = sizeof h;
        h.biWidth = width;
        h.biHeight = height;
        h.biPlanes = 1;
        h.biBitCount = WORD(bitCount);
        h.biCompression = BI_RGB;
        std::memcpy(header.data(), &h, sizeof h);
        size_t stride = ((size_t(width) * bitCount + 31) / 32) * 4;
        bits.assign(stride * size_t(std::abs(height)), 0);
    }
    size_t Stride() const { return ((size_t(Info()->bmiHeader.biWidth) * Info()->bmiHeader.biBitCount + 31) / 32) * 4; }
    // Sets a 24-bit pixel of buffer row `row`.
    void Set24(int x, int row, COLORREF c) {
        uint8_t* p = bits.data() + size_t(row) * Stride() + size_t(x) * 3;
        p[0] = GetBValue(c), p[1] = GetGValue(c), p[2] = GetRValue(c);
    }
};

class DrawingTest : public GdiTest {
protected:
    void SetUp() override {
        GdiTest::SetUp();
        dc_ = CreateCompatibleDC(nullptr);
        bitmap_ = CreateCompatibleBitmap(dc_, 8, 6);
        ASSERT_NE(bitmap_, nullptr);
        stock_ = SelectObject(dc_, bitmap_);
        ASSERT_NE(stock_, nullptr);
    }
    void TearDown() override {
        SelectObject(dc_, stock_);
        EXPECT_TRUE(DeleteObject(bitmap_));
        DeleteDC(dc_);
        GdiTest::TearDown();
    }
    HDC dc_ = nullptr;
    HBITMAP bitmap_ = nullptr;
    HGDIOBJ stock_ = nullptr;
};

const COLORREF kRed = RGB(255, 0, 0), kGreen = RGB(0, 255, 0), kBlue = RGB(0, 0, 255), kBlack = RGB(0, 0, 0);

TEST_F(DrawingTest, BottomUpAndTopDownDibsLandTheRightWayUp) {
    Dib bottomUp(2, 2, 24);
    bottomUp.Set24(0, 0, kRed);    // first row in memory: the bottom
    bottomUp.Set24(1, 1, kGreen);  // last row: the top
    EXPECT_EQ(SetDIBitsToDevice(dc_, 1, 1, 2, 2, 0, 0, 0, 2, bottomUp.bits.data(), bottomUp.Info(), DIB_RGB_COLORS),
              2);
    EXPECT_EQ(GetPixel(dc_, 1, 2), kRed);
    EXPECT_EQ(GetPixel(dc_, 2, 1), kGreen);
    EXPECT_EQ(GetPixel(dc_, 0, 0), kBlack);  // a new bitmap is black

    Dib topDown(2, -2, 24);
    topDown.Set24(0, 0, kBlue);  // first row in memory: the top
    EXPECT_EQ(SetDIBitsToDevice(dc_, 4, 0, 2, 2, 0, 0, 0, 2, topDown.bits.data(), topDown.Info(), DIB_RGB_COLORS), 2);
    EXPECT_EQ(GetPixel(dc_, 4, 0), kBlue);
    EXPECT_EQ(GetPixel(dc_, 4, 1), kBlack);
}

TEST_F(DrawingTest, SourceOriginOfABottomUpDibIsItsLowerLeftCorner) {
    // A 3 x 3 bottom-up DIB; take the 2 x 2 block at source (1, 1): the upper right.
    Dib dib(3, 3, 24);
    dib.Set24(2, 2, kRed);    // top right
    dib.Set24(1, 1, kGreen);  // centre
    dib.Set24(0, 0, kBlue);   // bottom left, outside the block
    SetDIBitsToDevice(dc_, 0, 0, 2, 2, 1, 1, 0, 3, dib.bits.data(), dib.Info(), DIB_RGB_COLORS);
    EXPECT_EQ(GetPixel(dc_, 1, 0), kRed);
    EXPECT_EQ(GetPixel(dc_, 0, 1), kGreen);
    for (int y = 0; y < 6; ++y)
        for (int x = 0; x < 8; ++x) EXPECT_NE(GetPixel(dc_, x, y), kBlue);
}

TEST_F(DrawingTest, BandsOfScanLinesCanBeSetSeparately) {
    // Scan lines 2 and 3 (from the bottom) of a 1 x 4 DIB, given alone.
    Dib band(1, 4, 24);
    band.bits.resize(band.Stride() * 2);
    band.Set24(0, 0, kRed);    // scan line 2
    band.Set24(0, 1, kGreen);  // scan line 3: the top row
    EXPECT_EQ(SetDIBitsToDevice(dc_, 0, 0, 1, 4, 0, 0, 2, 2, band.bits.data(), band.Info(), DIB_RGB_COLORS), 2);
    EXPECT_EQ(GetPixel(dc_, 0, 0), kGreen);
    EXPECT_EQ(GetPixel(dc_, 0, 1), kRed);
    EXPECT_EQ(GetPixel(dc_, 0, 2), kBlack);  // lines 0 and 1 were not in the band
}

TEST_F(DrawingTest, PalettedAndSixteenBitDibs) {
    Dib paletted(2, -1, 8);
    auto* palette = reinterpret_cast<RGBQUAD*>(paletted.header.data() + sizeof(BITMAPINFOHEADER));
    palette[7] = RGBQUAD{10, 20, 30, 0};
    paletted.bits[0] = 7;
    StretchDIBits(dc_, 0, 0, 1, 1, 0, 0, 1, 1, paletted.bits.data(), paletted.Info(), DIB_RGB_COLORS, SRCCOPY);
    EXPECT_EQ(GetPixel(dc_, 0, 0), RGB(30, 20, 10));

    Dib rgb555(1, -1, 16);
    const uint16_t pureGreen = 0x1F << 5;
    std::memcpy(rgb555.bits.data(), &pureGreen, 2);
    StretchDIBits(dc_, 1, 0, 1, 1, 0, 0, 1, 1, rgb555.bits.data(), rgb555.Info(), DIB_RGB_COLORS, SRCCOPY);
    EXPECT_EQ(GetPixel(dc_, 1, 0), kGreen);

    Dib unsupported(1, 1, 24);
    reinterpret_cast<BITMAPINFOHEADER*>(unsupported.header.data())->biCompression = 1;  // run-length coded
    EXPECT_EQ(StretchDIBits(dc_, 0, 0, 1, 1, 0, 0, 1, 1, unsupported.bits.data(), unsupported.Info(),
                            DIB_RGB_COLORS, SRCCOPY),
              0);
}

TEST_F(DrawingTest, StretchingScalesAndMirrors) {
    Dib dib(2, -1, 24);
    dib.Set24(0, 0, kRed);
    dib.Set24(1, 0, kBlue);
    ASSERT_NE(StretchDIBits(dc_, 0, 0, 4, 2, 0, 0, 2, 1, dib.bits.data(), dib.Info(), DIB_RGB_COLORS, SRCCOPY), 0);
    for (int y = 0; y < 2; ++y) {
        EXPECT_EQ(GetPixel(dc_, 0, y), kRed);
        EXPECT_EQ(GetPixel(dc_, 1, y), kRed);
        EXPECT_EQ(GetPixel(dc_, 2, y), kBlue);
        EXPECT_EQ(GetPixel(dc_, 3, y), kBlue);
    }
    // A negative destination width mirrors: the right edge is xDest.
    ASSERT_NE(StretchDIBits(dc_, 7, 3, -2, 1, 0, 0, 2, 1, dib.bits.data(), dib.Info(), DIB_RGB_COLORS, SRCCOPY), 0);
    EXPECT_EQ(GetPixel(dc_, 6, 3), kBlue);
    EXPECT_EQ(GetPixel(dc_, 7, 3), kRed);
}

TEST_F(DrawingTest, BitBltCopiesBetweenContextsAndClipsAtEdges) {
    HDC other = CreateCompatibleDC(dc_);
    HBITMAP second = CreateCompatibleBitmap(other, 3, 3);
    HGDIOBJ stock = SelectObject(other, second);
    ASSERT_TRUE(BitBlt(other, 0, 0, 3, 3, nullptr, 0, 0, WHITENESS));
    ASSERT_TRUE(BitBlt(dc_, 6, 4, 3, 3, other, 0, 0, SRCCOPY));  // partly outside the 8 x 6 target
    EXPECT_EQ(GetPixel(dc_, 7, 5), RGB(255, 255, 255));
    EXPECT_EQ(GetPixel(dc_, 5, 5), kBlack);
    EXPECT_EQ(GetPixel(dc_, 8, 5), CLR_INVALID);

    // The bitmap cannot go into a second DC or be deleted while selected.
    EXPECT_EQ(SelectObject(dc_, second), nullptr);
    EXPECT_FALSE(DeleteObject(second));
    EXPECT_FALSE(BitBlt(dc_, 0, 0, 1, 1, other, 0, 0, 0x00EE0086 /* SRCPAINT */));
    SelectObject(other, stock);
    EXPECT_TRUE(DeleteObject(second));
    DeleteDC(other);
}

TEST_F(DrawingTest, GetDIBitsReadsBottomUpUnlessAskedOtherwise) {
    Dib dib(8, -6, 24);
    dib.Set24(0, 0, kRed);  // top left
    SetDIBitsToDevice(dc_, 0, 0, 8, 6, 0, 0, 0, 6, dib.bits.data(), dib.Info(), DIB_RGB_COLORS);

    BITMAPINFO info{};
    info.bmiHeader.biSize = sizeof(BITMAPINFOHEADER);
    ASSERT_EQ(GetDIBits(dc_, bitmap_, 0, 6, nullptr, &info, DIB_RGB_COLORS), 6);
    EXPECT_EQ(info.bmiHeader.biWidth, 8);
    EXPECT_EQ(info.bmiHeader.biHeight, 6);
    std::vector<uint32_t> pixels(8 * 6);
    ASSERT_EQ(GetDIBits(dc_, bitmap_, 0, 6, pixels.data(), &info, DIB_RGB_COLORS), 6);
    EXPECT_EQ(pixels[5 * 8], 0x00FF0000u);  // the top row comes last
    info.bmiHeader.biHeight = -6;
    ASSERT_EQ(GetDIBits(dc_, bitmap_, 0, 6, pixels.data(), &info, DIB_RGB_COLORS), 6);
    EXPECT_EQ(pixels[0], 0x00FF0000u);
}

TEST_F(DrawingTest, WithIcmOnDrawingIsMatchedToTheContextProfile) {
    std::string profile = env_.Root() + "/wide.icc";
    WriteRgbProfile(profile, 2.2);
    std::wstring name = Wide(profile);
    ASSERT_TRUE(SetICMProfileW(dc_, name.data()));

    Dib dib(1, -1, 24);
    dib.Set24(0, 0, RGB(200, 40, 90));
    StretchDIBits(dc_, 0, 0, 1, 1, 0, 0, 1, 1, dib.bits.data(), dib.Info(), DIB_RGB_COLORS, SRCCOPY);
    EXPECT_EQ(GetPixel(dc_, 0, 0), RGB(200, 40, 90));  // ICM is off

    ASSERT_TRUE(SetICMMode(dc_, ICM_ON));
    StretchDIBits(dc_, 1, 0, 1, 1, 0, 0, 1, 1, dib.bits.data(), dib.Info(), DIB_RGB_COLORS, SRCCOPY);
    EXPECT_EQ(GetPixel(dc_, 1, 0), LcmsFromSrgb(profile, RGB(200, 40, 90)));
    EXPECT_NE(GetPixel(dc_, 1, 0), RGB(200, 40, 90));

    // Done outside the DC: drawn as it comes.
    ASSERT_TRUE(SetICMMode(dc_, ICM_DONE_OUTSIDEDC));
    StretchDIBits(dc_, 2, 0, 1, 1, 0, 0, 1, 1, dib.bits.data(), dib.Info(), DIB_RGB_COLORS, SRCCOPY);
    EXPECT_EQ(GetPixel(dc_, 2, 0), RGB(200, 40, 90));
}

}  // namespace
}  // namespace tesk::test
