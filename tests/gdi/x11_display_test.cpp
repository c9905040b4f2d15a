// The X11 displays under an Xvfb server started by the test.
#include <windows.h>

#include <icm.h>
#include <tesk/path.h>

#include <array>
#include <filesystem>
#include <memory>

#include "display.h"
#include "gamma_resample.h"
#include "gdi_test_support.h"
#include "support/xvfb_server.h"

// After GoogleTest: Xlib's macros (None, Bool, Status) would clash with it.
#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/extensions/Xrandr.h>

namespace tesk::test {
namespace {

class X11DisplayTest : public GdiTest {
protected:
    void SetUp() override {
        GdiTest::SetUp();
        server_ = std::make_unique<XvfbServer>(1280, 1024);
        if (!server_->Running()) GTEST_SKIP() << "Xvfb is not available";
        setenv("DISPLAY", server_->Name().c_str(), 1);
        setenv("XDG_CACHE_HOME", (env_.Root() + "/cache").c_str(), 1);
        display::Reset();
        x_ = XOpenDisplay(server_->Name().c_str());
        ASSERT_NE(x_, nullptr);
        ASSERT_STREQ(display::Current().Kind(), "x11");
    }
    void TearDown() override {
        display::Reset();  // closes the module's connection before the server goes
        if (x_) XCloseDisplay(x_);
        server_.reset();
        unsetenv("XDG_CACHE_HOME");
        GdiTest::TearDown();
    }

    std::vector<uint8_t> RootProperty(const char* name) {
        Atom atom = XInternAtom(x_, name, False), type = None;
        int format = 0;
        unsigned long count = 0, after = 0;
        unsigned char* data = nullptr;
        XGetWindowProperty(x_, DefaultRootWindow(x_), atom, 0, 1 << 20, False, XA_CARDINAL, &type, &format, &count,
                           &after, &data);
        std::vector<uint8_t> bytes(data, data + (data ? count : 0));
        if (data) XFree(data);
        return bytes;
    }

