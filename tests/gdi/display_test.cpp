// The virtual display as User32 and GDI32 present it.
#include <windows.h>

#include "gdi_test_support.h"

namespace tesk::test {
namespace {

using DisplayTest = GdiTest;

TEST_F(DisplayTest, DisplayContextsByDriverOrDeviceName) {
    for (auto [driver, device] : {std::pair<LPCWSTR, LPCWSTR>{L"DISPLAY", nullptr},
                                  {L"DISPLAY", L"\\\\.\\DISPLAY1"},
                                  {nullptr, L"\\\\.\\DISPLAY1"}}) {
        HDC dc = CreateDCW(driver, device, nullptr, nullptr);
        ASSERT_NE(dc, nullptr);
        EXPECT_EQ(GetDeviceCaps(dc, TECHNOLOGY), DT_RASDISPLAY);
        EXPECT_EQ(GetDeviceCaps(dc, HORZRES), 1920);
        EXPECT_EQ(GetDeviceCaps(dc, VERTRES), 1080);
        EXPECT_EQ(GetDeviceCaps(dc, BITSPIXEL), 32);
        EXPECT_EQ(GetDeviceCaps(dc, COLORMGMTCAPS), CM_GAMMA_RAMP);
        EXPECT_TRUE(DeleteDC(dc));
    }
    EXPECT_EQ(CreateDCW(L"\\\\.\\DISPLAY2", nullptr, nullptr, nullptr), nullptr);
    EXPECT_TRUE(FailsWith(CreateDCW(nullptr, nullptr, nullptr, nullptr), ERROR_INVALID_PARAMETER));
}

}  // namespace
}  // namespace tesk::test
