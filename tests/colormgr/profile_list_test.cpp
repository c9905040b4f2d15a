// The setup lists and their cursors, install/uninstall, name resolution with
// fallbacks, defaults by language and the profile comparisons.
#include <tesk/path.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>

#include "host/ConnectLanguage.h"
#include "host/SingletonManager.h"
#include "support/manager_harness.h"

using namespace colormgr_test;
using Access = CColorManagerTestAccess;

namespace {

class ProfileListTest : public ManagerTest {
protected:
    void SetUp() override {
        ManagerTest::SetUp();
        CColorManager::Instance();  // seeds the colour directory with the platform's sRGB profile
        CSingletonManager::Instance().DestroyAll();
        RegisterSettingsStoreService();
    }
};

class LanguageContext : public ICommandExecutionContext {
public:
    CConnectLanguage* GetLanguage() override { return &CConnectLanguage::Instance(); }
};

std::set<std::string> Walk(CColorManager& manager, bool cmyk) {
    std::set<std::string> titles;
    if (!(cmyk ? manager.GetFirstCMYKProfile() : manager.GetFirstProfile())) return titles;
    for (;;) {
        std::string title;
        bool more = cmyk ? manager.GetCMYKNextProfile(title) : manager.GetNextProfile(title);
        if (!title.empty()) titles.insert(title);
        if (!more) break;
    }
    return titles;
}

}  // namespace

TEST_F(ProfileListTest, ListsHoldPlainFilesOfTheirClassOnly) {
    WriteRgbProfile(ColorDir() + "/Gamma22.icc", 2.2);
    InstallPressProfile("ISO Coated (FOGRA39).icc", "Press.icc");
    std::ofstream(ColorDir() + "/notes.txt") << "not a profile";
    std::filesystem::create_directories(ColorDir() + "/drivers");
    WriteRgbProfile(ColorDir() + "/drivers/Hidden.icc", 2.2);

    CColorManager& manager = *CColorManager::Instance();
    CString directory;
    manager.GetColorDirectoryW(directory, false);
    EXPECT_EQ(directory.Str(), tesk::path::ToWindows(ColorDir()));
    EXPECT_EQ(Walk(manager, false), (std::set<std::string>{"sRGB Color Space Profile", "Gamma22"}));
    EXPECT_EQ(Walk(manager, true), (std::set<std::string>{"Press"}));

    std::string fileName;
    CString title(L"sRGB Color Space Profile");
    ASSERT_TRUE(manager.GetProfileName(title, fileName));
    EXPECT_EQ(fileName, "sRGB Color Space Profile.icm");
    CString otherCase(L"SRGB Color Space Profile");
    EXPECT_FALSE(manager.GetProfileName(otherCase, fileName));
    CString press(L"Press");
    ASSERT_TRUE(manager.GetCMYKProfileName(press, fileName));
    EXPECT_EQ(fileName, "Press.icc");
}

TEST_F(ProfileListTest, CursorHandsOutTheLastEntryWithFalse) {
    InstallPressProfile("ISO Coated (FOGRA39).icc", "Press.icc");
    CColorManager& manager = *CColorManager::Instance();
    ASSERT_TRUE(manager.GetFirstCMYKProfile());
    std::string title;
    EXPECT_FALSE(manager.GetCMYKNextProfile(title));
    EXPECT_EQ(title, "Press");
    title = "untouched";
    EXPECT_FALSE(manager.GetCMYKNextProfile(title));
    EXPECT_EQ(title, "untouched");

    // A second walk restarts at the first entry without rescanning.
    WriteRgbProfile(ColorDir() + "/Later.icc", 2.2);
    InstallPressProfile("SWOP Coated (TR003).icc", "Later Press.icc");
    EXPECT_EQ(Walk(manager, true), (std::set<std::string>{"Press"}));
    ASSERT_TRUE(manager.GetSetupCMYKProfileList());
    EXPECT_EQ(Walk(manager, true), (std::set<std::string>{"Press", "Later Press"}));
}

