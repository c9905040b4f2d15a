// Printers named by the test: documents to the spool folder or a file.
#include <windows.h>

#include <icm.h>

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
