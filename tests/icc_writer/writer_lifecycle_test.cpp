// Opening for write, adopting a handle, finishing with a verdict, and what a
// refusing or missing platform function does to the writer.
#include <gtest/gtest.h>
#include <tesk/loader.h>
#include <tesk/path.h>

#include <filesystem>

#include "icc/ICCWriteColorProfile.h"
#include "support/temp_env.h"
#include "written_profile.h"

namespace {

using tesk::test::WrittenProfile;

// The smallest profile the platform accepts as a valid display profile.
bool WriteValidDisplayTags(CICCWriteColorProfile& writer) {
    std::list<std::string> description{"lifecycle"};
    std::list<std::string> copyright{"none"};
    SICCCurveType gamma{1, nullptr, 2.2f};
    SMyXYZNumber white{0.9642, 1.0, 0.8249}, red{0.4361, 0.2225, 0.0139}, green{0.3851, 0.7169, 0.0971},
        blue{0.1431, 0.0606, 0.7141};
    bool ok = writer.SetStringTag('desc', description) && writer.SetCopyrightTag('cprt', copyright) &&
              writer.SetMediaWhitePoint(white) && writer.SetXYZColorant(red, 'rXYZ') &&
              writer.SetXYZColorant(green, 'gXYZ') && writer.SetXYZColorant(blue, 'bXYZ');
    for (unsigned long tag : {'rTRC', 'gTRC', 'bTRC'}) ok = ok && writer.SetTRCCurveType(tag, gamma);
    return ok && writer.SetDefaultProfileHeader();
}

uint32_t DeclaredSize(CICCWriteColorProfile& writer) {
    PROFILEHEADER header;
    writer.CreateProfileHeader(header);
    return header.phSize;
}

class WriterLifecycle : public tesk::test::IsolatedTest {
protected:
    void TearDown() override { tesk::loader::ClearSubstitutes(); }
    std::string ColorPath(const std::string& name) const { return env_.ColorDir() + "/" + name; }
    std::wstring WindowsPath(const std::string& name) const { return tesk::path::ToWindows(ColorPath(name)); }
};

TEST_F(WriterLifecycle, FinalizeReportsValidInvalidAndNothingOpen) {
    CICCWriteColorProfile writer;
    EXPECT_EQ(writer.FinalizeProfileWrite(), CM_PROFILE_NONE);

    ASSERT_TRUE(writer.OpenICCProfileForWrite(WindowsPath("good.icc").c_str()));
    ASSERT_TRUE(WriteValidDisplayTags(writer));
    EXPECT_EQ(writer.FinalizeProfileWrite(), CM_PROFILE_VALID);
    EXPECT_EQ(writer.GetProfile(), nullptr);
    EXPECT_EQ(writer.FinalizeProfileWrite(), CM_PROFILE_NONE) << "a finished writer is empty";

    // Without white point and colorants a display profile is not valid; it
    // is closed (and so written) all the same.
    ASSERT_TRUE(writer.OpenICCProfileForWrite(WindowsPath("bad.icc").c_str()));
    std::list<std::string> description{"incomplete"};
    ASSERT_TRUE(writer.SetStringTag('desc', description));
    ASSERT_TRUE(writer.SetDefaultProfileHeader());
    EXPECT_EQ(writer.FinalizeProfileWrite(), CM_PROFILE_INVALID);
    EXPECT_EQ(writer.GetProfile(), nullptr);
    EXPECT_TRUE(WrittenProfile(ColorPath("bad.icc")).Tag('desc').has_value());
}

BOOL WINAPI ShortWrite(HPROFILE profile, TAGTYPE tag, DWORD offset, PDWORD count, PVOID data) {
    static const auto real =
        reinterpret_cast<decltype(&::SetColorProfileElement)>(tesk::loader::RealProcAddress(L"MSCMS.DLL",
                                                                                           "SetColorProfileElement"));
    const BOOL result = real(profile, tag, offset, count, data);
    if (*count > 0) --*count;
    return result;
}

TEST_F(WriterLifecycle, ShortOrRefusedWritesFailWithoutCountingTheTag) {
    tesk::loader::Substitute substitute;
    substitute.overrides["SetColorProfileElement"] = reinterpret_cast<FARPROC>(&ShortWrite);
    tesk::loader::SetSubstitute(L"MSCMS.DLL", substitute);
    CICCWriteColorProfile writer;
    ASSERT_TRUE(writer.OpenICCProfileForWrite(WindowsPath("short.icc").c_str()));
    const uint32_t before = DeclaredSize(writer);
    SICCCurveType gamma{1, nullptr, 1.0f};
    EXPECT_FALSE(writer.SetTRCCurveType('rTRC', gamma));
    SMyXYZNumber white{0.9642, 1.0, 0.8249};
    EXPECT_FALSE(writer.SetMediaWhitePoint(white));
    EXPECT_EQ(DeclaredSize(writer), before);
}

TEST_F(WriterLifecycle, OpenForWriteResolvesNamesAndReplacesTheOpenProfile) {
    CICCWriteColorProfile writer;
    EXPECT_FALSE(writer.OpenICCProfileForWrite(nullptr));

    // A bare name lands in the colour directory.
    ASSERT_TRUE(writer.OpenICCProfileForWrite(L"bare.icc"));
    void* first = writer.GetProfile();
    // Opening another closes the first, which writes it out.
    const std::string elsewhere = env_.Root() + "/elsewhere.icc";
    ASSERT_TRUE(writer.OpenICCProfileForWrite(tesk::path::ToWindows(elsewhere).c_str()));
    EXPECT_NE(writer.GetProfile(), first);
    EXPECT_TRUE(std::filesystem::exists(ColorPath("bare.icc")));
    ASSERT_TRUE(WriteValidDisplayTags(writer));
    EXPECT_EQ(writer.FinalizeProfileWrite(), CM_PROFILE_VALID);
    EXPECT_TRUE(std::filesystem::exists(elsewhere));

    // An existing file is truncated, not extended.
    ASSERT_TRUE(writer.OpenICCProfileForWrite(tesk::path::ToWindows(elsewhere).c_str()));
    EXPECT_EQ(writer.FinalizeProfileWrite(), CM_PROFILE_INVALID);
    EXPECT_FALSE(WrittenProfile(elsewhere).Tag('desc').has_value());

    // A folder that does not exist cannot take the profile.
    EXPECT_FALSE(writer.OpenICCProfileForWrite(tesk::path::ToWindows(env_.Root() + "/no/such/x.icc").c_str()));
    EXPECT_EQ(writer.GetProfile(), nullptr);
}

}  // namespace
