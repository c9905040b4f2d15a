// The virtual display as User32 and GDI32 present it.
#include <windows.h>

#include "gdi_test_support.h"

namespace tesk::test {
namespace {

using DisplayTest = GdiTest;

DISPLAY_DEVICEW Device(LPCWSTR parent, DWORD index, DWORD cb, BOOL* ok) {
    DISPLAY_DEVICEW device{};
    device.cb = cb;
    *ok = EnumDisplayDevicesW(parent, index, &device, 0);
    return device;
}

TEST_F(DisplayTest, OneAdapterWithOneMonitorAttachedToTheDesktop) {
    BOOL ok = FALSE;
    DISPLAY_DEVICEW adapter = Device(nullptr, 0, 840, &ok);  // the Windows size of the record
    ASSERT_TRUE(ok);
    EXPECT_EQ(std::wstring(adapter.DeviceName), L"\\\\.\\DISPLAY1");
    EXPECT_NE(adapter.StateFlags & DISPLAY_DEVICE_ATTACHED_TO_DESKTOP, 0u);
    EXPECT_NE(adapter.StateFlags & DISPLAY_DEVICE_PRIMARY_DEVICE, 0u);
    EXPECT_FALSE(std::wstring(adapter.DeviceString).empty());
    Device(nullptr, 1, 840, &ok);
    EXPECT_FALSE(ok);

    DISPLAY_DEVICEW monitor = Device(adapter.DeviceName, 0, sizeof(DISPLAY_DEVICEW), &ok);
    ASSERT_TRUE(ok);
    EXPECT_EQ(std::wstring(monitor.DeviceName), L"\\\\.\\DISPLAY1\\Monitor0");
    EXPECT_NE(monitor.StateFlags & DISPLAY_DEVICE_ACTIVE, 0u);
    EXPECT_EQ(std::wstring(monitor.DeviceID).rfind(L"MONITOR\\", 0), 0u);
    Device(adapter.DeviceName, 1, 840, &ok);
    EXPECT_FALSE(ok);
    Device(L"\\\\.\\DISPLAY7", 0, 840, &ok);
    EXPECT_FALSE(ok);
}

TEST_F(DisplayTest, ARecordIsFilledOnlyAsFarAsItsSizeReaches) {
    DISPLAY_DEVICEW device{};
    device.cb = 4 + 32 * 2 + 128 * 2;  // name and string only, counted the Windows way
    device.StateFlags = 0xABCD;
    device.DeviceID[0] = L'x';
    ASSERT_TRUE(EnumDisplayDevicesW(nullptr, 0, &device, 0));
    EXPECT_EQ(std::wstring(device.DeviceName), L"\\\\.\\DISPLAY1");
    EXPECT_EQ(device.StateFlags, 0xABCDu);
    EXPECT_EQ(device.DeviceID[0], L'x');

    device.cb = 10;
    SetLastError(0);
    EXPECT_TRUE(FailsWith(EnumDisplayDevicesW(nullptr, 0, &device, 0), ERROR_INVALID_PARAMETER));
    EXPECT_FALSE(EnumDisplayDevicesW(nullptr, 0, nullptr, 0));
}

TEST_F(DisplayTest, TheDesktopWindowLiesOnThePrimaryMonitor) {
    HMONITOR monitor = MonitorFromWindow(GetDesktopWindow(), MONITOR_DEFAULTTONULL);
    ASSERT_NE(monitor, nullptr);
    MONITORINFOEXW info{};
    info.cbSize = 104;  // MONITORINFOEXW as Windows counts it
    ASSERT_TRUE(GetMonitorInfoW(monitor, reinterpret_cast<LPMONITORINFO>(&info)));
    EXPECT_EQ(std::wstring(info.szDevice), L"\\\\.\\DISPLAY1");
    EXPECT_EQ(info.dwFlags, DWORD(MONITORINFOF_PRIMARY));
    EXPECT_EQ(info.rcMonitor.right - info.rcMonitor.left, 1920);

    // A plain MONITORINFO gets no device name written past its end.
    struct {
        MONITORINFO info;
        WCHAR guard;
    } plain{};
    plain.info.cbSize = sizeof(MONITORINFO);
    plain.guard = L'g';
    ASSERT_TRUE(GetMonitorInfoW(monitor, &plain.info));
    EXPECT_EQ(plain.guard, L'g');

    HWND unknown = reinterpret_cast<HWND>(uintptr_t(0x777));
    EXPECT_EQ(MonitorFromWindow(unknown, MONITOR_DEFAULTTONULL), nullptr);
    EXPECT_EQ(MonitorFromWindow(unknown, MONITOR_DEFAULTTOPRIMARY), monitor);
    EXPECT_FALSE(GetMonitorInfoW(reinterpret_cast<HMONITOR>(uintptr_t(0x1234)), &plain.info));
    EXPECT_EQ(GetLastError(), DWORD(ERROR_INVALID_HANDLE));
}

TEST_F(DisplayTest, DisplayContextsByDriverOrDeviceName) {
    for (auto [driver, device] : {std::pair<LPCWSTR, LPCWSTR>{L"DISPLAY", nullptr},
                                  {L"display", nullptr},
                                  {L"\\\\.\\DISPLAY1", nullptr},
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

TEST_F(DisplayTest, WindowContextsComeBackThroughReleaseDC) {
    HDC screen = GetDC(nullptr);
    ASSERT_NE(screen, nullptr);
    EXPECT_EQ(GetDeviceCaps(screen, TECHNOLOGY), DT_RASDISPLAY);
    HDC desktop = GetDC(GetDesktopWindow());
    ASSERT_NE(desktop, nullptr);
    EXPECT_EQ(ReleaseDC(nullptr, screen), 1);
    EXPECT_EQ(ReleaseDC(nullptr, screen), 0);  // released once only
    EXPECT_EQ(GetDeviceCaps(screen, TECHNOLOGY), 0);
    EXPECT_EQ(ReleaseDC(GetDesktopWindow(), desktop), 1);

    HDC own = CreateDCW(L"DISPLAY", nullptr, nullptr, nullptr);
    EXPECT_EQ(ReleaseDC(nullptr, own), 0);  // not a window DC: DeleteDC's business
    EXPECT_TRUE(DeleteDC(own));
    EXPECT_TRUE(FailsWith(GetDC(reinterpret_cast<HWND>(uintptr_t(0x777))), ERROR_INVALID_WINDOW_HANDLE));
}

}  // namespace
}  // namespace tesk::test
