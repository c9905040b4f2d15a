// teskcolor's device commands run as a user runs them: view and setup on an
// Xvfb server of the test's own, print to a test printer and through a
// CUPS scheduler of the test's own.
#include <lcms2.h>

#include <chrono>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <memory>
#include <thread>

#include "cli/imageio/ImageFile.h"
#include "display.h"
#include "host/imaging/RowIteratorBands.h"
#include "support/cups_server.h"
#include "support/manager_harness.h"
#include "support/programs.h"
#include "support/xvfb_server.h"

namespace {

namespace fs = std::filesystem;

using tesk::test::ReadText;
using SRun = tesk::test::ProgramRun;

// teskcolor with its arguments as one shell line; what it says on both streams.
SRun Teskcolor(const std::string& arguments) {
    return tesk::test::RunShell(TESK_BINARY_DIR "/bin/teskcolor " + arguments + " 2>&1");
}
std::string Quoted(const std::string& text) { return tesk::test::ShellQuote(text); }

// A 48 x 32 RGB image of six flat blocks, mid-tones that a gamma change moves.
const BYTE kBlocks[6][3] = {{60, 120, 200}, {200, 90, 40}, {128, 128, 128},
                            {30, 180, 90},  {240, 200, 20}, {90, 60, 150}};  // B, G, R

void WriteBlocks(const std::string& path) {
    teskcolor::SImage image;
    CRowIteratorBands::CreateRGB(image.pixels, 48, 32);
    for (int y = 0; y < 32; ++y)
        for (int x = 0; x < 48; ++x) std::memcpy(image.pixels.GetRow(y, x), kBlocks[(y / 16) * 3 + x / 16], 3);
    teskcolor::WriteImage(path, image);
}

class DeviceCommandTest : public colormgr_test::ManagerTest {
protected:
    void SetUp() override {
        ManagerTest::SetUp();
        ::setenv("TESK_TEST_PRINTERS", "", 1);  // no printers unless a test names some
        ::setenv("CUPS_SERVER", (env_.Root() + "/no-cups.sock").c_str(), 1);
        input_ = env_.Root() + "/blocks.tif";
        WriteBlocks(input_);
    }
    void TearDown() override {
        ::unsetenv("TESK_TEST_PRINTERS");
        ::unsetenv("TESK_TEST_PRINTER_SPOOL");
        ::unsetenv("CUPS_SERVER");
        ManagerTest::TearDown();
    }
    std::string input_;
};

class DisplayCommandTest : public DeviceCommandTest {
protected:
    void SetUp() override {
        DeviceCommandTest::SetUp();
        server_ = std::make_unique<tesk::test::XvfbServer>(800, 600);
        if (!server_->Running()) GTEST_SKIP() << "Xvfb is not available";
        ::setenv("DISPLAY", server_->Name().c_str(), 1);
        ::setenv("XDG_CACHE_HOME", (env_.Root() + "/cache").c_str(), 1);
        ::setenv("NO_AT_BRIDGE", "1", 1);
        tesk::display::Reset();
    }
    void TearDown() override {
        if (driver_.joinable()) driver_.join();
        ::unsetenv("LSAN_OPTIONS");
        tesk::display::Reset();
        server_.reset();
        ::unsetenv("DISPLAY");
        ::unsetenv("XDG_CACHE_HOME");
        DeviceCommandTest::TearDown();
    }
    std::unique_ptr<tesk::test::XvfbServer> server_;
    std::thread driver_;
};

}  // namespace

TEST_F(DeviceCommandTest, WithoutADisplayViewAndSetupSayWhy) {
    SRun view = Teskcolor("view " + Quoted(input_));
    EXPECT_EQ(view.code, 8);
    EXPECT_NE(view.out.find("DISPLAY is not set"), std::string::npos) << view.out;
    SRun setup = Teskcolor("setup");
    EXPECT_EQ(setup.code, 8);
    EXPECT_NE(setup.out.find("DISPLAY is not set"), std::string::npos) << setup.out;
    EXPECT_EQ(Teskcolor("gamma").code, 2);
    // Never into a display held in memory that dies with the process.
    const std::string calibrated = env_.Root() + "/calibrated.icc";
    colormgr_test::WriteRgbProfile(calibrated, 2.2, colormgr_test::TestRamp(256, 1000));
    for (const char* display : {"", ":4095"}) {
        if (*display) ::setenv("DISPLAY", display, 1);
        SRun load = Teskcolor("gamma load " + Quoted(calibrated));
        EXPECT_EQ(load.code, 8) << display;
        EXPECT_NE(load.out.find("no display to load the gamma ramp into"), std::string::npos) << load.out;
    }
    ::unsetenv("DISPLAY");
}

