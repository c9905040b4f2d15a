// Loading and binding of the platform colour libraries, with substitutes for
// missing modules and exports, and the one-instance lifecycle.
#include <tesk/loader.h>
#include <tesk/path.h>

#include <algorithm>

#include "host/ColorSpec.h"
#include "host/SingletonManager.h"
#include "support/manager_harness.h"

using namespace colormgr_test;
using Access = CColorManagerTestAccess;

namespace {

// Loads and frees of the three colour libraries only (the profile classes
// and device lookups load others).
std::vector<std::string>& ColourLibraryEvents() {
    static std::vector<std::string> events;
    return events;
}

class BindingTest : public ManagerTest {
protected:
    void SetUp() override {
        ManagerTest::SetUp();
        ColourLibraryEvents().clear();
        tesk::loader::SetObserver([](const char* call, const std::wstring& module, bool ok) {
            std::wstring name = module;
            for (wchar_t& c : name) c = static_cast<wchar_t>(towupper(c));
            if (name == L"ICMUI.DLL" || name == L"MSCMS.DLL" || name == L"GDI32.DLL")
                ColourLibraryEvents().push_back(std::string(call) + " " + tesk::path::Utf8(name) + (ok ? "" : " failed"));
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
    std::sort(names.begin(), names.end());
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

    ColourLibraryEvents().clear();
    CColorManager::Delete(manager);
    EXPECT_EQ(ColourLibraryEvents(), (std::vector<std::string>{"free ICMUI.DLL", "free MSCMS.DLL", "free GDI32.DLL"}));
}

// Binding stops at the first missing export: what was bound before it stays.
TEST_F(BindingTest, AMissingExportUnloadsAndKeepsWhatWasBoundBeforeIt) {
    std::vector<std::string> allButEnum = kDeclared;
    allButEnum.pop_back();
    std::sort(allButEnum.begin(), allButEnum.end());
    const struct {
        const wchar_t* module;
        const char* hidden;
        std::vector<std::string> bound;  // sorted
        bool transformBound;  // the transform functions come before the missing one
    } cases[] = {{L"ICMUI.DLL", "SetupColorMatchingW",
                  {"AssociateColorProfileWithDeviceW", "DisassociateColorProfileFromDeviceW",
                   "GetStandardColorSpaceProfileW", "InstallColorProfileW", "SetStandardColorSpaceProfileW",
                   "UninstallColorProfileW"},
                  false},
                 {L"GDI32.DLL", "EnumICMProfilesW", allButEnum, true}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.hidden);
        tesk::loader::Substitute substitute;
        substitute.hidden.insert(c.hidden);
        tesk::loader::SetSubstitute(c.module, substitute);
        CColorManager* manager = new CColorManager();
        manager->InitAppService(nullptr, nullptr);
        EXPECT_FALSE(manager->IsLoaded());
        EXPECT_EQ(Bound(*manager), c.bound);
        // Nothing unbound may be relied on: the monitors were not enumerated, and
        // without the transform functions start-up built no transform to delete.
        EXPECT_EQ(Access::MonitorID(*manager), L"<null>");
        if (!c.transformBound) {
            EXPECT_EQ(Access::ImageTransform(*manager), nullptr);
        }
        CColorManager::Delete(manager);
        tesk::loader::ClearSubstitutes();
    }
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
