// Printers named by the test: device contexts, device modes, documents.
#include <icm.h>
#include <tesk/path.h>
#include <windows.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "gdi_test_support.h"

namespace tesk::test {
namespace {

using PrinterTest = GdiTest;

size_t Count(const std::string& text, const std::string& what) {
    size_t n = 0;
    for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) ++n;
    return n;
}

TEST_F(PrinterTest, NoPrintersUnlessSomeAreNamed) {
    DWORD size = 0;
    EXPECT_TRUE(FailsWith(GetDefaultPrinterW(nullptr, &size), ERROR_FILE_NOT_FOUND));
    EXPECT_TRUE(FailsWith(CreateDCW(nullptr, L"Office", nullptr, nullptr), ERROR_INVALID_PRINTER_NAME));
    EXPECT_EQ(DocumentPropertiesW(nullptr, nullptr, const_cast<LPWSTR>(L"Office"), nullptr, nullptr, 0), -1);
}

TEST_F(PrinterTest, TheFirstPrinterIsTheDefaultUntilAnotherIsChosen) {
    UsePrinters("Office;Lab Proofer");
    WCHAR name[64] = {};
    DWORD size = 3;
    EXPECT_FALSE(GetDefaultPrinterW(name, &size));
    EXPECT_EQ(size, 7u);
    ASSERT_TRUE(GetDefaultPrinterW(name, &size));
    EXPECT_EQ(std::wstring(name), L"Office");
    WCHAR device[128] = {};
    ASSERT_TRUE(TeskQueryDefaultPrinterDevice(device, 128));
    EXPECT_EQ(std::wstring(device).substr(0, 7), L"Office,");

    ASSERT_TRUE(SetDefaultPrinterW(L"lab proofer"));
    size = 64;
    ASSERT_TRUE(GetDefaultPrinterW(name, &size));
    EXPECT_EQ(std::wstring(name), L"Lab Proofer");
    EXPECT_TRUE(FailsWith(SetDefaultPrinterW(L"Nowhere"), ERROR_INVALID_PRINTER_NAME));
}

TEST_F(PrinterTest, DeviceModesShapeThePrinterContext) {
    UsePrinters("Office");
    LPWSTR name = const_cast<LPWSTR>(L"Office");
    LONG size = DocumentPropertiesW(nullptr, nullptr, name, nullptr, nullptr, 0);
    ASSERT_EQ(size, LONG(sizeof(DEVMODEW)));
    std::vector<uint8_t> buffer(size_t(size) * 2);
    auto* mode = reinterpret_cast<DEVMODEW*>(buffer.data());
    ASSERT_EQ(DocumentPropertiesW(nullptr, nullptr, name, mode, nullptr, DM_OUT_BUFFER), IDOK);
    EXPECT_EQ(std::wstring(mode->dmDeviceName), L"Office");
    EXPECT_EQ(mode->dmOrientation, DMORIENT_PORTRAIT);

    HDC portrait = CreateDCW(nullptr, name, nullptr, mode);
    ASSERT_NE(portrait, nullptr);
    EXPECT_EQ(GetDeviceCaps(portrait, TECHNOLOGY), DT_RASPRINTER);
    int dpi = GetDeviceCaps(portrait, LOGPIXELSY);
    EXPECT_EQ(GetDeviceCaps(portrait, HORZRES), 210 * dpi * 10 / 254);  // A4
    EXPECT_EQ(GetDeviceCaps(portrait, HORZSIZE), 210);
    EXPECT_FALSE(GetDeviceGammaRamp(portrait, buffer.data()));

    mode->dmFields = DM_ORIENTATION;
    mode->dmOrientation = DMORIENT_LANDSCAPE;
    HDC landscape = CreateDCW(nullptr, name, nullptr, mode);
    EXPECT_EQ(GetDeviceCaps(landscape, HORZRES), GetDeviceCaps(portrait, VERTRES));
    DeleteDC(landscape);
    DeleteDC(portrait);
}

TEST_F(PrinterTest, APrinterContextsProfileComesFromAssociationsElseItsDriver) {
    std::string driverProfile = env_.Root() + "/driver.icc";
    WriteRgbProfile(driverProfile, 2.2);
    UsePrinters("Office=" + driverProfile);
    HDC dc = CreateDCW(nullptr, L"Office", nullptr, nullptr);
    ASSERT_NE(dc, nullptr);
    WCHAR name[MAX_PATH] = {};
    DWORD size = MAX_PATH;
    ASSERT_TRUE(GetICMProfileW(dc, &size, name));
    EXPECT_EQ(std::wstring(name), path::ToWindows(driverProfile));

    std::string installed = env_.Root() + "/office.icc";
    WriteSrgbProfile(installed);
    ASSERT_TRUE(InstallColorProfileW(nullptr, Wide(installed).c_str()));
    ASSERT_TRUE(AssociateColorProfileWithDeviceW(nullptr, L"office.icc", L"Office"));
    size = MAX_PATH;
    ASSERT_TRUE(GetICMProfileW(dc, &size, name));
    EXPECT_EQ(std::filesystem::path(path::ToNative(name)).filename(), "office.icc");
    DeleteDC(dc);
}

TEST_F(PrinterTest, ADocumentReachesThePrinterAsAPdfWithOnePagePerPage) {
    UsePrinters("Office");
    HDC dc = CreateDCW(nullptr, L"Office", nullptr, nullptr);
    EXPECT_EQ(StartPage(dc), SP_ERROR);  // no document yet
    DOCINFOW info{sizeof(DOCINFOW), L"Two pages", nullptr, nullptr, 0};
    ASSERT_GT(StartDocW(dc, &info), 0);
    EXPECT_EQ(StartDocW(dc, &info), SP_ERROR);
    for (int page = 0; page < 2; ++page) {
        ASSERT_GT(StartPage(dc), 0);
        EXPECT_TRUE(BitBlt(dc, 10, 10, 20, 20, nullptr, 0, 0, BLACKNESS));
        EXPECT_EQ(GetPixel(dc, 15, 15), RGB(0, 0, 0));
        EXPECT_EQ(GetPixel(dc, 5, 5), RGB(255, 255, 255));  // pages start white
        ASSERT_GT(EndPage(dc), 0);
    }
    EXPECT_EQ(GetPixel(dc, 15, 15), CLR_INVALID);  // between pages there is nothing to draw on
    ASSERT_GT(EndDoc(dc), 0);
    DeleteDC(dc);

    std::vector<std::filesystem::path> jobs;
    for (const auto& entry : std::filesystem::directory_iterator(SpoolDir())) jobs.push_back(entry.path());
    ASSERT_EQ(jobs.size(), 1u);
    EXPECT_EQ(jobs[0].filename().string().rfind("Office-", 0), 0u);
    std::string pdf = ReadText(jobs[0].string());
    EXPECT_EQ(pdf.rfind("%PDF-1.4", 0), 0u);
    EXPECT_EQ(Count(pdf, "/Type /Page "), 2u);
    EXPECT_NE(pdf.find("/Title (Two pages)"), std::string::npos);
    EXPECT_NE(pdf.find("%%EOF"), std::string::npos);
}

TEST_F(PrinterTest, AnOutputFileTakesTheDocumentAndAbortLeavesNothing) {
    UsePrinters("Office");
    HDC dc = CreateDCW(nullptr, L"Office", nullptr, nullptr);
    std::string output = env_.Root() + "/out.pdf";
    std::wstring outputName = Wide(output);
    DOCINFOW info{sizeof(DOCINFOW), L"To file", outputName.c_str(), nullptr, 0};
    ASSERT_GT(StartDocW(dc, &info), 0);
    ASSERT_GT(StartPage(dc), 0);
    ASSERT_GT(EndDoc(dc), 0);  // ends the open page too
    EXPECT_EQ(Count(ReadText(output), "/Type /Page "), 1u);
    EXPECT_FALSE(std::filesystem::exists(SpoolDir()));

    std::string aborted = env_.Root() + "/aborted.pdf";
    std::wstring abortedName = Wide(aborted);
    DOCINFOW second{sizeof(DOCINFOW), L"Aborted", abortedName.c_str(), nullptr, 0};
    ASSERT_GT(StartDocW(dc, &second), 0);
    ASSERT_GT(StartPage(dc), 0);
    ASSERT_GT(AbortDoc(dc), 0);
    EXPECT_FALSE(std::filesystem::exists(aborted));
    EXPECT_EQ(EndDoc(dc), SP_ERROR);
    DeleteDC(dc);

    HDC display = CreateDCW(L"DISPLAY", nullptr, nullptr, nullptr);
    EXPECT_EQ(StartDocW(display, &info), SP_ERROR);  // displays do not print
    DeleteDC(display);
}

}  // namespace
}  // namespace tesk::test
