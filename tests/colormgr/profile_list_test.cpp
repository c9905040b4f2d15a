// The setup lists and their cursors, install/uninstall, name resolution with
// fallbacks, defaults by language and the profile comparisons.
#include <tesk/path.h>

#include <filesystem>
#include <fstream>
#include <set>

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
