// Closed, foreign and mismatched handles fail cleanly.
#include <windows.h>

#include <array>

#include "gdi_test_support.h"

namespace tesk::test {
namespace {

using BadHandleTest = GdiTest;

void ExpectInvalidHandle(HDC dc) {
    std::array<WORD, 768> ramp{};
    DWORD size = 0;
    WCHAR name[8] = {};
    SetLastError(0);
    EXPECT_EQ(GetDeviceCaps(dc, HORZRES), 0);
    EXPECT_EQ(GetLastError(), DWORD(ERROR_INVALID_HANDLE));
    EXPECT_FALSE(GetDeviceGammaRamp(dc, ramp.data()));
    EXPECT_FALSE(SetDeviceGammaRamp(dc, ramp.data()));
    EXPECT_TRUE(FailsWith(GetICMProfileW(dc, &size, name), ERROR_INVALID_HANDLE));
    EXPECT_FALSE(SetICMProfileW(dc, name));
    EXPECT_EQ(SetICMMode(dc, ICM_ON), 0);
    EXPECT_EQ(EnumICMProfilesW(dc, [](LPWSTR, LPARAM) { return 1; }, 0), -1);
    EXPECT_EQ(GetLastError(), DWORD(ERROR_INVALID_HANDLE));
    if (dc) {
        EXPECT_EQ(CreateCompatibleDC(dc), nullptr);  // a null DC means the screen
    }
    EXPECT_EQ(CreateCompatibleBitmap(dc, 4, 4), nullptr);
    EXPECT_EQ(GetPixel(dc, 0, 0), CLR_INVALID);
    EXPECT_FALSE(BitBlt(dc, 0, 0, 1, 1, nullptr, 0, 0, BLACKNESS));
    EXPECT_EQ(StartDocW(dc, nullptr), SP_ERROR);
    EXPECT_TRUE(FailsWith(DeleteDC(dc), ERROR_INVALID_HANDLE));
}

TEST_F(BadHandleTest, DeletedNullAndForeignContexts) {
    HDC dc = CreateDCW(L"DISPLAY", nullptr, nullptr, nullptr);
    ASSERT_TRUE(DeleteDC(dc));
    ExpectInvalidHandle(dc);
    ExpectInvalidHandle(nullptr);
    int local = 0;
    ExpectInvalidHandle(reinterpret_cast<HDC>(&local));
}

TEST_F(BadHandleTest, OversizedAndNegativeRequests) {
    HDC memory = CreateCompatibleDC(nullptr);
    EXPECT_EQ(CreateCompatibleBitmap(memory, -1, 4), nullptr);
    EXPECT_EQ(CreateCompatibleBitmap(memory, 1 << 20, 1 << 20), nullptr);
    EXPECT_EQ(GetLastError(), DWORD(ERROR_INVALID_PARAMETER));
    EXPECT_FALSE(BitBlt(memory, 0, 0, -1, 1, nullptr, 0, 0, BLACKNESS));
    BITMAPINFO info{};
    info.bmiHeader = {sizeof(BITMAPINFOHEADER), 1 << 24, 1, 1, 24, BI_RGB, 0, 0, 0, 0, 0};
    uint8_t pixel[4] = {};
    EXPECT_EQ(StretchDIBits(memory, 0, 0, 1, 1, 0, 0, 1, 1, pixel, &info, DIB_RGB_COLORS, SRCCOPY), 0);
    info.bmiHeader.biWidth = 1;
    EXPECT_EQ(SetDIBitsToDevice(memory, 0, 0, 1, 1, 0, 0, 0, 5, pixel, &info, DIB_RGB_COLORS), 0);
    EXPECT_EQ(StretchDIBits(memory, 0, 0, 1, 1, 0, 0, 1, 1, nullptr, &info, DIB_RGB_COLORS, SRCCOPY), 0);
    DeleteDC(memory);
}

}  // namespace
}  // namespace tesk::test
