// Under an Xvfb server of the test's own: CVDeviceContext drawing into an X
// window, read back from the X server.
#include <tesk/path.h>

#include <memory>

#include "device/VDeviceContext.h"
#include "display.h"
#include "support/device_harness.h"
#include "support/xvfb_server.h"

// After GoogleTest: Xlib's macros would clash with it.
#include <X11/Xlib.h>
#include <X11/Xutil.h>

using namespace device_test;

namespace {

class WindowTest : public colormgr_test::ManagerTest {
protected:
    void SetUp() override {
        ManagerTest::SetUp();
        server_ = std::make_unique<tesk::test::XvfbServer>(640, 480);
        if (!server_->Running()) GTEST_SKIP() << "Xvfb is not available";
        ::setenv("DISPLAY", server_->Name().c_str(), 1);
        ::setenv("XDG_CACHE_HOME", (env_.Root() + "/cache").c_str(), 1);
        tesk::display::Reset();
        x_ = XOpenDisplay(server_->Name().c_str());
        ASSERT_NE(x_, nullptr);
        colormgr_test::WriteRgbProfile(ColorDir() + "/Monitor.icc", 1.8);
        manager_ = CColorManager::Instance();
        ASSERT_NE(manager_, nullptr);
        CString monitor(L"Monitor.icc");
        manager_->SetMonitorProfile(monitor);
    }
    void TearDown() override {
        if (x_) {
            if (window_) XDestroyWindow(x_, window_);
            XCloseDisplay(x_);
        }
        ManagerTest::TearDown();  // the manager goes before the server
        tesk::display::Reset();
        server_.reset();
        ::unsetenv("XDG_CACHE_HOME");
    }

    HWND OpenWindow(int width, int height) {
        window_ = XCreateSimpleWindow(x_, DefaultRootWindow(x_), 20, 20, unsigned(width), unsigned(height), 0, 0, 0);
        XMapWindow(x_, window_);
        XSync(x_, False);
        return reinterpret_cast<HWND>(uintptr_t(window_));
    }
    COLORREF Shown(int x, int y) {
        XImage* shot = XGetImage(x_, window_, x, y, 1, 1, AllPlanes, ZPixmap);
        if (!shot) return CLR_INVALID;
        const unsigned long pixel = XGetPixel(shot, 0, 0);
        XDestroyImage(shot);
        return RGB((pixel >> 16) & 0xFF, (pixel >> 8) & 0xFF, pixel & 0xFF);
    }

    std::unique_ptr<tesk::test::XvfbServer> server_;
    Display* x_ = nullptr;
    Window window_ = 0;
    CColorManager* manager_ = nullptr;
};

}  // namespace

TEST_F(WindowTest, AWindowShowsTheDisplayTransformOnceOnly) {
    // The display has a profile of its own and the window's context has ICM on:
    // the image must still be matched once, by the manager, not again by the context.
    colormgr_test::WriteRgbProfile(env_.Root() + "/wide.icc", 2.2);
    HDC screen = ::CreateDCW(L"DISPLAY", nullptr, nullptr, nullptr);
    std::wstring wide = tesk::path::ToWindows(env_.Root() + "/wide.icc");
    ASSERT_TRUE(::SetICMProfileW(screen, wide.data()));
    ::DeleteDC(screen);

    HWND hwnd = OpenWindow(4, 3);
    CRowIterator image = PatternRGB(4, 3);
    CRowIterator expected = DisplayTransformOf(*manager_, image);
    HDC dc = ::GetDC(hwnd);
    ASSERT_NE(dc, nullptr);
    ::SetICMMode(dc, ICM_ON);
    auto* device = new CVDeviceContext(dc, false);
    ASSERT_TRUE(device->DrawImage(&image, nullptr, 0, 0, true, false));
    device->Release();
    ::ReleaseDC(hwnd, dc);

    bool moved = false;
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 4; ++x) {
            EXPECT_EQ(Shown(x, y), PixelOf(expected, x, y) & 0xFFFFFF) << x << "," << y;
            moved |= (PixelOf(expected, x, y) & 0xFFFFFF) != Colour(x, y);
        }
    EXPECT_TRUE(moved);

    // Without management the window shows the image's own values.
    dc = ::GetDC(hwnd);
    CVDeviceContext plain(dc, false);
    ASSERT_TRUE(plain.DrawImage(&image, nullptr, 0, 0, false, false));
    ::ReleaseDC(hwnd, dc);
    EXPECT_EQ(Shown(3, 2), Colour(3, 2));
}
