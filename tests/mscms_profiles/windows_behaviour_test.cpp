// What any caller written for the Windows colour API relies on: the
// documented results of tag queries, enumeration, the ANSI forms, the
// sizes of wide text and the system's sRGB profile.
#include <gtest/gtest.h>
#include <tesk/path.h>

#include <cstring>
#include <cwchar>
#include <filesystem>
#include <set>

#include "profile_helpers.h"
#include "support/temp_env.h"

namespace fs = std::filesystem;

namespace tesk::test {
namespace {

const char kSrgbName[] = "sRGB Color Space Profile.icm";
const char kCmykName[] = "ISO Coated (FOGRA39).icc";

std::set<std::string> Names(const char* list) {
    std::set<std::string> names;
    for (; *list; list += std::strlen(list) + 1) names.insert(list);
    return names;
}

class WindowsBehaviourTest : public IsolatedTest {
protected:
    std::string CopyCmyk(const std::string& name) {
        const std::string path = env_.Root() + "/" + name;
        fs::copy_file(DataPath(std::string("ColorProfile/") + kCmykName), path);
        return path;
    }
    static ENUMTYPEA Record(DWORD fields) {
        ENUMTYPEA record{};
        record.dwSize = sizeof record;
        record.dwVersion = ENUM_TYPE_VERSION;
        record.dwFields = fields;
        return record;
    }
    static std::set<std::string> Enumerate(ENUMTYPEA record) {
        DWORD size = 0, count = 0;
        if (EnumColorProfilesA(nullptr, &record, nullptr, &size, &count) || GetLastError() != ERROR_INSUFFICIENT_BUFFER)
            return {"<size query failed>"};
        std::vector<char> buffer(size);
        if (!EnumColorProfilesA(nullptr, &record, reinterpret_cast<PBYTE>(buffer.data()), &size, &count))
            return {"<failed>"};
        const std::set<std::string> names = Names(buffer.data());
        EXPECT_EQ(count, names.size());
        return names;
    }
};

TEST_F(WindowsBehaviourTest, ElementSizeQueryFailsWithTheSizeAndTheReferenceFlagIsRequired) {
    const Bytes bytes = SrgbProfileBytes();
    HPROFILE profile = OpenMemory(bytes);
    ASSERT_NE(profile, nullptr);
    DWORD size = 0;
    BOOL reference = TRUE;
    EXPECT_TRUE(FailsWith(GetColorProfileElement(profile, 'wtpt', 0, &size, nullptr, &reference),
                          ERROR_INSUFFICIENT_BUFFER));
    EXPECT_EQ(size, 20u);
    uint8_t data[20] = {};
    EXPECT_TRUE(FailsWith(GetColorProfileElement(profile, 'wtpt', 0, &size, data, nullptr), ERROR_INVALID_PARAMETER));

    BOOL present = FALSE;
    ASSERT_TRUE(IsColorProfileTagPresent(profile, 'wtpt', &present));
    EXPECT_TRUE(present);
    ASSERT_TRUE(IsColorProfileTagPresent(profile, 'ncl2', &present));
    EXPECT_FALSE(present);
    EXPECT_TRUE(FailsWith(IsColorProfileTagPresent(profile, 'wtpt', nullptr), ERROR_INVALID_PARAMETER));
    CloseColorProfile(profile);
}

TEST_F(WindowsBehaviourTest, ProfileWithRewrittenTagStillInstallsButIsNotValid) {
    const std::string path = CopyCmyk("edited.icc");
    HPROFILE profile = OpenFile(Wide(path), PROFILE_READWRITE, OPEN_EXISTING);
    ASSERT_NE(profile, nullptr);
    const std::string text = "Copyright as raw text";
    DWORD size = static_cast<DWORD>(text.size());
    ASSERT_TRUE(SetColorProfileElementSize(profile, 'cprt', size));
    ASSERT_TRUE(SetColorProfileElement(profile, 'cprt', 0, &size, const_cast<char*>(text.data())));
    ASSERT_TRUE(CloseColorProfile(profile));

    EXPECT_FALSE(IsValid(ReadBytes(path)));
    EXPECT_TRUE(InstallColorProfileW(nullptr, Wide(path).c_str()));
    EXPECT_EQ(ReadBytes(env_.ColorDir() + "/edited.icc"), ReadBytes(path));
}

TEST_F(WindowsBehaviourTest, MissingAssociationArgumentsComeBeforeTheMachine) {
    EXPECT_TRUE(FailsWith(AssociateColorProfileWithDeviceW(L"otherhost", nullptr, nullptr), ERROR_INVALID_PARAMETER));
}

TEST_F(WindowsBehaviourTest, EnumerationSelectsByHeaderFieldsAndDevice) {
    ASSERT_TRUE(InstallColorProfileA(nullptr, CopyCmyk(kCmykName).c_str()));
    const std::set<std::string> both = {kCmykName, kSrgbName};
    EXPECT_EQ(Enumerate(Record(0)), both);

    ENUMTYPEA record = Record(ET_CLASS);
    record.dwClass = CLASS_MONITOR;
    EXPECT_EQ(Enumerate(record), std::set<std::string>{kSrgbName});
    record = Record(ET_DATACOLORSPACE | ET_CONNECTIONSPACE);
    record.dwDataColorSpace = SPACE_CMYK;
    record.dwConnectionSpace = SPACE_Lab;
    EXPECT_EQ(Enumerate(record), std::set<std::string>{kCmykName});

    ASSERT_TRUE(AssociateColorProfileWithDeviceA(nullptr, kCmykName, "Printer"));
    record = Record(ET_DEVICENAME);
    record.pDeviceName = "Printer";
    EXPECT_EQ(Enumerate(record), std::set<std::string>{kCmykName});

    // The wide form counts bytes of WCHAR and lists the same names.
    ENUMTYPEW wide{};
    wide.dwSize = sizeof wide;
    wide.dwVersion = ENUM_TYPE_VERSION;
    DWORD size = 0;
    ASSERT_FALSE(EnumColorProfilesW(nullptr, &wide, nullptr, &size, nullptr));
    const std::wstring expected = Wide(kCmykName) + L'\0' + Wide(kSrgbName) + L'\0' + L'\0';
    EXPECT_EQ(size, expected.size() * sizeof(WCHAR));
    std::wstring list(size / sizeof(WCHAR), L'?');
    ASSERT_TRUE(EnumColorProfilesW(nullptr, &wide, reinterpret_cast<PBYTE>(list.data()), &size, nullptr));
    EXPECT_EQ(list, expected);
}

TEST_F(WindowsBehaviourTest, AnsiFormsCarryUtf8) {
    const std::string name = "Pr\xC3\xBC" "fdruck.icc";  // "Prüfdruck.icc"
    ASSERT_TRUE(InstallColorProfileA(nullptr, CopyCmyk(name).c_str()));
    EXPECT_TRUE(fs::exists(env_.ColorDir() + "/" + name));

    DWORD size = 0;
    ASSERT_FALSE(GetColorDirectoryA(nullptr, nullptr, &size));
    std::vector<char> directory(size);
    ASSERT_TRUE(GetColorDirectoryA(nullptr, directory.data(), &size));
    EXPECT_EQ(size, directory.size());
    EXPECT_EQ(path::ToNative(path::Wide(directory.data()).c_str()), env_.ColorDir());

    PROFILE record{PROFILE_FILENAME, const_cast<char*>(name.c_str()), static_cast<DWORD>(name.size() + 1)};
    HPROFILE profile = OpenColorProfileA(&record, PROFILE_READ, FILE_SHARE_READ, OPEN_EXISTING);
    ASSERT_NE(profile, nullptr);
    CloseColorProfile(profile);

    ASSERT_TRUE(UninstallColorProfileA(nullptr, name.c_str(), TRUE));
    EXPECT_FALSE(fs::exists(env_.ColorDir() + "/" + name));
}

// The Windows idiom: the size of a WCHAR array is passed as its size in bytes.
TEST_F(WindowsBehaviourTest, ByteSizesOfWideTextNeverLetTheCallWritePastTheBuffer) {
    struct {
        WCHAR buffer[8];
        WCHAR after[8];
    } guarded{{}, {L'#', L'#', L'#', L'#', L'#', L'#', L'#', L'#'}};
    DWORD size = sizeof guarded.buffer;
    EXPECT_TRUE(FailsWith(GetColorDirectoryW(nullptr, guarded.buffer, &size), ERROR_INSUFFICIENT_BUFFER));
    EXPECT_EQ(std::wstring(guarded.after, 8), std::wstring(8, L'#'));
    std::vector<WCHAR> fits(size / sizeof(WCHAR));  // exactly the size asked for
    ASSERT_TRUE(GetColorDirectoryW(nullptr, fits.data(), &size));
    EXPECT_EQ(std::wcslen(fits.data()) + 1, fits.size());
}

TEST_F(WindowsBehaviourTest, SeededSrgbProfileIsACompleteDisplayProfile) {
    PROFILE record{PROFILE_FILENAME, const_cast<wchar_t*>(L"sRGB Color Space Profile.icm"), 58};
    HPROFILE profile = OpenColorProfileW(&record, PROFILE_READ, FILE_SHARE_READ, OPEN_EXISTING);
    ASSERT_NE(profile, nullptr);
    for (TAGTYPE tag : {'desc', 'cprt', 'wtpt', 'bkpt', 'rXYZ', 'gXYZ', 'bXYZ', 'rTRC', 'gTRC', 'bTRC', 'dmnd', 'dmdd',
                        'vued', 'view', 'lumi', 'meas', 'tech'}) {
        BOOL present = FALSE;
        EXPECT_TRUE(IsColorProfileTagPresent(profile, tag, &present) && present) << std::hex << tag;
    }
    BOOL valid = FALSE;
    EXPECT_TRUE(IsColorProfileValid(profile, &valid) && valid);
    CloseColorProfile(profile);
}

}  // namespace
}  // namespace tesk::test
