// The module's entry: its resource library is found through the language
// service while the module loads, and a missing one is survived.
#include <tesk/loader.h>
#include <tesk/path.h>

#include "host/ConnectLanguage.h"
#include "module/Entry.h"
#include "support/temp_env.h"

TEST(ModuleEntry, ResourceLibraryIsLinkedAtLoad) {
    CString name;
    ASSERT_TRUE(name.LoadString(10401));
    EXPECT_EQ(name, L"sRGB Color Space Profile.icm");
    ASSERT_TRUE(name.LoadString(10403));
    EXPECT_EQ(name, L"SWOP Coated (TR003).icc");
    HMODULE resources = TeskColorMgrExtension().hResource;
    ASSERT_NE(resources, nullptr);
    EXPECT_NE(resources, TeskColorMgrExtension().hModule);
    // Loaders look the entry up by its plain name.
    EXPECT_NE(GetProcAddress(TeskColorMgrExtension().hModule, "DllMain"), nullptr);

    wchar_t own[520];
    ASSERT_GT(GetModuleFileNameW(TeskColorMgrExtension().hModule, own, 520), 0u);
    EXPECT_EQ(CConnectLanguage::Instance().GetModuleResource(CString(own)), resources);
}

TEST(LanguageService, ResourceLibrariesAreLookedForBesideTheHostLibraries) {
    // Platform modules found elsewhere do not move the language folder.
    tesk::test::TempEnvironment env;
    tesk::test::WriteBytes(env.Root() + "/mscms.so", {});
    setenv("TESK_MODULE_PATH", env.Root().c_str(), 1);
    CString folder = CConnectLanguage::Instance().GetPath();
    unsetenv("TESK_MODULE_PATH");
    HMODULE resources = LoadLibraryW(folder + L"\\TeskColorMgrRC.DLL");
    EXPECT_NE(resources, nullptr) << tesk::path::Utf8(folder.GetString());
    if (resources) FreeLibrary(resources);
}