TEST_F(DisplayCommandTest, ViewShowsTheImageThroughTheDisplayTransform) {
    const std::string monitor = env_.Root() + "/Monitor.icc";
    colormgr_test::WriteRgbProfile(monitor, 1.8);
    ASSERT_EQ(Teskcolor("settings set monitor-profile " + Quoted(monitor)).code, 0);
    const std::string shot = env_.Root() + "/shot.png";
    // On a terminal, as a user runs it: the image's preparation shows progress.
    SRun view = tesk::test::RunShell("script -qec " +
                                     Quoted(TESK_BINARY_DIR "/bin/teskcolor view --screenshot " + Quoted(shot) +
                                            " --timeout 0 " + Quoted(input_)) +
                                     " /dev/null");
    ASSERT_EQ(view.code, 0) << view.out;
    EXPECT_NE(view.out.find("reading"), std::string::npos) << view.out;
    EXPECT_NE(view.out.find("100%"), std::string::npos) << view.out;

    // The reference: Little CMS from the working space to the monitor profile.
    cmsHPROFILE working = cmsOpenProfileFromFile((ColorDir() + "/sRGB Color Space Profile.icm").c_str(), "r");
    cmsHPROFILE target = cmsOpenProfileFromFile(monitor.c_str(), "r");
    ASSERT_NE(working, nullptr);
    cmsHTRANSFORM transform = cmsCreateTransform(working, TYPE_BGR_8, target, TYPE_BGR_8, INTENT_PERCEPTUAL, 0);
    cmsCloseProfile(working);
    cmsCloseProfile(target);

    teskcolor::SImage screenshot = teskcolor::ReadImage(shot);
    ASSERT_EQ(screenshot.pixels.GetWidth(), 48);
    ASSERT_EQ(screenshot.pixels.GetHeight(), 32);
    bool moved = false;
    for (int block = 0; block < 6; ++block) {
        BYTE expected[3];
        cmsDoTransform(transform, kBlocks[block], expected, 1);
        const BYTE* shown = screenshot.pixels.GetRow((block / 3) * 16 + 8, (block % 3) * 16 + 8);
        for (int c = 0; c < 3; ++c) {
            EXPECT_NEAR(shown[c], expected[c], 2) << "block " << block << " channel " << c;
            moved |= std::abs(int(shown[c]) - int(kBlocks[block][c])) > 4;
        }
    }
    cmsDeleteTransform(transform);
    EXPECT_TRUE(moved) << "gamma 2.2 to 1.8 moves mid-tones";
}

// An image larger than the 800 x 600 screen is fitted to it, and captured whole.
TEST_F(DisplayCommandTest, ViewFitsALargeImageToTheScreen) {
    const std::string large = env_.Root() + "/large.tif";
    ASSERT_EQ(Teskcolor("chart --width 2000 --height 1000 " + Quoted(large)).code, 0);
    const std::string shot = env_.Root() + "/shot.png";
    SRun view = Teskcolor("view --screenshot " + Quoted(shot) + " --timeout 0 " + Quoted(large));
    ASSERT_EQ(view.code, 0) << view.out;
    const teskcolor::SImage screenshot = teskcolor::ReadImage(shot);
    EXPECT_EQ(screenshot.pixels.GetWidth(), 720);
    EXPECT_EQ(screenshot.pixels.GetHeight(), 360);
    EXPECT_EQ(Teskcolor("view --zoom 2 --timeout 0 " + Quoted(large)).code, 2);
}

