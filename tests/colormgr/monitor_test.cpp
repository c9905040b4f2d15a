// The monitor: discovery on the virtual display, the device string for
// associations, and the gamma ramp loaded from a profile's vcgt tag, saved
// and restored.
#include <tesk/loader.h>
#include <tesk/path.h>

#include <filesystem>

#include "host/SingletonManager.h"
#include "support/manager_harness.h"

using namespace colormgr_test;
using Access = CColorManagerTestAccess;

namespace {

class MonitorTest : public ManagerTest {
protected:
    CColorManager& StartRecorded() {
        RecordPlatformCalls();
        CColorManager* manager = CColorManager::Instance();
        CallLog().clear();
        return *manager;
    }
    static std::vector<RecordedCall> RampsSet() { return CallsNamed("SetDeviceGammaRamp"); }
};

}  // namespace

TEST_F(MonitorTest, TheMonitorsCalibrationReachesTheDisplayAndIsRestoredAtTheEnd) {
    const std::vector<uint16_t> original = DisplayRamp();
    const std::vector<uint16_t> calibration = TestRamp(256, 900);
    WriteRgbProfile(ColorDir() + "/Calibrated.icc", 2.2, calibration);

    CColorManager& manager = StartRecorded();
    HWND noWindow = nullptr;
    ASSERT_TRUE(manager.SaveOriginialDeviceGammaRamp(noWindow));
    ASSERT_NE(Access::SavedRamp(manager), nullptr);
    EXPECT_TRUE(std::equal(original.begin(), original.end(), Access::SavedRamp(manager)));

    CString monitor(L"Calibrated.icc");
    manager.SetMonitorProfile(monitor);
    EXPECT_NE(Access::ImageTransform(manager), nullptr);
    EXPECT_EQ(DisplayRamp(), calibration);
    EXPECT_EQ(RampsSet().size(), 1u) << "a 3 x 256 table is set directly";

    CallLog().clear();
    CSingletonManager::Instance().DestroyAll();
    EXPECT_EQ(DisplayRamp(), original);
    EXPECT_EQ(RampsSet().size(), 1u);
}

// A table, or a count, other than 3 x 256 sets the saved ramp first.
TEST_F(MonitorTest, ATableOfAnotherSizeSetsTheSavedRampFirst) {
    const std::vector<uint16_t> original = DisplayRamp();
    const std::vector<uint16_t> small = TestRamp(16, 100);
    WriteRgbProfile(ColorDir() + "/Small.icc", 2.2, small);

    CColorManager& manager = StartRecorded();
    HWND noWindow = nullptr;
    ASSERT_TRUE(manager.SaveOriginialDeviceGammaRamp(noWindow));
    CString monitor(L"Small.icc");
    manager.SetMonitorProfile(monitor);
    std::vector<RecordedCall> set = RampsSet();
    ASSERT_EQ(set.size(), 2u);
    EXPECT_EQ(set[0].ramp, original);
    // The second ramp is the table's 48 values, then zeros: the display
    // refuses such a ramp and keeps the saved one.
    EXPECT_TRUE(std::equal(small.begin(), small.end(), set[1].ramp.begin()));
    EXPECT_EQ(set[1].ramp[small.size()], 0);
    EXPECT_EQ(DisplayRamp(), original);

    CallLog().clear();
    std::vector<uint16_t> ramp = TestRamp(256, 500);
    EXPECT_TRUE(manager.SetDeviceGammaRampFromVCGT(nullptr, ramp.data(), 256, false));
    set = RampsSet();
    ASSERT_EQ(set.size(), 2u);
    EXPECT_EQ(set[0].ramp, std::vector<uint16_t>(Access::SavedRamp(manager), Access::SavedRamp(manager) + 768));
    EXPECT_EQ(set[1].ramp, ramp);
    EXPECT_EQ(DisplayRamp(), ramp);

    // Without a saved ramp only the given one is set.
    CSingletonManager::Instance().DestroyAll();
    CColorManager& fresh = *CColorManager::Instance();
    CallLog().clear();
    EXPECT_TRUE(fresh.SetDeviceGammaRampFromVCGT(nullptr, ramp.data(), 256, false));
    EXPECT_EQ(RampsSet().size(), 1u);
    EXPECT_FALSE(fresh.SetDeviceGammaRampFromVCGT(nullptr, nullptr, 768, false));
}

