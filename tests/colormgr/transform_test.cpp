// The display transform: which profiles and intents reach the platform, the
// open procedure with its single retry, fallbacks, the RGB colour record
// and the raw profile bytes.
#include "host/SingletonManager.h"
#include "support/manager_harness.h"

using namespace colormgr_test;
using Access = CColorManagerTestAccess;

namespace {

const std::wstring kSRGB = L"sRGB Color Space Profile.icm";

class TransformTest : public ManagerTest {
protected:
    void SetUp() override {
        ManagerTest::SetUp();
        CColorManager::Instance();  // seeds the colour directory with the platform's sRGB profile
        CSingletonManager::Instance().DestroyAll();
        RegisterSettingsStoreService();
        WriteRgbProfile(ColorDir() + "/Monitor.icc", 2.2);
        WriteRgbProfile(ColorDir() + "/Gamma22.icc", 2.2);
        InstallPressProfile("ISO Coated (FOGRA39).icc", "Press.icc");
    }
    CColorManager& StartRecorded(const std::vector<std::wstring>& invalid = {}) {
        RecordPlatformCalls(invalid);
        CColorManager* manager = CColorManager::Instance();
        CallLog().clear();
        return *manager;
    }
    static size_t OpensOf(const std::wstring& fileName) {
        size_t count = 0;
        for (const RecordedCall& call : CallsNamed("OpenColorProfileW")) count += call.texts[0].ends_with(fileName);
        return count;
    }
};

}  // namespace

TEST_F(TransformTest, WorkingSpaceThenMonitorWithTheRenderingIntentTwice) {
    CColorManager& manager = StartRecorded();
    CString monitor(L"Monitor.icc");
    manager.SetMonitorProfile(monitor);
    std::vector<RecordedCall> created = CallsNamed("CreateMultiProfileTransform");
    ASSERT_EQ(created.size(), 1u);
    EXPECT_EQ(created[0].texts, (std::vector<std::wstring>{kSRGB, L"Monitor.icc"}));
    // count, intent count, flags (BEST_MODE), preferred CMM, intents
    EXPECT_EQ(created[0].values, (std::vector<DWORD>{2, 2, 3, 0, 0, 0}));
    EXPECT_NE(Access::ImageTransform(manager), nullptr);

    // The record handed to the open: read-only, shared reading, existing file,
    // and the text's size counted two bytes a character with its terminator.
    for (const RecordedCall& open : CallsNamed("OpenColorProfileW")) {
        EXPECT_EQ(open.values[0], 1u);
        EXPECT_EQ(open.values[1], 1u);
        EXPECT_EQ(open.values[2], 3u);
    }
    const RecordedCall first = CallsNamed("OpenColorProfileW").front();
    EXPECT_EQ(first.values[3], 2 * (first.texts[0].size() + 1));
    // Every profile opened for the build is closed again.
    EXPECT_EQ(CallsNamed("CloseColorProfile").size(), 2u);

    CallLog().clear();
    wchar_t name[] = L"Monitor.icc", none[] = L"";
    manager.UpdateSettings(true, false, name, none, none, 2, 3);
    created = CallsNamed("CreateMultiProfileTransform");
    ASSERT_EQ(created.size(), 1u);
    EXPECT_EQ(created[0].values, (std::vector<DWORD>{2, 2, 3, 0, 2, 2}));
    ASSERT_EQ(CallsNamed("DeleteColorTransform").size(), 1u) << "the previous transform goes first";
}

TEST_F(TransformTest, ProofGoesInTheMiddleWithTheProofIntentTwice) {
    CColorManager& manager = StartRecorded();
    wchar_t monitor[] = L"Monitor.icc", printer[] = L"", proof[] = L"Press.icc";
    manager.UpdateSettings(true, true, monitor, printer, proof, 1, 2);
    std::vector<RecordedCall> created = CallsNamed("CreateMultiProfileTransform");
    ASSERT_EQ(created.size(), 1u);
    EXPECT_EQ(created[0].texts, (std::vector<std::wstring>{kSRGB, L"Press.icc", L"Monitor.icc"}));
    EXPECT_EQ(created[0].values, (std::vector<DWORD>{3, 3, 3, 0, 1, 2, 2}));
    EXPECT_NE(Access::ImageTransform(manager), nullptr);
    EXPECT_EQ(CallsNamed("CloseColorProfile").size(), 3u);
}

TEST_F(TransformTest, AMissingProfileIsTriedExactlyTwiceAndLeavesNoTransform) {
    CColorManager& manager = StartRecorded();
    ASSERT_NE(Access::ImageTransform(manager), nullptr);
    CString missing(L"Missing.icc");
    manager.SetMonitorProfile(missing);
    EXPECT_EQ(OpensOf(L"Missing.icc"), 2u);
    EXPECT_TRUE(CallsNamed("CreateMultiProfileTransform").empty());
    EXPECT_EQ(Access::ImageTransform(manager), nullptr) << "a failed build leaves no transform";
    EXPECT_EQ(Access::MonitorProfile(manager), L"Missing.icc");
}

TEST_F(TransformTest, ColorSpecFollowsTheWorkingSpace) {
    StoreInt(169, 170, 0);
    CColorManager& manager = *CColorManager::Instance();
    const SColorSpecRGB& colorSpec = Access::ColorSpec(manager);
    // The platform's sRGB is recognised by its curves.
    EXPECT_TRUE(manager.UpdateWithColorWS());
    EXPECT_EQ(colorSpec.m_bsRGB, 1);
    EXPECT_EQ(colorSpec.m_dGamma, 0.0);
    EXPECT_NEAR(colorSpec.m_dMatrix[0][0], 0.4361, 0.002);  // red X (D50)

    CString gamma22(L"Gamma22.icc");
    manager.SetColorWorkingSpace(gamma22);
    EXPECT_TRUE(manager.UpdateWithColorWS());
    EXPECT_EQ(colorSpec.m_bsRGB, 0);
    EXPECT_NEAR(colorSpec.m_dGamma, 2.2, 0.01);
    SColorSpecRGB copy{};
    manager.GetColorSpecRGB(copy);
    EXPECT_EQ(copy.m_dMatrix[1][1], colorSpec.m_dMatrix[1][1]);
    EXPECT_EQ(copy.m_dInverse[2][2], colorSpec.m_dInverse[2][2]);
    std::wstring stored;
    EXPECT_TRUE(StoredText(175, stored));
    EXPECT_EQ(stored, L"Gamma22.icc") << "a build persists the working space";

    // No working-space name: the sRGB fallback.
    Access::ClearWorkingSpace(manager);
    Access::UpdateTransform(manager);
    EXPECT_EQ(colorSpec.m_bsRGB, 1);
    EXPECT_EQ(colorSpec.m_dMatrix[0][1], 0.222491);
    EXPECT_EQ(colorSpec.m_dInverse[0][2], 0.0719434);
}

TEST_F(TransformTest, RawProfileBytesAndTheirNames) {
    CColorManager& manager = *CColorManager::Instance();
    BYTE* data = nullptr;
    int size = 0;
    CString name;
    ASSERT_TRUE(manager.GetWorkingProfile(&data, size, name));
    std::vector<uint8_t> file = tesk::test::ReadBytes(ColorDir() + "/sRGB Color Space Profile.icm");
    ASSERT_EQ(static_cast<size_t>(size), file.size());
    EXPECT_TRUE(std::equal(file.begin(), file.end(), data));
    EXPECT_EQ(name, L"sRGB Color Space Profile");
    ::GlobalFree(::GlobalHandle(data));
}
