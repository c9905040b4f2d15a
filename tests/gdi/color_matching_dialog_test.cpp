// SetupColorMatchingW and how the modules are found by their Windows names.
#include <icm.h>
#include <windows.h>

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

TEST_F(ColorMatchingDialogTest, TheModulesAreFoundByTheirWindowsNames) {
    struct Export {
        const wchar_t* module;
        const char* name;
    };
    for (Export e : {Export{L"Gdi32.DLL", "GetICMProfileW"}, {L"GDI32.DLL", "SetICMProfileW"},
                     {L"GDI32.DLL", "EnumICMProfilesW"}, {L"GDI32.DLL", "GetDeviceGammaRamp"},
                     {L"GDI32.DLL", "SetDeviceGammaRamp"}, {L"GDI32.DLL", "CreateDCW"},
                     {L"GDI32.DLL", "DocumentPropertiesW"}, {L"GDI32.DLL", "TeskQueryDefaultPrinterDevice"},
                     {L"User32.DLL", "EnumDisplayDevicesW"}, {L"User32.DLL", "GetMonitorInfoW"},
                     {L"ICMUI.DLL", "SetupColorMatchingW"}}) {
        HMODULE module = LoadLibraryW(e.module);
        ASSERT_NE(module, nullptr) << e.name;
        EXPECT_NE(GetProcAddress(module, e.name), nullptr) << e.name;
        FreeLibrary(module);
    }
}

}  // namespace
}  // namespace tesk::test
