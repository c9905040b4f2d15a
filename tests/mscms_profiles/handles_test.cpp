// Closed, foreign and null handles and pointers fail cleanly.
#include <gtest/gtest.h>

#include "profile_helpers.h"
#include "support/temp_env.h"

namespace tesk::test {
namespace {

class ProfileHandlesTest : public IsolatedTest {
protected:
    static void ExpectAllRefuse(HPROFILE handle) {
        PROFILEHEADER header{};
        DWORD count = 4;
        BOOL flag = FALSE;
        TAGTYPE tag = 0;
        uint8_t buffer[16] = {};
        auto expectInvalidHandle = [](BOOL result, const char* what) {
            EXPECT_FALSE(result) << what;
            EXPECT_EQ(GetLastError(), DWORD(ERROR_INVALID_HANDLE)) << what;
        };
        expectInvalidHandle(IsColorProfileValid(handle, &flag), "IsColorProfileValid");
        expectInvalidHandle(GetColorProfileHeader(handle, &header), "GetColorProfileHeader");
        expectInvalidHandle(SetColorProfileHeader(handle, &header), "SetColorProfileHeader");
        expectInvalidHandle(GetCountColorProfileElements(handle, &count), "GetCountColorProfileElements");
        expectInvalidHandle(GetColorProfileElementTag(handle, 1, &tag), "GetColorProfileElementTag");
        expectInvalidHandle(GetColorProfileElement(handle, 'desc', 0, &count, buffer, &flag), "GetColorProfileElement");
        expectInvalidHandle(SetColorProfileElement(handle, 'desc', 0, &count, buffer), "SetColorProfileElement");
        expectInvalidHandle(SetColorProfileElementSize(handle, 'desc', 4), "SetColorProfileElementSize");
        expectInvalidHandle(SetColorProfileElementReference(handle, 'abcd', 'desc'), "Reference");
        expectInvalidHandle(GetColorProfileFromHandle(handle, buffer, &count), "GetColorProfileFromHandle");
        expectInvalidHandle(CloseColorProfile(handle), "CloseColorProfile");
    }
};

TEST_F(ProfileHandlesTest, ClosedAndForeignHandlesFail) {
    HPROFILE profile = OpenMemory(SrgbProfileBytes(), PROFILE_READWRITE);
    ASSERT_NE(profile, nullptr);
    ASSERT_TRUE(CloseColorProfile(profile));
    ExpectAllRefuse(profile);
    ExpectAllRefuse(nullptr);
    int local = 0;
    ExpectAllRefuse(&local);
    ExpectAllRefuse(reinterpret_cast<HPROFILE>(uintptr_t{0x5052460000000000ull}));
}

TEST_F(ProfileHandlesTest, NullPointersAndBadArgumentsFail) {
    HPROFILE profile = OpenMemory(SrgbProfileBytes(), PROFILE_READWRITE);
    ASSERT_NE(profile, nullptr);
    auto expectInvalidParameter = [](BOOL result, const char* what) {
        EXPECT_FALSE(result) << what;
        EXPECT_EQ(GetLastError(), DWORD(ERROR_INVALID_PARAMETER)) << what;
    };
    DWORD count = 4;
    expectInvalidParameter(IsColorProfileValid(profile, nullptr), "valid");
    expectInvalidParameter(GetColorProfileHeader(profile, nullptr), "get header");
    expectInvalidParameter(SetColorProfileHeader(profile, nullptr), "set header");
    expectInvalidParameter(GetCountColorProfileElements(profile, nullptr), "count");
    expectInvalidParameter(GetColorProfileElementTag(profile, 1, nullptr), "tag");
    expectInvalidParameter(GetColorProfileElement(profile, 'desc', 0, nullptr, nullptr, nullptr), "element");
    expectInvalidParameter(SetColorProfileElement(profile, 'desc', 0, &count, nullptr), "set element");
    expectInvalidParameter(GetColorProfileFromHandle(profile, nullptr, nullptr), "bytes");
    EXPECT_TRUE(CloseColorProfile(profile));

    // Opening: no record, unknown access, creation mode or record type.
    const Bytes bytes = SrgbProfileBytes();
    PROFILE record{PROFILE_MEMBUFFER, const_cast<uint8_t*>(bytes.data()), static_cast<DWORD>(bytes.size())};
    EXPECT_EQ(OpenColorProfileW(nullptr, PROFILE_READ, 0, OPEN_EXISTING), nullptr);
    EXPECT_EQ(OpenColorProfileW(&record, 7, 0, OPEN_EXISTING), nullptr);
    EXPECT_EQ(OpenColorProfileW(&record, PROFILE_READ, 0, 9), nullptr);
    record.dwType = 5;
    EXPECT_TRUE(FailsWith(OpenColorProfileW(&record, PROFILE_READ, 0, OPEN_EXISTING), ERROR_INVALID_PARAMETER));
    record = {PROFILE_MEMBUFFER, nullptr, 100};
    EXPECT_EQ(OpenColorProfileW(&record, PROFILE_READ, 0, OPEN_EXISTING), nullptr);
    // A file name record: the byte count bounds the name even without a terminator.
    const std::wstring name = L"sRGB Color Space Profile.icmXXXX";
    record = {PROFILE_FILENAME, const_cast<wchar_t*>(name.c_str()), static_cast<DWORD>(2 * (name.size() - 4))};
    HPROFILE bounded = OpenColorProfileW(&record, PROFILE_READ, 0, OPEN_EXISTING);
    EXPECT_NE(bounded, nullptr);
    if (bounded) CloseColorProfile(bounded);
}

}  // namespace
}  // namespace tesk::test
