// The ICM profile of device contexts and the profiles associated with devices.
#include <windows.h>

#include <icm.h>
#include <tesk/path.h>

#include <filesystem>
#include <vector>

#include "gdi_test_support.h"

namespace tesk::test {
namespace {

class IcmProfileTest : public GdiTest {
protected:
    void SetUp() override {
        GdiTest::SetUp();
        display_ = CreateDCW(L"DISPLAY", nullptr, nullptr, nullptr);
        ASSERT_NE(display_, nullptr);
    }
    void TearDown() override {
        DeleteDC(display_);
        GdiTest::TearDown();
    }

    std::wstring MonitorId() {
        DISPLAY_DEVICEW monitor{};
        monitor.cb = sizeof monitor;
        EXPECT_TRUE(EnumDisplayDevicesW(L"\\\\.\\DISPLAY1", 0, &monitor, 0));
        return monitor.DeviceID;
    }

    // Installs an lcms2-made profile under `name` and gives its Windows-form path.
    std::wstring Install(const std::string& name, bool wideGamut) {
        std::string source = env_.Root() + "/" + name;
        wideGamut ? WriteRgbProfile(source, 2.2) : WriteSrgbProfile(source);
        EXPECT_TRUE(InstallColorProfileW(nullptr, Wide(source).c_str()));
        return path::ToWindows(ColorDirectory() + "/" + name);
    }

    std::string ColorDirectory() {
        WCHAR buffer[MAX_PATH] = {};
        DWORD size = sizeof buffer;
        EXPECT_TRUE(GetColorDirectoryW(nullptr, buffer, &size));
        return path::ToNative(buffer);
    }

    std::wstring ProfileOf(HDC dc) {
        DWORD size = 0;
        SetLastError(0);
        if (GetICMProfileW(dc, &size, nullptr) || GetLastError() != ERROR_INSUFFICIENT_BUFFER) return L"<none>";
        std::wstring name(size, L'\0');
        EXPECT_TRUE(GetICMProfileW(dc, &size, name.data()));
        EXPECT_EQ(size, name.size());
        name.resize(size - 1);
        return name;
    }

    static std::vector<std::wstring> Enumerate(HDC dc, int* result = nullptr, int stopAfter = 1000) {
        struct State {
            std::vector<std::wstring> names;
            int stopAfter;
        } state{{}, stopAfter};
        int r = EnumICMProfilesW(
            dc,
            [](LPWSTR name, LPARAM param) -> int {
                auto* s = reinterpret_cast<State*>(param);
                s->names.push_back(name);
                return int(s->names.size()) < s->stopAfter ? 1 : 0;
            },
            reinterpret_cast<LPARAM>(&state));
        if (result) *result = r;
        return state.names;
    }

    HDC display_ = nullptr;
};

TEST_F(IcmProfileTest, ADisplayWithoutAssociationsUsesTheStandardProfile) {
    std::wstring profile = ProfileOf(display_);
    EXPECT_EQ(profile, path::ToWindows(ColorDirectory() + "/sRGB Color Space Profile.icm"));
    int result = 0;
    EXPECT_TRUE(Enumerate(display_, &result).empty());
    EXPECT_EQ(result, -1);
}

TEST_F(IcmProfileTest, AssociatedProfilesAreEnumeratedInOrderAndTheLastIsTheDefault) {
    std::wstring first = Install("first.icc", false);
    std::wstring second = Install("wide.icc", true);
    ASSERT_TRUE(AssociateColorProfileWithDeviceW(nullptr, L"first.icc", MonitorId().c_str()));
    ASSERT_TRUE(AssociateColorProfileWithDeviceW(nullptr, L"wide.icc", MonitorId().c_str()));

    int result = 0;
    EXPECT_EQ(Enumerate(display_, &result), (std::vector<std::wstring>{first, second}));
    EXPECT_EQ(result, 1);
    EXPECT_EQ(Enumerate(display_, &result, 1), (std::vector<std::wstring>{first}));
    EXPECT_EQ(result, 0);  // the callback stopped the enumeration
    EXPECT_EQ(ProfileOf(display_), second);

    ASSERT_TRUE(DisassociateColorProfileFromDeviceW(nullptr, L"wide.icc", MonitorId().c_str()));
    EXPECT_EQ(ProfileOf(display_), first);
    EXPECT_EQ(EnumICMProfilesW(display_, nullptr, 0), -1);
}

TEST_F(IcmProfileTest, TheDisplayProfileOutlivesTheContextThatSetItAndIsCheckedFirst) {
    std::wstring wide = Install("wide.icc", true);
    std::wstring bare = L"wide.icc";  // a bare name lives in the colour directory
    ASSERT_TRUE(SetICMProfileW(display_, bare.data()));
    EXPECT_EQ(ProfileOf(display_), wide);
    HDC other = CreateDCW(L"DISPLAY", nullptr, nullptr, nullptr);
    EXPECT_EQ(ProfileOf(other), wide);
    DeleteDC(other);

    // A memory context keeps a profile of its own.
    HDC memory = CreateCompatibleDC(display_);
    std::wstring srgb = path::ToWindows(ColorDirectory() + "/sRGB Color Space Profile.icm");
    ASSERT_TRUE(SetICMProfileW(memory, srgb.data()));
    EXPECT_EQ(ProfileOf(memory), srgb);
    EXPECT_EQ(ProfileOf(display_), wide);
    DeleteDC(memory);
}

TEST_F(IcmProfileTest, SizesAndRefusedProfiles) {
    DWORD size = 0;
    SetLastError(0);
    ASSERT_FALSE(GetICMProfileW(display_, &size, nullptr));
    ASSERT_EQ(GetLastError(), DWORD(ERROR_INSUFFICIENT_BUFFER));
    std::wstring buffer(size, L'#');
    DWORD small = size - 1;
    EXPECT_FALSE(GetICMProfileW(display_, &small, buffer.data()));
    EXPECT_EQ(small, size);
    EXPECT_EQ(buffer[0], L'#');  // nothing written on failure
    EXPECT_FALSE(GetICMProfileW(display_, nullptr, buffer.data()));

    std::wstring missing = Wide(env_.Root() + "/missing.icc");
    EXPECT_TRUE(FailsWith(SetICMProfileW(display_, missing.data()), ERROR_FILE_NOT_FOUND));
    std::string text = env_.Root() + "/text.icc";
    WriteBytes(text, std::vector<uint8_t>(200, 'x'));
    std::wstring notProfile = Wide(text);
    EXPECT_TRUE(FailsWith(SetICMProfileW(display_, notProfile.data()), ERROR_INVALID_PROFILE));
    EXPECT_FALSE(SetICMProfileW(display_, nullptr));
}

TEST_F(IcmProfileTest, IcmModeIsPerContext) {
    HDC memory = CreateCompatibleDC(display_);
    EXPECT_EQ(SetICMMode(memory, ICM_QUERY), ICM_OFF);
    EXPECT_TRUE(SetICMMode(memory, ICM_ON));
    EXPECT_EQ(SetICMMode(memory, ICM_QUERY), ICM_ON);
    EXPECT_TRUE(SetICMMode(memory, ICM_DONE_OUTSIDEDC));
    EXPECT_EQ(SetICMMode(memory, ICM_QUERY), ICM_DONE_OUTSIDEDC);
    EXPECT_EQ(SetICMMode(display_, ICM_QUERY), ICM_OFF);
    EXPECT_EQ(SetICMMode(memory, 99), 0);
    EXPECT_EQ(GetLastError(), DWORD(ERROR_INVALID_PARAMETER));
    DeleteDC(memory);
}

}  // namespace
}  // namespace tesk::test
