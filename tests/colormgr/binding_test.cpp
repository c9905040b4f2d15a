// Loading and binding of the platform colour libraries, with substitutes for
// missing modules and exports, and the one-instance lifecycle.
#include <tesk/loader.h>
#include <tesk/path.h>

#include <algorithm>

#include "host/ColorSpec.h"
#include "host/SingletonManager.h"
#include "manager_test_support.h"

using namespace colormgr_test;
using Access = CColorManagerTestAccess;

namespace {

struct ModuleEvent {
    std::string call;
    std::wstring module;
    bool ok;
};

std::vector<ModuleEvent>& Events() {
    static std::vector<ModuleEvent> events;
    return events;
}

std::wstring Upper(std::wstring text) {
    for (wchar_t& c : text) c = static_cast<wchar_t>(towupper(c));
    return text;
}

// Loads and frees of the three colour libraries only (the profile classes
// and device lookups load others).
std::vector<std::string> ColourLibraryEvents() {
    std::vector<std::string> seen;
    for (const ModuleEvent& e : Events()) {
        std::wstring name = Upper(e.module);
        if (name == L"ICMUI.DLL" || name == L"MSCMS.DLL" || name == L"GDI32.DLL")
            seen.push_back(e.call + " " + tesk::path::Utf8(name) + (e.ok ? "" : " failed"));
    }
    return seen;
}

class BindingTest : public ManagerTest {
protected:
    void SetUp() override {
        ManagerTest::SetUp();
        Events().clear();
        tesk::loader::SetObserver([](const char* call, const std::wstring& module, bool ok) {
            Events().push_back({call, module, ok});
        });
    }
};

// Exports in the order of the manager's members.
const std::vector<std::string> kDeclared = {
    "GetStandardColorSpaceProfileW", "SetupColorMatchingW", "GetColorDirectoryW", "OpenColorProfileW",
    "CreateColorTransformW", "CreateMultiProfileTransform", "TranslateBitmapBits", "TranslateColors",
    "CloseColorProfile", "IsColorProfileValid", "DeleteColorTransform", "SetStandardColorSpaceProfileW",
    "AssociateColorProfileWithDeviceW", "DisassociateColorProfileFromDeviceW", "InstallColorProfileW",
    "UninstallColorProfileW", "CreateProfileFromLogColorSpaceW", "GetColorProfileFromHandle", "GetDeviceGammaRamp",
    "SetDeviceGammaRamp", "EnumICMProfilesW"};

std::vector<std::string> Bound(CColorManager& manager) {
    std::vector<bool> flags = Access::BoundInDeclarationOrder(manager);
    std::vector<std::string> names;
    for (size_t i = 0; i < flags.size(); ++i)
        if (flags[i]) names.push_back(kDeclared[i]);
    return names;
}

}  // namespace

TEST_F(BindingTest, AllLibrariesAndExportsBindAndAreFreedInOrder) {
    CColorManager* manager = new CColorManager();
    // The flag tells whether the libraries loaded; binding waits for the start.
    EXPECT_TRUE(manager->IsLoaded());
    EXPECT_TRUE(Bound(*manager).empty());
    EXPECT_EQ(ColourLibraryEvents(), (std::vector<std::string>{"load ICMUI.DLL", "load MSCMS.DLL", "load GDI32.DLL"}));

    manager->InitAppService(nullptr, nullptr);
    EXPECT_TRUE(manager->IsLoaded());
    EXPECT_EQ(Bound(*manager).size(), 21u);

    Events().clear();
    CColorManager::Delete(manager);
    EXPECT_EQ(ColourLibraryEvents(), (std::vector<std::string>{"free ICMUI.DLL", "free MSCMS.DLL", "free GDI32.DLL"}));
}

TEST_F(BindingTest, MissingIcmuiLoadsNothingElseAndFreesNothing) {
    tesk::loader::Substitute missing;
    missing.missing = true;
    tesk::loader::SetSubstitute(L"ICMUI.DLL", missing);

    CColorManager* manager = new CColorManager();
    EXPECT_EQ(ColourLibraryEvents(), (std::vector<std::string>{"load ICMUI.DLL failed"}));
    EXPECT_EQ(Access::Module(*manager, 1), nullptr);
    EXPECT_EQ(Access::Module(*manager, 2), nullptr);
    manager->InitAppService(nullptr, nullptr);
    EXPECT_FALSE(manager->IsLoaded());
    EXPECT_TRUE(Bound(*manager).empty());

    Events().clear();
    CColorManager::Delete(manager);
    EXPECT_TRUE(ColourLibraryEvents().empty());
}

