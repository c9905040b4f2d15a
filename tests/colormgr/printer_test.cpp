// The default printer and its profile, start-up and printer-change events,
// and switching a printer context's colour management on and off.
#include <tesk/path.h>

#include <cstdlib>
#include <filesystem>

#include "host/SingletonManager.h"
#include "support/manager_harness.h"

using namespace colormgr_test;
using Access = CColorManagerTestAccess;

namespace {

class PrinterTest : public ManagerTest {
protected:
    void SetUp() override {
        ManagerTest::SetUp();
        // The driver of "Office" supplies a press profile from outside the colour directory.
        driverFolder_ = env_.Root() + "/driver";
        std::filesystem::create_directories(driverFolder_);
        std::filesystem::copy_file(tesk::test::DataPath("ColorProfile/ISO Coated (FOGRA39).icc"),
                                   driverFolder_ + "/Office Press.icc");
        std::string printers = "Office=" + driverFolder_ + "/Office Press.icc;Plain";
        ::setenv("TESK_TEST_PRINTERS", printers.c_str(), 1);
    }
    void InstallDriverProfile() {
        std::filesystem::copy_file(driverFolder_ + "/Office Press.icc", ColorDir() + "/Office Press.icc",
                                   std::filesystem::copy_options::overwrite_existing);
    }
    std::string driverFolder_;
};

}  // namespace

TEST_F(PrinterTest, ChoosingAPrinterTakesItsProfileAndTheDefaultIsTheDeviceValue) {
    CColorManager& manager = *CColorManager::Instance();
    manager.SetDefaultPrinterW(L"Office");
    EXPECT_EQ(Access::PrinterName(manager), L"Office");
    EXPECT_EQ(Access::PrinterProfile(manager), L"Office Press.icc");
    manager.SetDefaultPrinterW(nullptr);
    EXPECT_EQ(Access::PrinterName(manager), L"Office");
    manager.SetDefaultPrinterW(L"Nobody");
    EXPECT_EQ(Access::PrinterName(manager), L"Nobody");
    EXPECT_EQ(Access::PrinterProfile(manager), L"Office Press.icc") << "an unknown printer changes no profile";

    // The default printer is the device value before its first comma.
    EXPECT_EQ(Access::DefaultPrinterName(manager), L"Office");
    ::unsetenv("TESK_TEST_PRINTERS");
    EXPECT_EQ(Access::DefaultPrinterName(manager), L"<null>");
}

TEST_F(PrinterTest, StartUpAndPrinterChangesReadThePrinterFromTheStore) {
    InstallDriverProfile();
    WriteRgbProfile(ColorDir() + "/Monitor.icc", 2.2);
    StoreText(0, 7, L"Office");
    StoreInt(169, 171, 1);  // soft-proof on
    StoreText(169, 172, L"Monitor.icc");
    CColorManager& manager = *CColorManager::Instance();
    EXPECT_EQ(Access::PrinterName(manager), L"Office");
    EXPECT_EQ(Access::PrinterProfile(manager), L"Office Press.icc");
    EXPECT_EQ(Access::ProofProfile(manager), L"Office Press.icc");
    EXPECT_NE(Access::ImageTransform(manager), nullptr) << "the printer's profile is the proof";

    StoreText(0, 7, L"Plain");
    CColorManager::EventHandler(nullptr, 41, &manager);
    EXPECT_EQ(Access::PrinterName(manager), L"Office") << "other events are ignored";
    CColorManager::EventHandler(nullptr, 42, &manager);
    EXPECT_EQ(Access::PrinterName(manager), L"Plain");
    // The plain printer has no profile of its own.
    EXPECT_NE(Access::ProofProfile(manager), L"Office Press.icc");
}
