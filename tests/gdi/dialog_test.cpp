// The colour-matching dialog under Xvfb, driven by xdotool.
#include <windows.h>

#include <icm.h>
#include <tesk/path.h>

#include <cwchar>
#include <set>
#include <filesystem>
#include <memory>
#include <string>
#include <thread>

#include "gdi_test_support.h"
#include "support/xvfb_server.h"

// After GoogleTest: Xlib's macros would clash with it.
#include <X11/Xlib.h>
#include <X11/Xutil.h>

// For the leak checker of sanitizer builds.
extern "C" __attribute__((visibility("default"), used)) const char* __lsan_default_suppressions() {
    return tesk::test::kGtkLeakSuppressions;
}

namespace tesk::test {
namespace {

class DialogTest : public GdiTest {
protected:
    void SetUp() override {
        GdiTest::SetUp();
        if (!HasXdotool()) GTEST_SKIP() << "xdotool is not available";
        server_ = std::make_unique<XvfbServer>(1024, 768);
        if (!server_->Running()) GTEST_SKIP() << "Xvfb is not available";
        setenv("DISPLAY", server_->Name().c_str(), 1);
        setenv("NO_AT_BRIDGE", "1", 1);
        // A printer profile beside the built-in sRGB one.
        std::filesystem::create_directories(env_.ColorDir());
        std::filesystem::copy_file(DataPath("ColorProfile/ISO Coated (FOGRA39).icc"),
                                   env_.ColorDir() + "/ISO Coated (FOGRA39).icc");
    }
    void TearDown() override {
        if (driver_.joinable()) driver_.join();
        server_.reset();
        GdiTest::TearDown();
    }

    // Waits for the dialog, keeps a screenshot of it, then types `keys` into it.
    void Drive(const std::string& keys) {
        driver_ = DriveWindow("Colour Management", keys,
                              [this](unsigned long window) { screenshotColours_ = ScreenshotColours(window); });
    }

    // Distinct colours in the dialog's window.
    size_t ScreenshotColours(unsigned long window) {
        Display* x = XOpenDisplay(server_->Name().c_str());
        if (!x) return 0;
        XWindowAttributes attributes{};
        XGetWindowAttributes(x, window, &attributes);
        XImage* image = XGetImage(x, window, 0, 0, unsigned(attributes.width), unsigned(attributes.height), AllPlanes,
                                  ZPixmap);
        std::set<unsigned long> colours;
        if (image) {
            for (int y = 0; y < attributes.height; ++y)
                for (int xx = 0; xx < attributes.width; ++xx) colours.insert(XGetPixel(image, xx, y));
            XDestroyImage(image);
        }
        XCloseDisplay(x);
        return colours.size();
    }

    COLORMATCHSETUPW Record() {
        COLORMATCHSETUPW setup{};
        setup.dwSize = sizeof setup;
        setup.dwVersion = COLOR_MATCH_VERSION;
        setup.dwFlags = 0x27C;  // intents, the three profiles, descriptions
        setup.dwRenderIntent = INTENT_PERCEPTUAL;
        setup.dwProofingIntent = INTENT_ABSOLUTE_COLORIMETRIC;
        setup.pMonitorProfile = monitor_;
        setup.ccMonitorProfile = MAX_PATH;
        setup.pPrinterProfile = printer_;
        setup.ccPrinterProfile = MAX_PATH;
        setup.pTargetProfile = target_;
        setup.ccTargetProfile = MAX_PATH;
        return setup;
    }

    std::unique_ptr<XvfbServer> server_;
    std::thread driver_;
    size_t screenshotColours_ = 0;
    WCHAR monitor_[MAX_PATH] = L"sRGB Color Space Profile.icm";
    WCHAR printer_[MAX_PATH] = L"ISO Coated (FOGRA39).icc";
    WCHAR target_[MAX_PATH] = L"";
};

TEST_F(DialogTest, CancellingReturnsZeroWithNoErrorAndChangesNothing) {
    COLORMATCHSETUPW setup = Record();
    setup.dwFlags |= CMS_DISABLEICM;
    Drive("Escape");
    SetLastError(12345);
    EXPECT_FALSE(SetupColorMatchingW(&setup));
    EXPECT_EQ(GetLastError(), 0u);
    EXPECT_EQ(setup.dwFlags, DWORD(0x27C | CMS_DISABLEICM));
    EXPECT_EQ(std::wstring(monitor_), L"sRGB Color Space Profile.icm");
    EXPECT_GT(screenshotColours_, 3u);  // the dialog was drawn, not a blank window
}

TEST_F(DialogTest, ANameTooLongForItsBufferIsReportedAsOverflow) {
    COLORMATCHSETUPW setup = Record();
    setup.ccPrinterProfile = 5;
    std::wcsncpy(printer_, L"ISO", MAX_PATH);
    setup.pPrinterProfile = printer_;
    // Four characters of the monitor name are read; they cannot go back with their terminator.
    setup.ccMonitorProfile = 4;
    Drive("alt+o");
    EXPECT_TRUE(FailsWith(SetupColorMatchingW(&setup), ERROR_INSUFFICIENT_BUFFER));
    EXPECT_NE(setup.dwFlags & CMS_MONITOROVERFLOW, 0u);
    EXPECT_EQ(setup.dwFlags & CMS_PRINTEROVERFLOW, 0u);
    EXPECT_EQ(std::wstring(printer_), L"ISO");
}

}  // namespace
}  // namespace tesk::test
