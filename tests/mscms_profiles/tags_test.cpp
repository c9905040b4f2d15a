// Headers, tags and whole-profile bytes through the profile handle.
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <fstream>

#include "profile_helpers.h"
#include "support/temp_env.h"

namespace tesk::test {
namespace {

class ProfileTagsTest : public IsolatedTest {
protected:
    void SetUp() override {
        profile_ = OpenMemory(SrgbProfileBytes(), PROFILE_READWRITE);
        ASSERT_NE(profile_, nullptr);
    }
    void TearDown() override {
        if (profile_) CloseColorProfile(profile_);
    }
    DWORD Count() {
        DWORD count = 0;
        EXPECT_TRUE(GetCountColorProfileElements(profile_, &count));
        return count;
    }
    HPROFILE profile_ = nullptr;
};

TEST_F(ProfileTagsTest, HeaderComesAndGoesInHostOrder) {
    PROFILEHEADER header{};
    ASSERT_TRUE(GetColorProfileHeader(profile_, &header));
    EXPECT_EQ(header.phSignature, DWORD('acsp'));
    EXPECT_EQ(header.phClass, DWORD(CLASS_MONITOR));
    header.phClass = CLASS_COLORSPACE;
    header.phManufacturer = 'TEST';
    header.phDateTime[0] = (2025u << 16) | 7;
    header.phIlluminant.ciexyzZ = 0xD32D;
    header.phAttributes[1] = 15;
    header.phReserved[43] = 0x5A;
    header.phSize = 0x00000c48;  // read back as set; the written bytes carry the true size
    ASSERT_TRUE(SetColorProfileHeader(profile_, &header));

    PROFILEHEADER back{};
    ASSERT_TRUE(GetColorProfileHeader(profile_, &back));
    const Bytes bytes = BytesOf(profile_);
    EXPECT_EQ(std::memcmp(&header, &back, sizeof(header)), 0);
    EXPECT_EQ(BE32(bytes, 0), bytes.size());
    EXPECT_EQ(BE32(bytes, 12), DWORD('spac'));
    EXPECT_EQ(BE32(bytes, 24), (2025u << 16) | 7);
    EXPECT_EQ(BE32(bytes, 48), DWORD('TEST'));
    EXPECT_EQ(BE32(bytes, 60), 15u);
    EXPECT_EQ(BE32(bytes, 76), 0xD32Du);
    EXPECT_EQ(bytes[127], 0x5A);
}

TEST_F(ProfileTagsTest, ResizeWriteReadAndDelete) {
    const DWORD before = Count();
    ASSERT_TRUE(SetColorProfileElementSize(profile_, 'tst1', 10));
    EXPECT_EQ(Count(), before + 1);
    EXPECT_EQ(TagOf(profile_, 'tst1'), Bytes(10, 0));

    DWORD count = 3;
    ASSERT_TRUE(SetColorProfileElement(profile_, 'tst1', 2, &count, const_cast<char*>("abc")));
    EXPECT_EQ(TagOf(profile_, 'tst1'), (Bytes{0, 0, 'a', 'b', 'c', 0, 0, 0, 0, 0}));

    ASSERT_TRUE(SetColorProfileElementSize(profile_, 'tst1', 4));  // keeps the bytes up to the new size
    ASSERT_TRUE(SetColorProfileElementSize(profile_, 'tst1', 6));  // growth is zero-filled
    EXPECT_EQ(TagOf(profile_, 'tst1'), (Bytes{0, 0, 'a', 'b', 0, 0}));

    uint8_t part[8] = {};
    BOOL reference = TRUE;
    count = sizeof(part);
    ASSERT_TRUE(GetColorProfileElement(profile_, 'tst1', 3, &count, part, &reference));
    EXPECT_EQ(count, 3u);  // only what lies past the offset
    EXPECT_EQ(part[0], 'b');
    count = 1;
    EXPECT_TRUE(FailsWith(GetColorProfileElement(profile_, 'tst1', 7, &count, part, &reference), ERROR_INVALID_PARAMETER));

    // Writing past the end grows the tag; writing a missing tag creates it.
    count = 2;
    ASSERT_TRUE(SetColorProfileElement(profile_, 'tst2', 4, &count, const_cast<char*>("xy")));
    EXPECT_EQ(TagOf(profile_, 'tst2'), (Bytes{0, 0, 0, 0, 'x', 'y'}));
    count = 0;
    EXPECT_TRUE(FailsWith(SetColorProfileElement(profile_, 'tst3', 0, &count, part), ERROR_TAG_NOT_FOUND));

    ASSERT_TRUE(SetColorProfileElementSize(profile_, 'tst1', 0));
    EXPECT_EQ(Count(), before + 1);
    count = 99;
    EXPECT_FALSE(GetColorProfileElement(profile_, 'tst1', 0, &count, nullptr, &reference));
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(GetLastError(), DWORD(ERROR_TAG_NOT_FOUND));
    EXPECT_TRUE(FailsWith(SetColorProfileElementSize(profile_, 'tst1', 0), ERROR_TAG_NOT_FOUND));
}

TEST_F(ProfileTagsTest, EnumerationFollowsTheTagTable) {
    const Bytes bytes = BytesOf(profile_);
    const DWORD count = Count();
    ASSERT_EQ(count, BE32(bytes, 128));
    for (DWORD i = 1; i <= count; ++i) {
        TAGTYPE tag = 0;
        ASSERT_TRUE(GetColorProfileElementTag(profile_, i, &tag));
        EXPECT_EQ(tag, BE32(bytes, 132 + 12 * (i - 1)));
    }
    TAGTYPE tag = 0;
    EXPECT_FALSE(GetColorProfileElementTag(profile_, 0, &tag));
    EXPECT_TRUE(FailsWith(GetColorProfileElementTag(profile_, count + 1, &tag), ERROR_INVALID_PARAMETER));
}

TEST_F(ProfileTagsTest, ReferencesShareDataUntilResized) {
    ASSERT_TRUE(SetColorProfileElementReference(profile_, 'ref1', 'cprt'));
    EXPECT_EQ(TagOf(profile_, 'ref1'), TagOf(profile_, 'cprt'));
    DWORD size = 0;
    BOOL reference = FALSE;
    ASSERT_TRUE(FailsWith(GetColorProfileElement(profile_, 'cprt', 0, &size, nullptr, &reference), ERROR_INSUFFICIENT_BUFFER));
    EXPECT_TRUE(reference);

    const Bytes bytes = BytesOf(profile_);
    size_t a = 0, b = 0;
    ASSERT_TRUE(FindTagEntry(bytes, 'cprt', a));
    ASSERT_TRUE(FindTagEntry(bytes, 'ref1', b));
    EXPECT_EQ(BE32(bytes, a + 4), BE32(bytes, b + 4));  // one copy of the data

    DWORD count = 1;
    ASSERT_TRUE(SetColorProfileElement(profile_, 'ref1', 0, &count, const_cast<char*>("T")));
    EXPECT_EQ(TagOf(profile_, 'cprt')[0], 'T');

    ASSERT_TRUE(SetColorProfileElementSize(profile_, 'ref1', 4));
    EXPECT_EQ(TagOf(profile_, 'ref1').size(), 4u);
    EXPECT_GT(TagOf(profile_, 'cprt').size(), 4u);
    ASSERT_TRUE(FailsWith(GetColorProfileElement(profile_, 'cprt', 0, &size, nullptr, &reference), ERROR_INSUFFICIENT_BUFFER));
    EXPECT_FALSE(reference);

    EXPECT_TRUE(FailsWith(SetColorProfileElementReference(profile_, 'ref1', 'cprt'), ERROR_DUPLICATE_TAG));
    EXPECT_TRUE(FailsWith(SetColorProfileElementReference(profile_, 'ref2', 'none'), ERROR_TAG_NOT_FOUND));
}

TEST_F(ProfileTagsTest, SerializationAlignsTagsAndReportsTrueSize) {
    ASSERT_TRUE(SetColorProfileElementSize(profile_, 'odd1', 13));
    ASSERT_TRUE(SetColorProfileElementSize(profile_, 'odd2', 5));
    const Bytes bytes = BytesOf(profile_);
    ASSERT_FALSE(bytes.empty());
    EXPECT_EQ(BE32(bytes, 0), bytes.size());
    EXPECT_EQ(bytes.size() % 4, 0u);
    const uint32_t count = BE32(bytes, 128);
    for (uint32_t i = 0; i < count; ++i) {
        const uint32_t offset = BE32(bytes, 132 + 12 * i + 4), size = BE32(bytes, 132 + 12 * i + 8);
        EXPECT_EQ(offset % 4, 0u);
        EXPECT_GE(offset, 132 + 12 * count);
        EXPECT_LE(offset + size, bytes.size());
    }
    DWORD small = static_cast<DWORD>(bytes.size() - 1);
    Bytes buffer(bytes.size());
    EXPECT_TRUE(FailsWith(GetColorProfileFromHandle(profile_, buffer.data(), &small), ERROR_INSUFFICIENT_BUFFER));
    EXPECT_EQ(small, bytes.size());
    // The bytes read back open as the same profile.
    HPROFILE again = OpenMemory(bytes);
    ASSERT_NE(again, nullptr);
    EXPECT_EQ(BytesOf(again), bytes);
    CloseColorProfile(again);
}

TEST_F(ProfileTagsTest, MemoryProfileIsAPrivateCopyAndReadOnlyRefusesChanges) {
    Bytes original = SrgbProfileBytes();
    const Bytes copy = original;
    HPROFILE writable = OpenMemory(original, PROFILE_READWRITE);
    ASSERT_TRUE(SetColorProfileElementSize(writable, 'cprt', 0));
    EXPECT_TRUE(CloseColorProfile(writable));
    EXPECT_EQ(original, copy);

    HPROFILE profile = OpenMemory(original, PROFILE_READ);
    PROFILEHEADER header{};
    ASSERT_TRUE(GetColorProfileHeader(profile, &header));
    EXPECT_TRUE(FailsWith(SetColorProfileHeader(profile, &header), ERROR_ACCESS_DENIED));
    DWORD count = 1;
    EXPECT_FALSE(SetColorProfileElement(profile, 'cprt', 0, &count, const_cast<char*>("x")));
    EXPECT_FALSE(SetColorProfileElementSize(profile, 'cprt', 4));
    EXPECT_TRUE(FailsWith(SetColorProfileElementReference(profile, 'ref1', 'cprt'), ERROR_ACCESS_DENIED));
    EXPECT_TRUE(CloseColorProfile(profile));
}

TEST_F(ProfileTagsTest, ReadWriteFileIsWrittenOnCloseOnly) {
    const std::string path = env_.Root() + "/made.icc";
    HPROFILE made = OpenFile(Wide(path), PROFILE_READWRITE, CREATE_ALWAYS);
    ASSERT_NE(made, nullptr);
    DWORD count = 0;
    ASSERT_TRUE(GetCountColorProfileElements(made, &count));
    EXPECT_EQ(count, 0u);  // CREATE_ALWAYS starts empty
    PROFILEHEADER header{};
    ASSERT_TRUE(GetColorProfileHeader(profile_, &header));
    ASSERT_TRUE(SetColorProfileHeader(made, &header));
    for (DWORD i = 1; i <= Count(); ++i) {
        TAGTYPE tag = 0;
        ASSERT_TRUE(GetColorProfileElementTag(profile_, i, &tag));
        Bytes data = TagOf(profile_, tag);
        DWORD size = static_cast<DWORD>(data.size());
        ASSERT_TRUE(SetColorProfileElement(made, tag, 0, &size, data.data()));
    }
    EXPECT_FALSE(std::filesystem::exists(path));
    ASSERT_TRUE(CloseColorProfile(made));
    const Bytes written = ReadBytes(path);
    EXPECT_TRUE(IsValid(written));
    HPROFILE check = OpenMemory(written);
    ASSERT_NE(check, nullptr);
    ASSERT_TRUE(GetCountColorProfileElements(check, &count));
    EXPECT_EQ(count, Count());
    EXPECT_EQ(TagOf(check, 'rTRC'), TagOf(profile_, 'rTRC'));
    CloseColorProfile(check);

    // Re-opened read-write (Windows-form path) and changed: the file follows on close.
    std::wstring windowsPath = Wide(path);
    std::replace(windowsPath.begin(), windowsPath.end(), L'/', L'\\');
    HPROFILE again = OpenFile(windowsPath, PROFILE_READWRITE, OPEN_EXISTING);
    ASSERT_NE(again, nullptr);
    ASSERT_TRUE(SetColorProfileElementSize(again, 'cprt', 0));
    EXPECT_EQ(ReadBytes(path), written);
    ASSERT_TRUE(CloseColorProfile(again));
    HPROFILE reread = OpenFile(Wide(path), PROFILE_READ, OPEN_EXISTING);
    ASSERT_NE(reread, nullptr);
    EXPECT_TRUE(TagOf(reread, 'cprt').empty());
    EXPECT_EQ(TagOf(reread, 'desc'), TagOf(profile_, 'desc'));
    CloseColorProfile(reread);
}

TEST_F(ProfileTagsTest, CreationModesFollowTheFile) {
    const std::wstring missing = Wide(env_.Root() + "/missing.icc");
    EXPECT_TRUE(FailsWith(OpenFile(missing, PROFILE_READ, OPEN_EXISTING), ERROR_FILE_NOT_FOUND));
    const std::string existing = env_.Root() + "/existing.icc";
    WriteBytes(existing, SrgbProfileBytes());
    EXPECT_TRUE(FailsWith(OpenFile(Wide(existing), PROFILE_READWRITE, CREATE_NEW), ERROR_FILE_EXISTS));
    EXPECT_EQ(OpenFile(Wide(env_.Root() + "/no/such/folder.icc"), PROFILE_READWRITE, CREATE_ALWAYS), nullptr);
    EXPECT_EQ(GetLastError(), DWORD(ERROR_PATH_NOT_FOUND));
    // A read-only open writes nothing back.
    HPROFILE readOnly = OpenFile(Wide(existing), PROFILE_READ, OPEN_EXISTING);
    ASSERT_NE(readOnly, nullptr);
    EXPECT_TRUE(CloseColorProfile(readOnly));
    EXPECT_EQ(ReadBytes(existing), SrgbProfileBytes());
}

// Bytes this process has read through system calls so far.
long long BytesReadByProcess() {
    std::ifstream io("/proc/self/io");
    std::string key;
    long long value = 0;
    while (io >> key >> value)
        if (key == "rchar:") return value;
    return -1;
}

TEST_F(ProfileTagsTest, AFileIsReadOnceUntilItChanges) {
    const std::string settled = DataPath("ColorProfile/ISO Coated (FOGRA39).icc");
    HPROFILE first = OpenFile(Wide(settled), PROFILE_READ, OPEN_EXISTING);
    ASSERT_NE(first, nullptr);
    CloseColorProfile(first);
    const long long before = BytesReadByProcess();
    HPROFILE again = OpenFile(Wide(settled), PROFILE_READ, OPEN_EXISTING);
    const long long read = BytesReadByProcess() - before;
    ASSERT_NE(again, nullptr);
    EXPECT_LT(read, 4096) << "the unchanged profile was read again";
    EXPECT_EQ(BytesOf(again), ReadBytes(settled));
    CloseColorProfile(again);

    // Rewritten in place, same size: the new bytes, never the old.
    const std::string path = env_.Root() + "/changing.icc";
    Bytes bytes = SrgbProfileBytes();
    WriteBytes(path, bytes);
    CloseColorProfile(OpenFile(Wide(path), PROFILE_READ, OPEN_EXISTING));
    bytes[127] ^= 1;  // reserved header byte
    WriteBytes(path, bytes);
    HPROFILE changed = OpenFile(Wide(path), PROFILE_READ, OPEN_EXISTING);
    ASSERT_NE(changed, nullptr);
    EXPECT_EQ(BytesOf(changed), bytes);
    CloseColorProfile(changed);
}

}  // namespace
}  // namespace tesk::test
