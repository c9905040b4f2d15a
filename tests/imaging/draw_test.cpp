#include <gtest/gtest.h>

#include "host/imaging/DibIterator.h"
#include "host/imaging/RowIteratorBands.h"

// Through the real GDI32, onto a memory device context.
class DrawImageOnDevice : public ::testing::Test {
protected:
    void SetUp() override {
        screen_ = CreateDCW(L"DISPLAY", nullptr, nullptr, nullptr);
        ASSERT_NE(screen_, nullptr);
        memory_ = CreateCompatibleDC(screen_);
        bitmap_ = CreateCompatibleBitmap(screen_, 4, 4);
        ASSERT_NE(bitmap_, nullptr);
        old_ = SelectObject(memory_, bitmap_);
    }
    void TearDown() override {
        if (!screen_) return;
        SelectObject(memory_, old_);
        DeleteObject(bitmap_);
        DeleteDC(memory_);
        DeleteDC(screen_);
    }
    bool Draw(CRowIterator& image, RECT to, RECT from) {
        return CRowIteratorBands::DrawImage(image, memory_, to, from, SRCCOPY);
    }
    HDC screen_ = nullptr, memory_ = nullptr;
    HBITMAP bitmap_ = nullptr;
    HGDIOBJ old_ = nullptr;
};

TEST_F(DrawImageOnDevice, BottomUpSourceRectangleLandsUpright) {
    CDibIterator dib;
    ASSERT_EQ(CDibIterator::CreateRGB(dib, 3, 3), nullptr);
    CRowIterator image;
    ASSERT_TRUE(CRowIteratorBands::AttachDib(image, dib));
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 3; ++x) {
            BYTE* p = image.GetRow(y, x);
            p[0] = BYTE(x * 100), p[1] = BYTE(y * 100), p[2] = 7;  // blue = 100 x, green = 100 y
        }
    ASSERT_TRUE(Draw(image, RECT{0, 0, 2, 2}, RECT{1, 1, 3, 3}));
    EXPECT_EQ(GetPixel(memory_, 0, 0), RGB(7, 100, 100));
    EXPECT_EQ(GetPixel(memory_, 1, 1), RGB(7, 200, 200));
    EXPECT_EQ(GetPixel(memory_, 1, 0), RGB(7, 100, 200));
}

TEST_F(DrawImageOnDevice, IndexedImagesDrawThroughTheirColourTable) {
    const RGBQUAD entries[2] = {{0, 0, 0, 0}, {30, 20, 10, 0}};
    const CVPalette two(entries, 2);
    CRowIterator image;
    ASSERT_TRUE(CRowIteratorBands::Create(image, 2, 1, VPF_INDEXED_8, &two));
    image.GetRow(0)[1] = 1;
    ASSERT_TRUE(Draw(image, RECT{0, 0, 2, 1}, RECT{0, 0, 2, 1}));
    EXPECT_EQ(GetPixel(memory_, 1, 0), RGB(10, 20, 30));

    // Without a palette GDI reads a full table of 16: all black, and no read past it.
    ASSERT_TRUE(CRowIteratorBands::Create(image, 2, 1, VPF_INDEXED_4));
    image.GetRow(0)[0] = 0xFF;
    ASSERT_TRUE(Draw(image, RECT{0, 0, 2, 1}, RECT{0, 0, 2, 1}));
    EXPECT_EQ(GetPixel(memory_, 1, 0), RGB(0, 0, 0));
}
