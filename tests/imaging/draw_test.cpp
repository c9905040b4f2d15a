#include <gtest/gtest.h>
#include <tesk/loader.h>

#include <vector>

#include "host/imaging/DibIterator.h"
#include "host/imaging/RowIteratorBands.h"

namespace {

struct SStretchCall {
    int xDest, yDest, destWidth, destHeight, xSrc, ySrc, srcWidth, srcHeight;
    LONG height;
    WORD bitCount;
    DWORD colours;
    BYTE firstPixelByte;
    DWORD rop;
};
std::vector<SStretchCall> g_calls;

int FakeStretchDIBits(HDC, int xDest, int yDest, int destWidth, int destHeight, int xSrc, int ySrc, int srcWidth,
                      int srcHeight, const void* bits, const BITMAPINFO* info, UINT, DWORD rop) {
    g_calls.push_back({xDest, yDest, destWidth, destHeight, xSrc, ySrc, srcWidth, srcHeight, info->bmiHeader.biHeight,
                       info->bmiHeader.biBitCount, info->bmiHeader.biClrUsed, *static_cast<const BYTE*>(bits), rop});
    return srcHeight;
}

class DrawImage : public ::testing::Test {
protected:
    void SetUp() override {
        HMODULE gdi = LoadLibraryW(L"GDI32.DLL");
        if (!gdi) GTEST_SKIP() << "GDI32.DLL is not built";
        FreeLibrary(gdi);
        tesk::loader::Substitute fake;
        fake.overrides["StretchDIBits"] = reinterpret_cast<FARPROC>(reinterpret_cast<void*>(&FakeStretchDIBits));
        tesk::loader::SetSubstitute(L"GDI32.DLL", fake);
        g_calls.clear();
    }
    void TearDown() override { tesk::loader::ClearSubstitutes(); }
};

}  // namespace

TEST_F(DrawImage, GreyImageGoesAsTopDownDibWithGreyColours) {
    CRowIterator image;
    ASSERT_TRUE(CRowIteratorBands::CreateGreyscale(image, 8, 3));
    image.GetRow(0)[0] = 99;
    ASSERT_TRUE(CRowIteratorBands::DrawImage(image, nullptr, RECT{5, 6, 21, 12}, RECT{0, 0, 8, 3}, SRCCOPY));
    ASSERT_EQ(g_calls.size(), 1u);
    const SStretchCall& c = g_calls[0];
    EXPECT_EQ(c.height, -3);
    EXPECT_EQ(c.bitCount, 8);
    EXPECT_EQ(c.colours, 256u);
    EXPECT_EQ(c.firstPixelByte, 99);
    EXPECT_EQ(c.destWidth, 16);
    EXPECT_EQ(c.destHeight, 6);
    EXPECT_EQ(c.rop, SRCCOPY);
}

TEST_F(DrawImage, UnpaddedRowsAreCopiedAndSixteenBitsRefused) {
    std::vector<BYTE> memory(9 * 2);
    CRowIterator image;
    ASSERT_TRUE(image.Attach(memory.data(), 3, 2, VPF_RGB_8, 9));
    memory[9] = 5;
    ASSERT_TRUE(CRowIteratorBands::DrawImage(image, nullptr, RECT{0, 0, 3, 2}, RECT{0, 0, 3, 2}, SRCCOPY));
    ASSERT_EQ(g_calls.size(), 1u);
    EXPECT_EQ(g_calls[0].height, -2);

    CRowIterator wide;
    ASSERT_TRUE(CRowIteratorBands::Create(wide, 2, 2, VPF_RGB_16));
    EXPECT_FALSE(CRowIteratorBands::DrawImage(wide, nullptr, RECT{0, 0, 2, 2}, RECT{0, 0, 2, 2}, SRCCOPY));
    EXPECT_EQ(g_calls.size(), 1u);
}

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