TEST_F(BindingTest, MissingSetupColorMatchingKeepsTheSixBoundBeforeIt) {
    tesk::loader::Substitute icmui;
    icmui.hidden.insert("SetupColorMatchingW");
    tesk::loader::SetSubstitute(L"ICMUI.DLL", icmui);

    CColorManager* manager = new CColorManager();
    manager->InitAppService(nullptr, nullptr);
    EXPECT_FALSE(manager->IsLoaded());
    std::vector<std::string> bound = Bound(*manager);
    std::sort(bound.begin(), bound.end());
    std::vector<std::string> expected = {"GetStandardColorSpaceProfileW", "SetStandardColorSpaceProfileW",
                                         "AssociateColorProfileWithDeviceW", "DisassociateColorProfileFromDeviceW",
                                         "InstallColorProfileW", "UninstallColorProfileW"};
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(bound, expected);
    // Nothing unbound may be relied on: start-up built no transform and the
    // destructor has no deletion function.
    EXPECT_EQ(Access::ImageTransform(*manager), nullptr);
    CColorManager::Delete(manager);
}

TEST_F(BindingTest, MissingEnumICMProfilesLeavesEverythingElseBound) {
    tesk::loader::Substitute gdi;
    gdi.hidden.insert("EnumICMProfilesW");
    tesk::loader::SetSubstitute(L"GDI32.DLL", gdi);

    CColorManager* manager = new CColorManager();
    manager->InitAppService(nullptr, nullptr);
    EXPECT_FALSE(manager->IsLoaded());
    std::vector<std::string> bound = Bound(*manager);
    EXPECT_EQ(bound.size(), 20u);
    EXPECT_EQ(std::find(bound.begin(), bound.end(), "EnumICMProfilesW"), bound.end());
    // Unloaded: the monitors were not enumerated.
    EXPECT_EQ(Access::MonitorID(*manager), L"<null>");
    CColorManager::Delete(manager);
}

TEST_F(BindingTest, InstanceRegistersStartsAndLendsItsColorSpec) {
    CColorManager* manager = CColorManager::Instance();
    ASSERT_NE(manager, nullptr);
    EXPECT_TRUE(manager->IsLoaded());
    EXPECT_EQ(CColorManager::Instance(), manager);
    EXPECT_EQ(CSingletonManager::Instance().GetInstanceVoid(CColorManager::m_kCMGUID), manager);
    EXPECT_EQ(VGDI_TeskGDI_GetColorSpec(), &Access::ColorSpec(*manager));

    CSingletonManager::Instance().DestroyAll();
    EXPECT_EQ(VGDI_TeskGDI_GetColorSpec(), nullptr);
}

TEST_F(BindingTest, CreateInstanceNeitherRegistersNorStarts) {
    CColorManager* manager = nullptr;
    CColorManager::CreateInstance(&manager);
    ASSERT_NE(manager, nullptr);
    EXPECT_TRUE(Bound(*manager).empty());
    EXPECT_EQ(CSingletonManager::Instance().GetInstanceVoid(CColorManager::m_kCMGUID), nullptr);
    CColorManager::AddInstance(manager);
    EXPECT_EQ(CColorManager::Instance(), manager);
    EXPECT_TRUE(Bound(*manager).empty()) << "a registered instance is handed out as it is";
}

// Disabling is process-wide and permanent: this test must stay last in its
// process, which CTest guarantees by running each test alone.
TEST_F(BindingTest, DisableHidesTheRegisteredInstance) {
    CColorManager* manager = CColorManager::Instance();
    ASSERT_NE(manager, nullptr);
    EXPECT_EQ(manager->GetMode(), VCM_MODE_PROFILES);
    CColorManager::Disable();
    EXPECT_EQ(CColorManager::Instance(), nullptr);
    EXPECT_EQ(manager->GetMode(), VCM_MODE_OFF);
}
