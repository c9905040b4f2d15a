// CUPS printers under a scheduler started by the test.
#include <windows.h>

#include <icm.h>
#include <tesk/path.h>

#include <filesystem>
#include <memory>

#include "gdi_test_support.h"
#include "ppd_profiles.h"
#include "support/cups_server.h"

namespace tesk::test {
namespace {

class CupsPrinterTest : public GdiTest {
protected:
    void SetUp() override {
        GdiTest::SetUp();
        unsetenv("TESK_TEST_PRINTERS");  // the printers are CUPS' now
        server_ = std::make_unique<CupsServer>();
        if (!server_->Running()) GTEST_SKIP() << "CUPS is not available";
        profile_ = env_.Root() + "/printer.icc";
        WriteRgbProfile(profile_, 2.2);
        ASSERT_TRUE(server_->AddQueue("Office", "", false));
        ASSERT_TRUE(server_->AddQueue("Proofer", profile_, true));
    }
    void TearDown() override {
        server_.reset();
        GdiTest::TearDown();
    }
    std::unique_ptr<CupsServer> server_;
    std::string profile_;
};

TEST_F(CupsPrinterTest, TheDefaultDestinationIsTheDefaultPrinter) {
    WCHAR name[64] = {};
    DWORD size = 64;
    ASSERT_TRUE(GetDefaultPrinterW(name, &size));
    EXPECT_EQ(std::wstring(name), L"Proofer");
    WCHAR device[520] = {};
    ASSERT_GT(GetProfileStringW(L"windows", L"device", L"", device, 520), 0u);
    EXPECT_EQ(std::wstring(device),
              L"Proofer,Tesk Test Printer," + path::Wide("file://" + server_->OutputOf("Proofer")));

    LPWSTR office = const_cast<LPWSTR>(L"Office");
    EXPECT_EQ(DocumentPropertiesW(nullptr, nullptr, office, nullptr, nullptr, 0), LONG(sizeof(DEVMODEW)));
    EXPECT_EQ(DocumentPropertiesW(nullptr, nullptr, const_cast<LPWSTR>(L"Nowhere"), nullptr, nullptr, 0), -1);
}

TEST_F(CupsPrinterTest, APrintersProfileComesFromItsPpd) {
    HDC proofer = CreateDCW(nullptr, L"Proofer", nullptr, nullptr);
    ASSERT_NE(proofer, nullptr);
    WCHAR name[MAX_PATH] = {};
    DWORD size = MAX_PATH;
    ASSERT_TRUE(GetICMProfileW(proofer, &size, name));
    EXPECT_EQ(path::ToNative(name), profile_);
    DeleteDC(proofer);

    HDC office = CreateDCW(nullptr, L"Office", nullptr, nullptr);
    size = MAX_PATH;
    EXPECT_TRUE(FailsWith(GetICMProfileW(office, &size, name), ERROR_PROFILE_NOT_FOUND));
    DeleteDC(office);
}

TEST(PpdProfileTest, TheDefaultColourModelsProfileIsChosen) {
    printers::PpdColorInfo info = printers::ParsePpdColorInfo(
        "*PPD-Adobe: \"4.3\"\r\n*cupsICCProfile Gray../Grey: \"gray.icc\"\r\n"
        "*cupsICCProfile RGB.Glossy.600dpi/Colour: \"/abs/rgb.icc\"\r\n*DefaultColorModel: RGB\r\n"
        "*cupsICCProfileX ignored: \"x.icc\"\n*cupsICCProfile broken");
    ASSERT_EQ(info.profiles.size(), 2u);
    EXPECT_EQ(info.profiles[0].qualifiers, "Gray..");
    EXPECT_EQ(info.defaultColorModel, "RGB");
    EXPECT_EQ(printers::ChoosePpdProfile(info, "/cups/profiles"), "/abs/rgb.icc");
    info.defaultColorModel = "CMYK";
    EXPECT_EQ(printers::ChoosePpdProfile(info, "/cups/profiles"), "/cups/profiles/gray.icc");
    EXPECT_EQ(printers::ChoosePpdProfile(printers::ParsePpdColorInfo(""), "/p"), "");
}

}  // namespace
}  // namespace tesk::test
