// Registry, text and paths of the kernel subset.
#include <tesk/path.h>
#include <windows.h>

#include <fstream>
#include <string>

#include "support/temp_env.h"

TEST(Registry, WinIniSectionsReadFromTheRegistryAndCutToTheBuffer) {
    tesk::test::TempEnvironment env;
    HKEY key = nullptr;
    ASSERT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER, L"Software\\Microsoft\\Windows NT\\CurrentVersion\\Windows", 0,
                              nullptr, 0, KEY_ALL_ACCESS, nullptr, &key, nullptr),
              ERROR_SUCCESS);
    const wchar_t text[] = L"Office,winspool,Ne01:";
    RegSetValueExW(key, L"Device", 0, REG_SZ, reinterpret_cast<const BYTE*>(text), sizeof text);
    RegCloseKey(key);
    wchar_t buffer[64];
    EXPECT_EQ(GetProfileStringW(L"windows", L"device", L"", buffer, 64), 21u);
    EXPECT_STREQ(buffer, text);
    EXPECT_EQ(GetProfileStringW(L"windows", L"device", L"", buffer, 7), 6u);
    EXPECT_STREQ(buffer, L"Office");
    EXPECT_EQ(GetProfileStringW(L"windows", L"other", L"fallback", buffer, 64), 8u);
    EXPECT_STREQ(buffer, L"fallback");
}

TEST(Text, Utf8StandsForTheAnsiCodePage) {
    const char utf8[] = "Gr\xC3\xBC\xC3\x9F \xF0\x9F\x8E\xA8";  // "Grüß 🎨"
    int needed = MultiByteToWideChar(CP_ACP, 0, utf8, -1, nullptr, 0);
    EXPECT_EQ(needed, 7);  // six characters (the emoji is one wchar_t) and the terminator
    std::wstring wide(static_cast<size_t>(needed), L'\0');
    ASSERT_EQ(MultiByteToWideChar(CP_ACP, 0, utf8, -1, wide.data(), needed), needed);
    EXPECT_EQ(wide[2], L'\u00FC');
    EXPECT_EQ(static_cast<uint32_t>(wide[5]), 0x1F3A8u);
    char back[32];
    int written = WideCharToMultiByte(CP_UTF8, 0, wide.c_str(), -1, back, sizeof back, nullptr, nullptr);
    EXPECT_EQ(written, static_cast<int>(sizeof utf8));
    EXPECT_STREQ(back, utf8);
    char tiny[3];
    EXPECT_EQ(WideCharToMultiByte(CP_UTF8, 0, wide.c_str(), -1, tiny, sizeof tiny, nullptr, nullptr), 0);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INSUFFICIENT_BUFFER));
    // A broken sequence becomes U+FFFD instead of swallowing what follows.
    EXPECT_EQ(tesk::path::Wide("a\xC3(b"), L"a\uFFFD(b");
}

TEST(Paths, WindowsFormRoundTripsAndDriveStandsForRoot) {
    EXPECT_EQ(tesk::path::ToWindows("/home/me/a b.icc"), L"\\home\\me\\a b.icc");
    EXPECT_EQ(tesk::path::ToNative(L"\\home\\me\\a b.icc"), "/home/me/a b.icc");
    EXPECT_EQ(tesk::path::ToNative(L"C:\\x\\\\y.icc"), "/x/y.icc");
    EXPECT_EQ(tesk::path::ToNative(L"/already/native"), "/already/native");
}

TEST(Paths, AtomicWriteReplacesWholeFiles) {
    tesk::test::TempEnvironment env;
    std::string file = env.Root() + "/settings";
    ASSERT_TRUE(tesk::path::WriteFileAtomically(file, "first"));
    ASSERT_TRUE(tesk::path::WriteFileAtomically(file, "second, longer"));
    std::ifstream in(file);
    std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    EXPECT_EQ(text, "second, longer");
    EXPECT_FALSE(tesk::path::WriteFileAtomically(env.Root() + "/no/such/folder/file", "x"));
}
