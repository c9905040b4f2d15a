// Module loading by Windows name, and the substitutes tests rely on.
#include <tesk/loader.h>
#include <tesk/path.h>
#include <windows.h>

#include <string>
#include <vector>

#include "support/frame_fails_with.h"
#include "support/temp_env.h"

using tesk::test::FailsWith;

namespace {

constexpr const wchar_t* kResources = L"TeskColorMgrRC.DLL";

INT_PTR WINAPI FakeExport() { return 42; }

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

TEST_F(LoaderTest, SubstitutesHideOverrideOrRemoveExports) {
    HMODULE module = LoadLibraryW(kResources);
    ASSERT_NE(module, nullptr);
    EXPECT_NE(GetProcAddress(module, "TeskResourceStringTables"), nullptr);

    tesk::loader::Substitute substitute;
    substitute.hidden.insert("TeskResourceStringTables");
    substitute.overrides["Invented"] = reinterpret_cast<FARPROC>(&FakeExport);
    tesk::loader::SetSubstitute(L"teskcolormgrrc.dll", substitute);
    // A substitute applies to handles already open: it stands for the module.
    SetLastError(0);
    EXPECT_TRUE(FailsWith(GetProcAddress(module, "TeskResourceStringTables"), ERROR_PROC_NOT_FOUND));
    FARPROC invented = GetProcAddress(module, "Invented");
    ASSERT_NE(invented, nullptr);
    EXPECT_EQ(invented(), 42);
    EXPECT_NE(tesk::loader::RealProcAddress(kResources, "TeskResourceStringTables"), nullptr);

    tesk::loader::Substitute missing;
    missing.missing = true;
    tesk::loader::SetSubstitute(kResources, missing);
    EXPECT_TRUE(FailsWith(LoadLibraryW(kResources), ERROR_MOD_NOT_FOUND));
    FreeLibrary(module);
}

TEST_F(LoaderTest, ObserverSeesEveryLoadAndFree) {
    std::vector<std::string> calls;
    tesk::loader::SetObserver([&](const char* call, const std::wstring& name, bool ok) {
        calls.push_back(std::string(call) + ":" + tesk::path::Utf8(name) + (ok ? ":ok" : ":failed"));
    });
    HMODULE module = LoadLibraryW(kResources);
    LoadLibraryW(L"NOSUCH.DLL");
    FreeLibrary(module);
    ASSERT_EQ(calls.size(), 3u);
    EXPECT_EQ(calls[0], "load:TeskColorMgrRC.DLL:ok");
    EXPECT_EQ(calls[1], "load:NOSUCH.DLL:failed");
    EXPECT_EQ(calls[2], "free:TESKCOLORMGRRC.DLL:ok");
}

TEST_F(LoaderTest, ExecutableFileNameComesInWindowsFormAndIsCutToTheBuffer) {
    wchar_t name[1024];
    DWORD length = GetModuleFileNameW(nullptr, name, 1024);
    ASSERT_GT(length, 0u);
    std::wstring path(name, length);
    EXPECT_EQ(path.find(L'/'), std::wstring::npos);
    EXPECT_EQ(path.substr(path.rfind(L'\\') + 1), L"frame_tests");

    wchar_t small[5];
    EXPECT_EQ(GetModuleFileNameW(nullptr, small, 5), 5u);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INSUFFICIENT_BUFFER));
    EXPECT_EQ(small[4], L'\0');
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
