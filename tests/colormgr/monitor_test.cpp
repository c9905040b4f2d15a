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
