// Module loading by Windows name, and string resources by the user's language.
#include <tesk/loader.h>
#include <tesk/path.h>
#include <windows.h>

#include <string>

#include "support/frame_fails_with.h"
#include "support/temp_env.h"

using tesk::test::FailsWith;

namespace {

constexpr const wchar_t* kResources = L"TeskColorMgrRC.DLL";

class LoaderTest : public ::testing::Test {
protected:
    void TearDown() override {
        tesk::loader::ClearSubstitutes();
        tesk::loader::SetObserver(nullptr);
    }
};

}  // namespace

TEST_F(LoaderTest, ModulesAreFoundByWindowsNameOrPathAndForeignHandlesRefused) {
    HMODULE upper = LoadLibraryW(L"TESKCOLORMGRRC.DLL");
    HMODULE lower = LoadLibraryW(L"teskcolormgrrc.dll");
    ASSERT_NE(upper, nullptr);
    EXPECT_EQ(upper, lower);
    EXPECT_TRUE(FreeLibrary(upper));
    EXPECT_TRUE(FreeLibrary(lower));
    EXPECT_FALSE(FreeLibrary(lower));  // freed as often as loaded

    // A path in Windows form is looked for in its folder only.
    std::string native = tesk::loader::ResolveModulePath(kResources);
    ASSERT_FALSE(native.empty());
    HMODULE byPath =
        LoadLibraryW((tesk::path::ToWindows(native.substr(0, native.rfind('/'))) + L"\\TeskColorMgrRC.DLL").c_str());
    EXPECT_NE(byPath, nullptr);
    FreeLibrary(byPath);
    SetLastError(0);
    EXPECT_TRUE(FailsWith(LoadLibraryW(L"\\nonexistent\\folder\\TeskColorMgrRC.DLL"), ERROR_MOD_NOT_FOUND));

    int notAModule = 0;
    SetLastError(0);
    EXPECT_TRUE(FailsWith(FreeLibrary(reinterpret_cast<HMODULE>(&notAModule)), ERROR_INVALID_HANDLE));
    EXPECT_EQ(GetProcAddress(reinterpret_cast<HMODULE>(&notAModule), "x"), nullptr);
}

TEST_F(LoaderTest, StringResourcesFollowTheUserLanguage) {
    HMODULE module = LoadLibraryW(kResources);
    ASSERT_NE(module, nullptr);
    wchar_t text[64];
    setenv("LC_ALL", "de_DE.UTF-8", 1);
    EXPECT_GT(LoadStringW(reinterpret_cast<HINSTANCE>(module), 10402, text, 64), 0);
    EXPECT_STREQ(text, L"ISO Coated (FOGRA39).icc");
    setenv("LC_ALL", "C", 1);
    EXPECT_EQ(LoadStringW(reinterpret_cast<HINSTANCE>(module), 10403, text, 8), 7);
    EXPECT_STREQ(text, L"SWOP Co");  // cut to the buffer, terminated
    const wchar_t* direct = nullptr;
    EXPECT_EQ(LoadStringW(reinterpret_cast<HINSTANCE>(module), 10401, reinterpret_cast<LPWSTR>(&direct), 0), 28);
    EXPECT_EQ(std::wstring(direct, 28), L"sRGB Color Space Profile.icm");
    EXPECT_EQ(LoadStringW(reinterpret_cast<HINSTANCE>(module), 999, text, 64), 0);
    unsetenv("LC_ALL");
    FreeLibrary(module);
}
