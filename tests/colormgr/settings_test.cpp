// Settings: defaults, what each setter writes to the settings file and which
// transforms it drops, the two commits, and start-up from a stored file in a
// fresh process.
#include <sys/wait.h>
#include <unistd.h>

#include <tesk/path.h>

#include "host/SingletonManager.h"
#include "host/VException.h"
#include "support/manager_harness.h"

using namespace colormgr_test;
using Access = CColorManagerTestAccess;

namespace {

class SettingsTest : public ManagerTest {
protected:
    CColorManager& Manager() {
        CColorManager* manager = CColorManager::Instance();
        EXPECT_NE(manager, nullptr);
        return *manager;
    }
};

// Runs `check` in a child process that has no manager yet: a new process
// starting from the settings file. Returns the child's exit status.
template <typename Check>
int InFreshProcess(Check check) {
    CSingletonManager::Instance().DestroyAll();
    pid_t child = ::fork();
    if (child == 0) {
        RegisterSettingsStoreService();
        int failures = check(*CColorManager::Instance());
        std::_Exit(failures);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : 100;
}

}  // namespace

TEST_F(SettingsTest, EverySetterPersistsItsEntry) {
    CColorManager& manager = Manager();
    manager.SetEmbeddedMode(static_cast<VCM_EMBEDDED>(2));
    CString working(L"Working.icc"), cmyk(L"Press.icc"), monitor(L"Screen.icc");
    manager.SetColorWorkingSpace(working);
    manager.SetCMYKProfile(cmyk);
    manager.SetMonitorProfile(monitor);
    auto expectInts = [](std::initializer_list<std::pair<int, int>> rows) {
        for (auto [id, expected] : rows) {
            int value = -1;
            EXPECT_TRUE(StoredInt(id, value) && value == expected) << id << ": " << value;
        }
    };
    auto expectTexts = [](std::initializer_list<std::pair<int, std::wstring>> rows) {
        for (const auto& [id, expected] : rows) {
            std::wstring text;
            EXPECT_TRUE(StoredText(id, text) && text == expected) << id;
        }
    };
    expectInts({{182, 2}});
    expectTexts({{175, L"Working.icc"}, {176, L"Press.icc"}, {172, L"Screen.icc"}});

    // SetMode keeps the mode in memory only.
    manager.SetMode(VCM_MODE_TABLES);
    EXPECT_EQ(manager.GetMode(), VCM_MODE_TABLES);
    int value = -1;
    EXPECT_FALSE(StoredInt(170, value) && value == 2);

    wchar_t printer[] = L"Printer.icc", proof[] = L"Proof.icc", same[] = L"Screen.icc";
    manager.UpdateSettings(true, true, same, printer, proof, 2, 1);
    expectInts({{170, 1}, {171, 1}, {177, 2}, {178, 1}});
    expectTexts({{173, L"Printer.icc"}, {174, L"Proof.icc"}});
    manager.UpdateSettings(1.2, 1.4, 1.8);
    for (auto [id, expected] : {std::pair{181, 1.2}, {180, 1.4}, {179, 1.8}}) {
        double gamma = 0;
        EXPECT_TRUE(StoredDouble(id, gamma)) << id;
        EXPECT_EQ(gamma, expected) << id;
    }

    // A fresh process starts from all of it.
    int failures = InFreshProcess([](CColorManager& fresh) {
        int bad = 0;
        bad += fresh.GetMode() != VCM_MODE_PROFILES;
        bad += fresh.GetEmbeddedMode() != 2;
        bad += !Access::Proof(fresh);
        bad += Access::Intent(fresh) != 2 || Access::ProofIntent(fresh) != 1;
        bad += Access::WorkingSpace(fresh) != L"Working.icc";
        bad += Access::CMYKProfile(fresh) != L"Press.icc";
        bad += Access::MonitorProfile(fresh) != L"Screen.icc";
        bad += Access::PrinterProfile(fresh) != L"Printer.icc";
        bad += Access::ProofProfile(fresh) != L"Proof.icc";
        bad += Access::Gamma(fresh, 0) != 1.2 || Access::Gamma(fresh, 1) != 1.4 || Access::Gamma(fresh, 2) != 1.8;
        return bad;
    });
    EXPECT_EQ(failures, 0);
}

TEST_F(SettingsTest, CMYKProfileChangeDropsBothCMYKTransformsOnly) {
    RecordPlatformCalls();
    CColorManager& manager = Manager();
    HTRANSFORM image = Access::ImageTransform(manager);
    ASSERT_NE(image, nullptr);
    // Stand-ins for the conversion code's cached transforms.
    Access::CMYKToRGB(manager) = reinterpret_cast<HTRANSFORM>(0x1001);
    Access::RGBToCMYK(manager) = reinterpret_cast<HTRANSFORM>(0x1002);
    CallLog().clear();
    CString cmyk(L"Other.icc");
    manager.SetCMYKProfile(cmyk);
    EXPECT_EQ(Access::CMYKToRGB(manager), nullptr);
    EXPECT_EQ(Access::RGBToCMYK(manager), nullptr);
    EXPECT_EQ(Access::ImageTransform(manager), image);
    std::vector<RecordedCall> deleted = CallsNamed("DeleteColorTransform");
    ASSERT_EQ(deleted.size(), 2u);
    EXPECT_EQ(deleted[0].handles[0], reinterpret_cast<HTRANSFORM>(0x1002)) << "RGB to CMYK goes first";
    EXPECT_EQ(deleted[1].handles[0], reinterpret_cast<HTRANSFORM>(0x1001));

    // The working space waits for UpdateWithColorWS.
    CString working(L"sRGB Color Space Profile.icm");
    manager.SetColorWorkingSpace(working);
    EXPECT_EQ(Access::ImageTransform(manager), image);
    EXPECT_TRUE(manager.UpdateWithColorWS());
    EXPECT_EQ(CallsNamed("CreateMultiProfileTransform").size(), 1u);
}

TEST_F(SettingsTest, GammaCommitChoosesTheModeAndBuildsTables) {
    CColorManager& manager = Manager();
    manager.SetMode(VCM_MODE_TABLES);
    manager.UpdateSettings(1.0, 1.0, 1.0);
    EXPECT_EQ(manager.GetMode(), VCM_MODE_OFF);
    EXPECT_EQ(Access::GammaTable(manager, 0)[200], 0) << "no tables for a neutral gamma";

    manager.UpdateSettings(1.0, 1.0, 1.0000001);
    EXPECT_EQ(manager.GetMode(), VCM_MODE_TABLES);
    EXPECT_EQ(Access::ImageTransform(manager), nullptr);
    EXPECT_EQ(Access::GammaTable(manager, 0)[200], 200);
    EXPECT_EQ(Access::GammaTable(manager, 2)[255], 255);

    manager.UpdateSettings(2.2, 1.0, 0.5);
    // 255 x (i / 255) ^ (1 / g), rounded half up.
    EXPECT_EQ(Access::GammaTable(manager, 0)[64], 136);
    EXPECT_EQ(Access::GammaTable(manager, 1)[64], 64);
    EXPECT_EQ(Access::GammaTable(manager, 2)[64], 16);
    EXPECT_EQ(Access::GammaTable(manager, 2)[0], 0);

    // Mode 1 stays, and the tables are still built.
    manager.SetMode(VCM_MODE_PROFILES);
    manager.UpdateSettings(1.0, 1.0, 1.0);
    EXPECT_EQ(manager.GetMode(), VCM_MODE_PROFILES);
    EXPECT_EQ(Access::GammaTable(manager, 2)[64], 64);
}