TEST_F(ProfileListTest, InstallNeedsTheBoundPlatformAndTitleLookupABuiltList) {
    CColorManager* manager = new CColorManager();  // not started: nothing bound
    EXPECT_FALSE(manager->InstallColorProfileW(L"x.icc"));
    EXPECT_FALSE(manager->UninstallColorProfileW(L"x.icc"));
    manager->InitAppService(nullptr, nullptr);
    std::string fileName = "untouched";
    CString title(L"sRGB Color Space Profile");
    // Start-up built no list: the display transform opened its profiles by name.
    EXPECT_FALSE(manager->GetProfileName(title, fileName));
    EXPECT_EQ(fileName, "untouched");
    CColorManager::Delete(manager);
}

TEST_F(ProfileListTest, InstallAndUninstallGoThroughThePlatform) {
    std::string outside = env_.Root() + "/download";
    std::filesystem::create_directories(outside);
    WriteRgbProfile(outside + "/New.icc", 1.8);
    CColorManager& manager = *CColorManager::Instance();
    std::wstring path = tesk::path::ToWindows(outside + "/New.icc");
    ASSERT_TRUE(manager.InstallColorProfileW(path.c_str()));
    EXPECT_TRUE(std::filesystem::exists(ColorDir() + "/New.icc"));
    ASSERT_TRUE(manager.GetSetupProfileList(false));
    EXPECT_EQ(Walk(manager, false), (std::set<std::string>{"sRGB Color Space Profile", "New"}));

    EXPECT_TRUE(manager.UninstallColorProfileW(tesk::path::ToWindows(ColorDir() + "/New.icc").c_str()));
    EXPECT_TRUE(std::filesystem::exists(outside + "/New.icc"));
    EXPECT_FALSE(manager.InstallColorProfileW(L"\\no\\such\\file.icc"));
}

TEST_F(ProfileListTest, NameResolutionFallsBackToTheFirstListedProfile) {
    InstallPressProfile("ISO Coated (FOGRA39).icc", "Press.icc");
    CColorManager& manager = *CColorManager::Instance();
    CString name;
    EXPECT_TRUE(manager.GetRGBProfileName(name));
    EXPECT_EQ(name, L"sRGB Color Space Profile.icm");

    CString gone(L"Gone.icc");
    manager.SetColorWorkingSpace(gone);
    EXPECT_TRUE(manager.GetRGBProfileName(name));
    EXPECT_EQ(name, L"sRGB Color Space Profile.icm");

    // The program's own CMYK profiles are found beside the executable.
    EXPECT_TRUE(manager.GetCMYKProfileName(name));
    EXPECT_EQ(name, L"SWOP Coated (TR003).icc");
    manager.SetCMYKProfile(gone);
    EXPECT_TRUE(manager.GetCMYKProfileName(name));
    EXPECT_EQ(name, L"Press.icc");
}

TEST_F(ProfileListTest, CMYKNameResolutionFailsWithoutAnyCMYKProfile) {
    CColorManager& manager = *CColorManager::Instance();
    CString gone(L"Gone.icc");
    manager.SetCMYKProfile(gone);
    CString name;
    EXPECT_FALSE(manager.GetCMYKProfileName(name));
    CICCReadColorProfile reader;
    EXPECT_EQ(manager.GetCMYKProfile(reader), nullptr);
}

