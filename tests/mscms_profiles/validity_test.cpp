// What counts as a valid profile, and which bytes do not open at all.
#include <gtest/gtest.h>

#include <functional>

#include "profile_helpers.h"
#include "support/temp_env.h"

namespace tesk::test {
namespace {

class ProfileValidityTest : public IsolatedTest {
protected:
    // Opens the sRGB profile read-write, lets `edit` change it, and judges it.
    bool ValidAfter(const std::function<void(HPROFILE)>& edit) {
        HPROFILE profile = OpenMemory(SrgbProfileBytes(), PROFILE_READWRITE);
        EXPECT_NE(profile, nullptr);
        edit(profile);
        BOOL valid = 2;
        SetLastError(0);
        const BOOL result = IsColorProfileValid(profile, &valid);
        EXPECT_EQ(result, valid);
        if (!valid) {
            EXPECT_EQ(GetLastError(), DWORD(ERROR_INVALID_PROFILE));
        }
        CloseColorProfile(profile);
        return result;
    }
    static void EditHeader(HPROFILE profile, const std::function<void(PROFILEHEADER&)>& change) {
        PROFILEHEADER header{};
        ASSERT_TRUE(GetColorProfileHeader(profile, &header));
        change(header);
        ASSERT_TRUE(SetColorProfileHeader(profile, &header));
    }
    static void PutTag(HPROFILE profile, TAGTYPE tag, Bytes data) {
        ASSERT_TRUE(SetColorProfileElementSize(profile, tag, static_cast<DWORD>(data.size())));
        DWORD size = static_cast<DWORD>(data.size());
        ASSERT_TRUE(SetColorProfileElement(profile, tag, 0, &size, data.data()));
    }
};

TEST_F(ProfileValidityTest, HeaderRules) {
    const std::pair<std::function<void(PROFILEHEADER&)>, bool> rules[] = {
        {[](PROFILEHEADER& h) { h.phSize = 7; }, true},
        {[](PROFILEHEADER& h) { h.phVersion = 0x04300000; }, true},
        {[](PROFILEHEADER& h) { h.phSignature = 'acsq'; }, false},
        {[](PROFILEHEADER& h) { h.phVersion = 0x01000000; }, false},
        {[](PROFILEHEADER& h) { h.phVersion = 0x05000000; }, false},
        {[](PROFILEHEADER& h) { h.phClass = 'what'; }, false},
        {[](PROFILEHEADER& h) { h.phDataColorSpace = 'RGBX'; }, false},
        {[](PROFILEHEADER& h) { h.phConnectionSpace = 'RGB '; }, false}};
    for (size_t i = 0; i < std::size(rules); ++i)
        EXPECT_EQ(ValidAfter([&](HPROFILE p) { EditHeader(p, rules[i].first); }), rules[i].second) << "rule " << i;
}

TEST_F(ProfileValidityTest, RequiredTagsMustBePresentAndWellFormed) {
    for (TAGTYPE tag : {'desc', 'cprt', 'wtpt', 'rXYZ', 'bTRC'})
        EXPECT_FALSE(ValidAfter([&](HPROFILE p) { ASSERT_TRUE(SetColorProfileElementSize(p, tag, 0)); }))
            << std::hex << tag;
    // A text whose terminator lies outside the tag.
    EXPECT_FALSE(ValidAfter([](HPROFILE p) { PutTag(p, 'cprt', {'t', 'e', 'x', 't', 0, 0, 0, 0, 'a', 'b'}); }));
    EXPECT_TRUE(ValidAfter([](HPROFILE p) { PutTag(p, 'cprt', {'t', 'e', 'x', 't', 0, 0, 0, 0, 'a', 0}); }));
    // An XYZ tag that is too short, a curve whose count runs past its tag.
    EXPECT_FALSE(ValidAfter([](HPROFILE p) { PutTag(p, 'wtpt', {'X', 'Y', 'Z', ' ', 0, 0, 0, 0, 0, 0, 0, 1}); }));
    EXPECT_FALSE(ValidAfter([](HPROFILE p) { PutTag(p, 'gTRC', {'c', 'u', 'r', 'v', 0, 0, 0, 0, 0, 0, 0, 9, 1, 0}); }));
    EXPECT_TRUE(ValidAfter([](HPROFILE p) { PutTag(p, 'gTRC', {'c', 'u', 'r', 'v', 0, 0, 0, 0, 0, 0, 0, 1, 2, 0}); }));
    // A v2 description whose count says more than the tag holds.
    EXPECT_FALSE(ValidAfter([](HPROFILE p) { PutTag(p, 'desc', {'d', 'e', 's', 'c', 0, 0, 0, 0, 0, 0, 0, 40, 'a', 0}); }));
}

TEST_F(ProfileValidityTest, RealPressProfilesAreValidUntilTheEngineFindsADamagedTable) {
    EXPECT_TRUE(IsValid(ReadBytes(DataPath("ColorProfile/SWOP Coated (TR003).icc"))));
    Bytes bytes = ReadBytes(DataPath("ColorProfile/ISO Coated (FOGRA39).icc"));
    ASSERT_TRUE(IsValid(bytes));
    size_t entry = 0;
    ASSERT_TRUE(FindTagEntry(bytes, 'A2B0', entry));
    const size_t offset = BE32(bytes, entry + 4);
    ASSERT_TRUE(BE32(bytes, offset) == 'mft2' || BE32(bytes, offset) == 'mAB ');
    // Channel counts of zero: the container is intact, the table is not.
    bytes[offset + 8] = 0;
    bytes[offset + 9] = 0;
    EXPECT_FALSE(IsValid(bytes));
}

TEST_F(ProfileValidityTest, BrokenContainersDoNotOpen) {
    const Bytes good = SrgbProfileBytes();
    ASSERT_TRUE(IsValid(good));
    size_t entry = 0;
    ASSERT_TRUE(FindTagEntry(good, 'cprt', entry));

    auto expectRefused = [](const Bytes& bytes, const char* what) {
        SetLastError(0);
        HPROFILE profile = OpenMemory(bytes);
        EXPECT_EQ(profile, nullptr) << what;
        if (profile) CloseColorProfile(profile);
        EXPECT_EQ(GetLastError(), DWORD(ERROR_INVALID_PROFILE)) << what;
    };
    expectRefused(Bytes(good.begin(), good.begin() + 131), "shorter than header and count");
    Bytes bytes = good;
    PutBE32(bytes, 128, 100000);
    expectRefused(bytes, "tag table past the end");
    bytes = good;
    PutBE32(bytes, entry + 8, static_cast<uint32_t>(good.size()));
    expectRefused(bytes, "tag data past the end");
    bytes = good;
    PutBE32(bytes, entry + 4, 0xFFFFFFF0u);
    expectRefused(bytes, "offset wrapping around");
    bytes = good;
    PutBE32(bytes, entry + 4, 130);
    expectRefused(bytes, "tag data inside the header");
    bytes = good;
    PutBE32(bytes, entry, 'desc');
    expectRefused(bytes, "signature twice");

    // A size field that disagrees with the block is not a reason to refuse.
    bytes = good;
    PutBE32(bytes, 0, 5);
    EXPECT_TRUE(IsValid(bytes));
}

TEST_F(ProfileValidityTest, SharedDataInAFileIsAReference) {
    Bytes bytes = SrgbProfileBytes();
    size_t cprt = 0, desc = 0;
    ASSERT_TRUE(FindTagEntry(bytes, 'cprt', cprt));
    ASSERT_TRUE(FindTagEntry(bytes, 'desc', desc));
    PutBE32(bytes, cprt + 4, BE32(bytes, desc + 4));
    PutBE32(bytes, cprt + 8, BE32(bytes, desc + 8));
    HPROFILE profile = OpenMemory(bytes);
    ASSERT_NE(profile, nullptr);
    DWORD size = 0;
    BOOL reference = FALSE;
    ASSERT_TRUE(FailsWith(GetColorProfileElement(profile, 'cprt', 0, &size, nullptr, &reference), ERROR_INSUFFICIENT_BUFFER));
    EXPECT_TRUE(reference);
    EXPECT_EQ(size, BE32(bytes, desc + 8));
    CloseColorProfile(profile);
}

}  // namespace
}  // namespace tesk::test