    std::unique_ptr<XvfbServer> server_;
    Display* x_ = nullptr;
};

TEST_F(X11DisplayTest, TheScreensOutputIsAnAdapterAttachedToTheDesktop) {
    DISPLAY_DEVICEW adapter{};
    adapter.cb = sizeof adapter;
    ASSERT_TRUE(EnumDisplayDevicesW(nullptr, 0, &adapter, 0));
    EXPECT_EQ(std::wstring(adapter.DeviceName), L"\\\\.\\DISPLAY1");
    EXPECT_NE(adapter.StateFlags & DISPLAY_DEVICE_ATTACHED_TO_DESKTOP, 0u);
    EXPECT_NE(adapter.StateFlags & DISPLAY_DEVICE_PRIMARY_DEVICE, 0u);
    DISPLAY_DEVICEW monitor{};
    monitor.cb = sizeof monitor;
    ASSERT_TRUE(EnumDisplayDevicesW(adapter.DeviceName, 0, &monitor, 0));
    EXPECT_NE(monitor.StateFlags & DISPLAY_DEVICE_ACTIVE, 0u);

    MONITORINFOEXW info{};
    info.cbSize = sizeof info;
    ASSERT_TRUE(GetMonitorInfoW(MonitorFromWindow(GetDesktopWindow(), MONITOR_DEFAULTTONULL), reinterpret_cast<LPMONITORINFO>(&info)));
    EXPECT_EQ(std::wstring(info.szDevice), L"\\\\.\\DISPLAY1");
    EXPECT_EQ(info.rcMonitor.right, 1280);
    EXPECT_EQ(info.rcMonitor.bottom, 1024);
    HDC dc = CreateDCW(info.szDevice, nullptr, nullptr, nullptr);
    EXPECT_EQ(GetDeviceCaps(dc, HORZRES), 1280);
    DeleteDC(dc);
}

TEST_F(X11DisplayTest, TheDisplayProfileIsTheRootWindowsIccProfile) {
    std::string wide = env_.Root() + "/wide.icc";
    WriteRgbProfile(wide, 2.2);
    HDC dc = CreateDCW(L"DISPLAY", nullptr, nullptr, nullptr);
    std::wstring name = Wide(wide);
    ASSERT_TRUE(SetICMProfileW(dc, name.data()));
    EXPECT_EQ(RootProperty("_ICC_PROFILE"), ReadBytes(wide));

    // A profile another program put there comes back as a file with its bytes:
    // the installed profile when it is one, else a copy.
    std::string srgb = env_.Root() + "/other.icc";
    WriteSrgbProfile(srgb);
    std::vector<uint8_t> bytes = ReadBytes(srgb);
    Atom atom = XInternAtom(x_, "_ICC_PROFILE", False);
    XChangeProperty(x_, DefaultRootWindow(x_), atom, XA_CARDINAL, 8, PropModeReplace, bytes.data(), int(bytes.size()));
    XSync(x_, False);
    WCHAR path[MAX_PATH] = {};
    DWORD size = MAX_PATH;
    ASSERT_TRUE(GetICMProfileW(dc, &size, path));
    EXPECT_EQ(ReadBytes(path::ToNative(path)), bytes);

    ASSERT_TRUE(InstallColorProfileW(nullptr, Wide(srgb).c_str()));
    size = MAX_PATH;
    ASSERT_TRUE(GetICMProfileW(dc, &size, path));
    EXPECT_EQ(std::filesystem::path(path::ToNative(path)).filename(), "other.icc");
    DeleteDC(dc);
}

TEST_F(X11DisplayTest, DrawingOnTheScreensContextReachesTheXServer) {
    HDC dc = GetDC(nullptr);
    ASSERT_NE(dc, nullptr);
    BITMAPINFO info{};
    info.bmiHeader = {sizeof(BITMAPINFOHEADER), 2, -1, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    uint32_t pixels[2] = {0x00C82850, 0x00102030};
    ASSERT_NE(StretchDIBits(dc, 100, 50, 20, 10, 0, 0, 2, 1, pixels, &info, DIB_RGB_COLORS, SRCCOPY), 0);
    ReleaseDC(nullptr, dc);

    XImage* shot = XGetImage(x_, DefaultRootWindow(x_), 100, 50, 20, 10, AllPlanes, ZPixmap);
    ASSERT_NE(shot, nullptr);
    EXPECT_EQ(XGetPixel(shot, 0, 0) & 0xFFFFFF, 0xC82850u);
    EXPECT_EQ(XGetPixel(shot, 9, 9) & 0xFFFFFF, 0xC82850u);
    EXPECT_EQ(XGetPixel(shot, 10, 0) & 0xFFFFFF, 0x102030u);
    XDestroyImage(shot);
}

TEST_F(X11DisplayTest, AWindowsContextDrawsIntoTheWindowMatchedToTheDisplayProfile) {
    Window window = XCreateSimpleWindow(x_, DefaultRootWindow(x_), 300, 200, 64, 32, 0, 0, 0);
    XMapWindow(x_, window);
    XSync(x_, False);
    HWND hwnd = reinterpret_cast<HWND>(uintptr_t(window));

    HMONITOR monitor = MonitorFromWindow(hwnd, MONITOR_DEFAULTTONULL);
    ASSERT_NE(monitor, nullptr);
    MONITORINFOEXW info{};
    info.cbSize = sizeof info;
    ASSERT_TRUE(GetMonitorInfoW(monitor, reinterpret_cast<LPMONITORINFO>(&info)));
    EXPECT_EQ(std::wstring(info.szDevice), L"\\\\.\\DISPLAY1");

    // The display's profile, then a colour-managed drawing into the window.
    std::string wide = env_.Root() + "/wide.icc";
    WriteRgbProfile(wide, 2.2);
    HDC screen = CreateDCW(info.szDevice, nullptr, nullptr, nullptr);
    std::wstring name = Wide(wide);
    ASSERT_TRUE(SetICMProfileW(screen, name.data()));
    DeleteDC(screen);

    HDC dc = GetDC(hwnd);
    ASSERT_NE(dc, nullptr);
    EXPECT_TRUE(SetICMMode(dc, ICM_ON));
    BITMAPINFO bitmap{};
    bitmap.bmiHeader = {sizeof(BITMAPINFOHEADER), 1, -1, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    uint32_t pixel = 0x00C82850;
    ASSERT_NE(StretchDIBits(dc, 0, 0, 64, 32, 0, 0, 1, 1, &pixel, &bitmap, DIB_RGB_COLORS, SRCCOPY), 0);
    EXPECT_EQ(ReleaseDC(hwnd, dc), 1);

    const COLORREF matched = LcmsFromSrgb(wide, RGB(0xC8, 0x28, 0x50));

    XImage* shot = XGetImage(x_, window, 0, 0, 64, 32, AllPlanes, ZPixmap);
    ASSERT_NE(shot, nullptr);
    const unsigned long expected = GetRValue(matched) << 16 | GetGValue(matched) << 8 | GetBValue(matched);
    EXPECT_EQ(XGetPixel(shot, 5, 5) & 0xFFFFFF, expected);
    EXPECT_EQ(XGetPixel(shot, 63, 31) & 0xFFFFFF, expected);
    EXPECT_NE(expected, 0xC82850u);
    XDestroyImage(shot);

    XDestroyWindow(x_, window);
    XSync(x_, False);
    EXPECT_EQ(GetDC(hwnd), nullptr);  // gone
    EXPECT_EQ(GetLastError(), DWORD(ERROR_INVALID_WINDOW_HANDLE));
    EXPECT_EQ(MonitorFromWindow(hwnd, MONITOR_DEFAULTTONULL), nullptr);
}

TEST(GammaResampleTest, RampsSurviveAWayToAnotherSizeAndBack) {
    std::array<uint16_t, 256> ramp{}, back{};
    for (size_t i = 0; i < 256; ++i) ramp[i] = uint16_t(65535.0 * (double(i) / 255) * (double(i) / 255));
    for (size_t size : {size_t(1024), size_t(2048), size_t(4096), size_t(256)}) {
        std::vector<uint16_t> crtc(size);
        display::ResampleRamp(ramp.data(), 256, crtc.data(), size);
        EXPECT_EQ(crtc.front(), 0);
        EXPECT_EQ(crtc.back(), 65535);
        for (size_t i = 1; i < size; ++i) EXPECT_GE(crtc[i], crtc[i - 1]);
        display::ResampleRamp(crtc.data(), size, back.data(), 256);
        for (size_t i = 0; i < 256; ++i) EXPECT_NEAR(back[i], ramp[i], 1) << "size " << size << " entry " << i;
    }
    // Down to a coarse CRTC: entry 1 of 3 is the middle of the ramp.
    std::array<uint16_t, 3> coarse{};
    display::ResampleRamp(ramp.data(), 256, coarse.data(), 3);
    EXPECT_NEAR(coarse[1], (ramp[127] + ramp[128]) / 2, 1);
}

}  // namespace
}  // namespace tesk::test