TEST_F(ProfileListTest, DefaultCMYKProfileDependsOnTheLanguage) {
    const CString european(L"ISO Coated (FOGRA39).icc"), us(L"SWOP Coated (TR003).icc");
    ::setenv("LC_ALL", "de_DE.UTF-8", 1);
    LanguageContext context;
    CColorManager* manager = new CColorManager();
    CSingletonManager::Instance().DestroyAll();  // no store: the CMYK name stays unset
    manager->InitAppService(&context, nullptr);
    CString name;
    manager->GetDefaultCMYKString(name);
    EXPECT_EQ(name, european);
    ::setenv("LC_ALL", "en_US.UTF-8", 1);
    manager->GetDefaultCMYKString(name);
    EXPECT_EQ(name, us);
    CColorManager::Delete(manager);

    // Without a language connection the US profile is the default.
    ::setenv("LC_ALL", "de_DE.UTF-8", 1);
    CColorManager* unconnected = new CColorManager();
    unconnected->InitAppService(nullptr, nullptr);
    unconnected->GetDefaultCMYKString(name);
    EXPECT_EQ(name, us);
    CColorManager::Delete(unconnected);
    ::unsetenv("LC_ALL");
}

TEST_F(ProfileListTest, ComparisonsAgainstTheWorkingSpaceAndTheCMYKProfile) {
    WriteRgbProfile(ColorDir() + "/Gamma22.icc", 2.2);
    InstallPressProfile("ISO Coated (FOGRA39).icc", "Press.icc");
    CColorManager& manager = *CColorManager::Instance();
    CString press(L"Press.icc");
    manager.SetCMYKProfile(press);

    auto open = [](CICCReadColorProfile& reader, const wchar_t* name) {
        void* handle = reader.OpenICCProfile(const_cast<wchar_t*>(name));
        reader.SetProfile(handle, const_cast<wchar_t*>(name));
        return handle != nullptr;
    };
    CICCReadColorProfile srgb, gamma22, cmyk, unopened;
    ASSERT_TRUE(open(srgb, L"sRGB Color Space Profile.icm"));
    ASSERT_TRUE(open(gamma22, L"Gamma22.icc"));
    ASSERT_TRUE(open(cmyk, L"Press.icc"));

    EXPECT_TRUE(manager.CompareProfileVersusWorkingSpace(srgb));
    EXPECT_FALSE(manager.CompareProfileVersusWorkingSpace(gamma22));
    EXPECT_FALSE(manager.CompareProfileVersusWorkingSpace(unopened));
    EXPECT_TRUE(manager.CompareProfileVersusCMYKProfile(cmyk));
    EXPECT_FALSE(manager.CompareProfileVersusCMYKProfile(srgb));
    EXPECT_TRUE(manager.CompareProfiles(srgb, srgb));
    EXPECT_FALSE(manager.CompareProfiles(srgb, gamma22));
    EXPECT_FALSE(manager.CompareProfiles(unopened, srgb));

    Access::ClearWorkingSpace(manager);
    EXPECT_FALSE(manager.CompareProfileVersusWorkingSpace(srgb));
}

TEST_F(ProfileListTest, AnEmptyWorkingSpaceListIsScannedAgain) {
    CColorManager& manager = *CColorManager::Instance();
    // The only working space is refused once: the first scan finds nothing and
    // the scan repeats until it finds one.
    RecordPlatformCalls({L"sRGB Color Space Profile.icm"}, 1);
    ASSERT_TRUE(manager.GetSetupProfileList(false));
    size_t checks = 0;
    for (const RecordedCall& call : CallsNamed("IsColorProfileValid"))
        checks += call.texts[0] == L"sRGB Color Space Profile.icm";
    EXPECT_EQ(checks, 2u);
    EXPECT_EQ(Walk(manager, false), (std::set<std::string>{"sRGB Color Space Profile"}));
}

TEST_F(ProfileListTest, AnEmptyCMYKListIsNotScannedAgain) {
    InstallPressProfile("ISO Coated (FOGRA39).icc", "Press.icc");
    CColorManager& manager = *CColorManager::Instance();
    RecordPlatformCalls({L"Press.icc"}, 1);
    EXPECT_FALSE(manager.GetSetupCMYKProfileList());
    size_t checks = 0;
    for (const RecordedCall& call : CallsNamed("IsColorProfileValid")) checks += call.texts[0] == L"Press.icc";
    EXPECT_EQ(checks, 1u);
    EXPECT_TRUE(manager.GetSetupCMYKProfileList()) << "an explicit rebuild finds it";
}
