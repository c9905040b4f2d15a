// SetupColorMatchingW without a display and with malformed records.
#include <windows.h>

#include <icm.h>

#include "gdi_test_support.h"

namespace tesk::test {
namespace {

using ColorMatchingDialogTest = GdiTest;

COLORMATCHSETUPW Record(WCHAR* monitor) {
    COLORMATCHSETUPW setup{};
    setup.dwSize = sizeof setup;
    setup.dwVersion = COLOR_MATCH_VERSION;
    setup.dwFlags = CMS_SETMONITORPROFILE;
    setup.pMonitorProfile = monitor;
    setup.ccMonitorProfile = MAX_PATH;
    return setup;
}

TEST_F(ColorMatchingDialogTest, WithoutADisplayTheCallFailsWithAnErrorAndChangesNothing) {
    static_assert(sizeof(COLORMATCHSETUPW) == 136);
    WCHAR monitor[MAX_PATH] = L"mine.icc";
    COLORMATCHSETUPW setup = Record(monitor);
    SetLastError(0);
    EXPECT_TRUE(FailsWith(SetupColorMatchingW(&setup), ERROR_NOT_SUPPORTED));
    EXPECT_EQ(std::wstring(monitor), L"mine.icc");
    EXPECT_EQ(setup.dwFlags, DWORD(CMS_SETMONITORPROFILE));
}

TEST_F(ColorMatchingDialogTest, MalformedRecordsAreRefused) {
    WCHAR monitor[MAX_PATH] = {};
    COLORMATCHSETUPW setup = Record(monitor);
    setup.dwSize = 100;
    EXPECT_TRUE(FailsWith(SetupColorMatchingW(&setup), ERROR_INVALID_PARAMETER));
    EXPECT_TRUE(FailsWith(SetupColorMatchingW(nullptr), ERROR_INVALID_PARAMETER));
}

}  // namespace
}  // namespace tesk::test
