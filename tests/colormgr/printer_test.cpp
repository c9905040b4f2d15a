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

TEST_F(PrinterTest, AContextsProfileIsItsFileNameAlone) {
    CColorManager& manager = *CColorManager::Instance();
    HDC dc = GdiCreateDC(nullptr, L"Office");
    ASSERT_NE(dc, nullptr);
    EXPECT_EQ(Access::DefaultICMProfile(manager, dc), L"Office Press.icc");
    std::wstring elsewhere = tesk::path::ToWindows(driverFolder_ + "/Office Press.icc");
    ASSERT_TRUE(GdiSetICMProfile(dc, elsewhere));
    EXPECT_EQ(Access::DefaultICMProfile(manager, dc), L"Office Press.icc");
    GdiDeleteDC(dc);
}

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

TEST_F(PrinterTest, SetupAndCleanupActOnlyInProfileMode) {
    InstallDriverProfile();
    CColorManager& manager = *CColorManager::Instance();
    manager.SetDefaultPrinterW(L"Office");
    HDC dc = GdiCreateDC(nullptr, L"Plain");
    ASSERT_NE(dc, nullptr);
    const std::wstring before = GdiICMProfile(dc);

    manager.SetMode(VCM_MODE_TABLES);
    EXPECT_FALSE(manager.SetupDC(dc));
    EXPECT_EQ(GdiICMProfile(dc), before);
    GdiICMMode(dc, ICM_ON);
    manager.CleanupDC(dc);
    EXPECT_EQ(GdiICMMode(dc, ICM_QUERY), ICM_ON) << "cleanup leaves other modes' contexts alone";

    manager.SetMode(VCM_MODE_PROFILES);
    GdiICMMode(dc, ICM_OFF);
    ASSERT_TRUE(manager.SetupDC(dc));
    EXPECT_EQ(GdiICMMode(dc, ICM_QUERY), ICM_ON);
    std::wstring profile = GdiICMProfile(dc);
    EXPECT_EQ(profile, tesk::path::ToWindows(ColorDir()) + L"\\Office Press.icc");
    manager.CleanupDC(dc);
    EXPECT_EQ(GdiICMMode(dc, ICM_QUERY), ICM_OFF);
    GdiDeleteDC(dc);
}

TEST_F(PrinterTest, RegistryStringsOfAtMostOneByteAreEmpty) {
    CColorManager& manager = *CColorManager::Instance();
    HKEY key = nullptr;
    ASSERT_EQ(::RegCreateKeyExW(HKEY_CURRENT_USER, L"Software\\TeskTest", 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                                &key, nullptr),
              ERROR_SUCCESS);
    const BYTE one[1] = {'x'};
    ::RegSetValueExW(key, L"Empty", 0, REG_SZ, one, 0);
    ::RegSetValueExW(key, L"One", 0, REG_SZ, one, 1);
    const wchar_t text[] = L"Printer";
    ::RegSetValueExW(key, L"Text", 0, REG_SZ, reinterpret_cast<const BYTE*>(text), sizeof(text));
    ::RegCloseKey(key);
    EXPECT_EQ(Access::RegistryString(manager, HKEY_CURRENT_USER, L"Software\\TeskTest", L"Empty"), L"<null>");
    EXPECT_EQ(Access::RegistryString(manager, HKEY_CURRENT_USER, L"Software\\TeskTest", L"One"), L"<null>");
    EXPECT_EQ(Access::RegistryString(manager, HKEY_CURRENT_USER, L"Software\\TeskTest", L"Text"), L"Printer");
    EXPECT_EQ(Access::RegistryString(manager, HKEY_CURRENT_USER, L"Software\\Missing", L"Text"), L"<null>");
}
