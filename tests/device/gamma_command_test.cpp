// teskcolor on a real display's gamma ramp and profile: Xorg with the dummy
// video driver, started by each test, is both the display and the oracle.
#include <windows.h>

#include <icm.h>
#include <tesk/path.h>

#include <cstdlib>
#include <filesystem>
#include <memory>

#include "cli/cli_runner.h"
#include "display.h"
#include "support/manager_harness.h"
#include "support/programs.h"
#include "support/xorg_dummy_server.h"

namespace {

namespace fs = std::filesystem;
using teskcolor::test::RunTeskcolor;
using teskcolor::test::SRun;

void ExpectRampNear(const std::vector<uint16_t>& actual, const std::vector<uint16_t>& expected) {
    ASSERT_EQ(actual.size(), expected.size());
    for (size_t i = 0; i < actual.size(); ++i) ASSERT_NEAR(actual[i], expected[i], 1) << "entry " << i;
}

class GammaCommandTest : public colormgr_test::ManagerTest {
protected:
    void SetUp() override {
        ManagerTest::SetUp();
        server_ = std::make_unique<tesk::test::XorgDummyServer>(640, 480);
        if (!server_->Running()) GTEST_SKIP() << server_->Problem();
        ::setenv("DISPLAY", server_->Name().c_str(), 1);
        ::setenv("XDG_CACHE_HOME", (env_.Root() + "/cache").c_str(), 1);
        tesk::display::Reset();
        // A ramp of the user's own, which no identity or table ramp matches.
        before_ = colormgr_test::TestRamp(256, 300);
        server_->SetCrtcRamp(before_);
        calibrated_ = env_.Root() + "/calibrated.icc";
        colormgr_test::WriteRgbProfile(calibrated_, 2.2, table_);
    }
    void TearDown() override {
        tesk::display::Reset();
        server_.reset();
        ::unsetenv("DISPLAY");
        ::unsetenv("XDG_CACHE_HOME");
        ManagerTest::TearDown();
    }
    std::string SavedRampFile() const { return env_.ConfigDir() + "/teskcolor/gamma-ramp-" + server_->Name() + ".bin"; }