TEST_F(DisplayCommandTest, SetupSavesWhatTheDialogAccepts) {
    if (!tesk::test::HasXdotool()) GTEST_SKIP() << "xdotool is not available";
    const std::string suppressions = env_.Root() + "/lsan.supp";
    std::ofstream(suppressions) << tesk::test::kGtkLeakSuppressions;
    ::setenv("LSAN_OPTIONS", ("suppressions=" + suppressions).c_str(), 1);
    auto drive = [](const std::string& keys) { return tesk::test::DriveWindow("Colour Management", keys); };

    driver_ = drive("Escape");
    SRun cancelled = Teskcolor("setup");
    driver_.join();
    EXPECT_EQ(cancelled.code, 0) << cancelled.out;
    EXPECT_NE(cancelled.out.find("nothing changed"), std::string::npos) << cancelled.out;
    int intent = -1;
    EXPECT_FALSE(colormgr_test::StoredInt(177, intent)) << "a cancelled dialog saves nothing";

    driver_ = drive("Down alt+o");  // the rendering intent has the focus: the next one, then OK
    SRun accepted = Teskcolor("setup");
    driver_.join();
    ASSERT_EQ(accepted.code, 0) << accepted.out;
    ASSERT_TRUE(colormgr_test::StoredInt(177, intent));
    EXPECT_EQ(intent, 1);
    int mode = -1;
    ASSERT_TRUE(colormgr_test::StoredInt(170, mode));
    EXPECT_EQ(mode, 1);
}

TEST_F(DeviceCommandTest, PrintingReachesTheDefaultPrinter) {
    const std::string spool = env_.Root() + "/spool";
    ::setenv("TESK_TEST_PRINTERS", ("Office=" + tesk::test::DataPath("ColorProfile/ISO Coated (FOGRA39).icc")).c_str(), 1);
    ::setenv("TESK_TEST_PRINTER_SPOOL", spool.c_str(), 1);
    SRun print = Teskcolor("print --title 'Blocks proof' " + Quoted(input_));
    ASSERT_EQ(print.code, 0) << print.out;
    EXPECT_NE(print.out.find("on Office"), std::string::npos);
    ASSERT_TRUE(fs::exists(spool));
    std::string document;
    for (const auto& entry : fs::directory_iterator(spool)) document = ReadText(entry.path());
    EXPECT_EQ(document.rfind("%PDF", 0), 0u);
    EXPECT_NE(document.find("Blocks proof"), std::string::npos);
    EXPECT_NE(print.out.find("not colour-matched"), std::string::npos) << "the driver's profile is elsewhere";

    // Installed in the colour directory, the printer's profile is switched on for the job.
    fs::copy_file(tesk::test::DataPath("ColorProfile/ISO Coated (FOGRA39).icc"),
                  ColorDir() + "/ISO Coated (FOGRA39).icc");
    print = Teskcolor("print " + Quoted(input_));
    ASSERT_EQ(print.code, 0) << print.out;
    EXPECT_NE(print.out.find("colour-matched to the printer profile ISO Coated (FOGRA39).icc"), std::string::npos)
        << print.out;

    ::setenv("TESK_TEST_PRINTERS", "", 1);
    SRun nowhere = Teskcolor("print " + Quoted(input_));
    EXPECT_EQ(nowhere.code, 3) << nowhere.out;
}

TEST_F(DeviceCommandTest, PrintingThroughCupsArrivesAsAJob) {
    ::unsetenv("TESK_TEST_PRINTERS");
    auto server = std::make_unique<tesk::test::CupsServer>();
    if (!server->Running()) GTEST_SKIP() << "CUPS is not available";
    const std::string profile = env_.Root() + "/printer.icc";
    colormgr_test::WriteRgbProfile(profile, 2.2);
    ASSERT_TRUE(server->AddQueue("Proofer", profile, true));

    SRun print = Teskcolor("print --title 'Blocks by CUPS' " + Quoted(input_));
    ASSERT_EQ(print.code, 0) << print.out;
    std::string text;
    for (int i = 0; i < 150 && text.find("%%EOF") == std::string::npos; ++i) {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        text = ReadText(server->OutputOf("Proofer"));
    }
    EXPECT_EQ(text.rfind("%PDF", 0), 0u) << ReadText(server->Folder() + "/error_log");
    EXPECT_NE(text.find("Blocks by CUPS"), std::string::npos);
}