// Restored once, on request or by a monitor profile without a table.
TEST_F(MonitorTest, ASavedRampIsRestoredOnlyOnce) {
    WriteRgbProfile(ColorDir() + "/Plain.icc", 2.2);
    CColorManager& manager = StartRecorded();
    HWND noWindow = nullptr;
    EXPECT_FALSE(manager.SetDeviceGammaRampFromVCGT(nullptr, nullptr, 0, true)) << "nothing saved yet";
    EXPECT_TRUE(RampsSet().empty());

    const std::vector<uint16_t> original = DisplayRamp();
    ASSERT_TRUE(manager.SaveOriginialDeviceGammaRamp(noWindow));
    std::vector<uint16_t> ramp = TestRamp(256, 300);
    ASSERT_TRUE(manager.SetDeviceGammaRampFromVCGT(nullptr, ramp.data(), 768, false));
    EXPECT_EQ(DisplayRamp(), ramp);
    EXPECT_TRUE(manager.SetDeviceGammaRampFromVCGT(nullptr, nullptr, 0, true));
    EXPECT_EQ(DisplayRamp(), original);
    EXPECT_EQ(Access::SavedRamp(manager), nullptr);
    EXPECT_FALSE(manager.SetDeviceGammaRampFromVCGT(nullptr, nullptr, 0, true));
    EXPECT_EQ(RampsSet().size(), 2u);

    ASSERT_TRUE(manager.SaveOriginialDeviceGammaRamp(noWindow));
    ASSERT_TRUE(manager.SetDeviceGammaRampFromVCGT(nullptr, TestRamp(256, 700).data(), 768, false));
    CString plain(L"Plain.icc");
    manager.SetMonitorProfile(plain);
    EXPECT_EQ(DisplayRamp(), original);
    EXPECT_EQ(Access::SavedRamp(manager), nullptr);

    CallLog().clear();
    CSingletonManager::Instance().DestroyAll();
    EXPECT_TRUE(RampsSet().empty()) << "nothing left to restore at the end";
}

TEST_F(MonitorTest, DiscoveryFindsTheVirtualAdapterAndMonitorThroughUser32) {
    CColorManager& manager = *CColorManager::Instance();
    EXPECT_EQ(Access::AdapterName(manager), L"\\\\.\\DISPLAY1");
    EXPECT_EQ(Access::MonitorID(manager).rfind(L"MONITOR\\", 0), 0u) << tesk::path::Utf8(Access::MonitorID(manager));
    // The display's profile is held as a bare file name.
    std::wstring profile = Access::MonitorProfile(manager);
    EXPECT_FALSE(profile.empty());
    EXPECT_EQ(profile.find(L'\\'), std::wstring::npos);
    EXPECT_TRUE(Access::GetDisplayMonitorInfo(manager));

    tesk::loader::Substitute user32;
    user32.hidden.insert("EnumDisplayDevicesW");
    tesk::loader::SetSubstitute(L"User32.DLL", user32);
    EXPECT_FALSE(Access::GetDisplayMonitorInfo(manager));
}

TEST_F(MonitorTest, AssociateAndDisassociateWithTheMonitor) {
    WriteRgbProfile(ColorDir() + "/Assoc.icc", 2.2);
    CColorManager& manager = *CColorManager::Instance();
    HWND noWindow = nullptr;
    ASSERT_TRUE(manager.AssociateMonitorProfile(L"Assoc.icc", noWindow));
    EXPECT_TRUE(manager.DisassociateAllMonitorProfiles(noWindow));
    EXPECT_FALSE(manager.DisassociateAllMonitorProfiles(noWindow)) << "nothing left to disassociate";
    EXPECT_FALSE(manager.DisassociateMonitorProfile(L"Assoc.icc", noWindow));
}

TEST_F(MonitorTest, EnumerationCallbackKeepsFileNamesOnly) {
    std::vector<CString> names;
    wchar_t full[] = L"D:\\dir\\a.icm", bare[] = L"a.icm";
    EXPECT_EQ(Access::EnumCallback(full, names), 1);
    EXPECT_EQ(Access::EnumCallback(bare, names), 1);
    EXPECT_EQ(names, (std::vector<CString>{L"a.icm", L"a.icm"}));
}

TEST_F(MonitorTest, ARealMonitorProfilesCalibrationLoadsDespiteItsDroppedLastValue) {
    const std::string bluish = "/usr/share/color/icc/colord/Bluish.icc";
    if (!std::filesystem::exists(bluish)) GTEST_SKIP() << "colord-data is not installed";
    std::filesystem::copy_file(bluish, ColorDir() + "/Bluish.icc");
    CColorManager* manager = CColorManager::Instance();
    CString monitor(L"Bluish.icc");
    manager->SetMonitorProfile(monitor);
    const std::vector<uint16_t> ramp = DisplayRamp();
    // A bluish calibration lifts blue over red through the mid tones; the
    // table's last value reads as zero, which the display takes.
    EXPECT_GT(ramp[512 + 128], ramp[128]);
    EXPECT_EQ(ramp[767], 0);
}
