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