    std::unique_ptr<tesk::test::XorgDummyServer> server_;
    std::vector<uint16_t> before_;
    const std::vector<uint16_t> table_ = colormgr_test::TestRamp(256, 1000);
    std::string calibrated_;
};

TEST_F(GammaCommandTest, LoadSetsTheProfilesTableAndRestorePutsBackTheRampFromBeforeTheFirstLoad) {
    // The monitor profile has a table of its own, which the manager loads as it starts.
    const std::string monitor = env_.Root() + "/monitor.icc";
    colormgr_test::WriteRgbProfile(monitor, 2.2, colormgr_test::TestRamp(256, 500));
    ASSERT_EQ(RunTeskcolor({"settings", "set", "monitor-profile", monitor}).code, 0);

    SRun load = RunTeskcolor({"gamma", "load", calibrated_});
    ASSERT_EQ(load.code, 0) << load.err;
    ExpectRampNear(server_->CrtcRamp(), table_);
    EXPECT_EQ(fs::file_size(SavedRampFile()), 1536u);
    colormgr_test::WriteRgbProfile(calibrated_, 2.2, colormgr_test::TestRamp(256, 3000));
    ASSERT_EQ(RunTeskcolor({"gamma", "load", calibrated_}).code, 0);

    SRun restore = RunTeskcolor({"gamma", "restore"});
    ASSERT_EQ(restore.code, 0) << restore.err;
    EXPECT_EQ(server_->CrtcRamp(), before_);
    EXPECT_EQ(RunTeskcolor({"gamma", "restore"}).code, 3) << "a ramp is restored once";

    // A table of 16 entries a channel is interpolated to the ramp's 256.
    std::vector<uint16_t> coarse, identity;
    for (int channel = 0; channel < 3; ++channel)
        for (int i = 0; i < 16; ++i) coarse.push_back(uint16_t(i * 4369));
    for (size_t i = 0; i < 768; ++i) identity.push_back(uint16_t((i % 256) * 257));
    colormgr_test::WriteRgbProfile(calibrated_, 2.2, coarse);
    ASSERT_EQ(RunTeskcolor({"gamma", "load", calibrated_}).code, 0);
    ExpectRampNear(server_->CrtcRamp(), identity);

    const std::string plain = env_.Root() + "/plain.icc";
    colormgr_test::WriteRgbProfile(plain, 2.2);
    SRun none = RunTeskcolor({"gamma", "load", plain});
    EXPECT_EQ(none.code, 6);
    EXPECT_NE(none.err.find("no vcgt"), std::string::npos);
}

TEST_F(GammaCommandTest, AVcgtThatEndsAtItsTagsEndLoadsWhole) {
    const std::string bluish = "/usr/share/color/icc/colord/Bluish.icc";
    if (!fs::exists(bluish)) GTEST_SKIP() << "colord-data is not installed";
    ASSERT_EQ(RunTeskcolor({"gamma", "load", bluish}).code, 0);
    const std::vector<uint16_t> ramp = server_->CrtcRamp();
    ASSERT_EQ(ramp.size(), 768u);
    EXPECT_NEAR(ramp[767], 65279, 1) << "the table's last value is read, not taken as zero";
    EXPECT_NEAR(ramp[255], 45695, 1);
}

TEST_F(GammaCommandTest, ASavedRampCutShortIsNeverTrusted) {
    ASSERT_EQ(RunTeskcolor({"settings", "show"}).code, 0);  // the colour directory's own files are written
    // Killed while saving the ramp (at 1 KiB of its 1.5): the display keeps its ramp and no half file stays.
    const std::string command = "prlimit --fsize=1024 " + tesk::test::ShellQuote(TESKCOLOR_EXE) + " gamma load " +
                                tesk::test::ShellQuote(calibrated_) + " 2>/dev/null";
    EXPECT_NE(std::system(command.c_str()), 0);
    EXPECT_EQ(server_->CrtcRamp(), before_);
    ASSERT_EQ(RunTeskcolor({"gamma", "load", calibrated_}).code, 0);
    ASSERT_EQ(RunTeskcolor({"gamma", "restore"}).code, 0);
    EXPECT_EQ(server_->CrtcRamp(), before_);

    // A short file is reported, never restored, and the next load saves the ramp it finds.
    tesk::test::WriteBytes(SavedRampFile(), std::vector<uint8_t>(100, 0xFF));
    SRun restore = RunTeskcolor({"gamma", "restore"});
    EXPECT_EQ(restore.code, 4);
    EXPECT_NE(restore.err.find("damaged"), std::string::npos) << restore.err;
    EXPECT_EQ(server_->CrtcRamp(), before_);
    SRun load = RunTeskcolor({"gamma", "load", calibrated_});
    ASSERT_EQ(load.code, 0) << load.err;
    EXPECT_NE(load.err.find("damaged"), std::string::npos) << load.err;
    ASSERT_EQ(RunTeskcolor({"gamma", "restore"}).code, 0);
    EXPECT_EQ(server_->CrtcRamp(), before_);
}

TEST_F(GammaCommandTest, ARampSavedInTheEarlierDoubledFolderIsStillRestored) {
    std::vector<uint8_t> bytes;
    for (uint16_t value : before_) bytes.insert(bytes.end(), {uint8_t(value & 0xFF), uint8_t(value >> 8)});
    fs::create_directories(env_.ConfigDir() + "/teskcolor/teskcolor");
    tesk::test::WriteBytes(env_.ConfigDir() + "/teskcolor/teskcolor/gamma-ramp-" + server_->Name() + ".bin", bytes);
    server_->SetCrtcRamp(table_);
    SRun restore = RunTeskcolor({"gamma", "restore"});
    ASSERT_EQ(restore.code, 0) << restore.err;
    EXPECT_EQ(server_->CrtcRamp(), before_);
}

TEST_F(GammaCommandTest, CommandsThatDoNotNeedTheScreenLeaveTheDisplayAsItWas) {
    // The display has a profile of its own, which settings and proof read.
    const std::string wide = env_.Root() + "/wide.icc";
    colormgr_test::WriteRgbProfile(wide, 1.8);
    HDC dc = ::CreateDCW(L"DISPLAY", nullptr, nullptr, nullptr);
    std::wstring name = tesk::path::ToWindows(wide);
    ASSERT_TRUE(::SetICMProfileW(dc, name.data()));
    ::DeleteDC(dc);
    tesk::display::Reset();
    const std::vector<uint8_t> displayProfile = server_->RootProperty("_ICC_PROFILE");
    ASSERT_EQ(displayProfile, tesk::test::ReadBytes(wide));
    SRun shown = RunTeskcolor({"settings", "show"});
    EXPECT_NE(shown.out.find("display1.icc"), std::string::npos) << shown.out;

    const std::string chart = env_.Root() + "/chart.tif";
    const std::vector<std::vector<std::string>> commands = {
        {"settings", "set", "monitor-profile", calibrated_},
        {"settings", "show"},
        {"info", calibrated_},
        {"chart", chart},
        {"convert", chart, env_.Root() + "/converted.tif"},
        {"proof", chart, env_.Root() + "/proof.tif"},
    };
    for (const auto& command : commands) {
        SCOPED_TRACE(command[0] + " " + command[1]);
        SRun run = RunTeskcolor(command);
        ASSERT_EQ(run.code, 0) << run.err;
        EXPECT_TRUE(server_->CrtcRamp() == before_) << "the gamma ramp was replaced";
        EXPECT_TRUE(server_->RootProperty("_ICC_PROFILE") == displayProfile) << "the display's profile was replaced";
    }
}

}  // namespace
