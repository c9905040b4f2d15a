// Opening a profile held in memory: the checks made before the platform is
// asked, the platform's verdict, and the repair of version 2.1.0 profiles.
#include <tesk/loader.h>

#include <stdexcept>

#include "reader_support.h"
#include "support/temp_env.h"

using namespace tesk::test::icc;

namespace {

struct Outcome {
    bool result;
    bool valid;
    bool hasHandle;
};

Outcome Open(ReaderProbe& reader, Bytes& bytes, size_t size) {
    bool valid = false;
    const bool result = reader.CreateFromRawData(bytes.data(), static_cast<unsigned long>(size), valid);
    return {result, valid, reader.GetProfile() != nullptr};
}

Outcome Open(Bytes bytes) {
    ReaderProbe reader;
    return Open(reader, bytes, bytes.size());
}

// A copyright text without its terminator: the platform finds it invalid
// until the tag grows and zero bytes end the text.
Bytes UnterminatedCopyrightProfile(uint32_t version) {
    ProfileBuilder builder = MatrixDisplay();
    builder.version = version;
    Bytes copyright = TypeHeader('text', 8);
    for (char c : std::string("Copyright")) copyright.push_back(uint8_t(c));
    builder.Set('cprt', copyright);
    return builder.Build();
}

}  // namespace

TEST(RawProfileChecks, DeclaredSizeMustFitTheBlock) {
    Bytes bytes = MatrixDisplay().Build();
    ReaderProbe exact;
    Outcome accepted = Open(exact, bytes, bytes.size());
    EXPECT_TRUE(accepted.result && accepted.valid && accepted.hasHandle);

    ReaderProbe shorter;
    Outcome refused = Open(shorter, bytes, bytes.size() - 1);
    EXPECT_FALSE(refused.result);
    EXPECT_TRUE(refused.valid);
    EXPECT_FALSE(refused.hasHandle);

    Bytes padded = bytes;
    padded.resize(bytes.size() + 64, 0);
    EXPECT_TRUE(Open(padded).result);
}

TEST(RawProfileChecks, OneMatchingSignatureByteIsEnough) {
    // A block that passes the lenient test reaches the platform, which judges
    // the signature strictly: invalid (valid comes back false). A refused
    // block never reaches it (valid stays true).
    for (const char* signature : {"axxx", "xcxx", "xxsx", "xxxp"}) {
        Bytes bytes = MatrixDisplay().Build();
        std::copy(signature, signature + 4, bytes.begin() + 36);
        Outcome outcome = Open(bytes);
        EXPECT_FALSE(outcome.result) << signature;
        EXPECT_FALSE(outcome.valid) << signature;
    }
    Bytes bytes = MatrixDisplay().Build();
    std::copy_n("xxxx", 4, bytes.begin() + 36);
    Outcome refused = Open(bytes);
    EXPECT_FALSE(refused.result);
    EXPECT_TRUE(refused.valid);
}

TEST(RawProfileChecks, MajorVersionTwoToFourOnly) {
    for (uint32_t major : {1u, 5u, 0u, 0xFFu}) {
        ProfileBuilder builder = MatrixDisplay();
        builder.version = major << 24;
        Outcome outcome = Open(builder.Build());
        EXPECT_FALSE(outcome.result) << major;
        EXPECT_TRUE(outcome.valid) << major;
    }
    for (uint32_t version : {0x02000000u, 0x02400000u, 0x03000000u, 0x04300000u}) {
        ProfileBuilder builder = MatrixDisplay();
        builder.version = version;
        EXPECT_TRUE(Open(builder.Build()).result) << std::hex << version;
    }
}

TEST(RawProfileChecks, AtMost128Tags) {
    ProfileBuilder builder = MatrixDisplay();
    for (uint32_t i = 0; builder.TagCount() < 128; ++i) builder.Set('p000' + i, Text("private"));
    // The engine behind the platform takes at most 100 tags; judge the count
    // check alone with a platform that takes what it can open.
    Bytes most = builder.Build();
    EXPECT_NE(LenientReaderOf(most)->GetProfile(), nullptr);

    builder.Set('q000', Text("one too many"));
    Bytes tooMany = builder.Build();
    auto refused = LenientReaderOf(tooMany);
    EXPECT_EQ(refused->GetProfile(), nullptr);
    Outcome outcome = Open(tooMany);
    EXPECT_FALSE(outcome.result);
    EXPECT_TRUE(outcome.valid);
}

TEST(RawProfileChecks, BlocksTooShortForAHeaderAreRefusedSafely) {
    for (size_t size : {0u, 4u, 37u, 40u, 129u}) {
        Bytes bytes = MatrixDisplay().Build();
        PutBE32(bytes, 0, uint32_t(size));
        ReaderProbe reader;
        Outcome outcome = Open(reader, bytes, size);
        EXPECT_FALSE(outcome.result) << size;
        EXPECT_FALSE(outcome.hasHandle) << size;
    }
    ReaderProbe reader;
    bool valid = false;
    EXPECT_FALSE(reader.CreateFromRawData(nullptr, 0, valid));
    EXPECT_TRUE(valid);
}

TEST(RawProfileRepair, Version210ProfileHasItsCopyrightResizedAndPasses) {
    ReaderProbe reader;
    Bytes bytes = UnterminatedCopyrightProfile(0x02100000);
    Outcome outcome = Open(reader, bytes, bytes.size());
    ASSERT_TRUE(outcome.result);
    EXPECT_TRUE(outcome.valid);

    unsigned long size = 0;
    std::unique_ptr<unsigned char[]> copyright(reader.GetRequestedTag('cprt', size));
    ASSERT_TRUE(copyright);
    EXPECT_EQ(size, 52u);
    // Only the resize takes effect: the old text stays, now terminated.
    CString text;
    ASSERT_TRUE(reader.GetCopyright(text));
    EXPECT_EQ(text, L"Copyright");
}

TEST(RawProfileRepair, OtherVersionsAreAskedAgainWithoutRepair) {
    Outcome outcome = Open(UnterminatedCopyrightProfile(0x02200000));
    EXPECT_FALSE(outcome.result);
    EXPECT_FALSE(outcome.valid);
    EXPECT_FALSE(outcome.hasHandle);

    // The repair cannot mend anything but the copyright.
    ProfileBuilder noWhite = MatrixDisplay();
    noWhite.version = 0x02100000;
    noWhite.Remove('wtpt');
    Outcome stillInvalid = Open(noWhite.Build());
    EXPECT_FALSE(stillInvalid.result);
    EXPECT_FALSE(stillInvalid.valid);
}

TEST(RawProfileRepair, ReaderMadeOverAHandleCannotRepair) {
    void* none = nullptr;
    ReaderProbe overHandle(none, L"given", true);
    EXPECT_EQ(overHandle.m_pfnSetColorProfileElement, nullptr);
    EXPECT_EQ(overHandle.m_pfnSetColorProfileElementSize, nullptr);
    Bytes bytes = UnterminatedCopyrightProfile(0x02100000);
    Outcome outcome = Open(overHandle, bytes, bytes.size());
    EXPECT_FALSE(outcome.result);
    EXPECT_FALSE(outcome.valid);
}

TEST(RawProfileOpen, PlatformRefusalKeepsValidTrue) {
    Bytes bytes = MatrixDisplay().Build();
    PutBE32(bytes, 136, 0x7FFFFF00);  // first tag's offset far outside the block
    Outcome outcome = Open(bytes);
    EXPECT_FALSE(outcome.result);
    EXPECT_TRUE(outcome.valid);
    EXPECT_FALSE(outcome.hasHandle);
}

namespace {
HPROFILE WINAPI ThrowingOpen(PPROFILE, DWORD, DWORD, DWORD) { throw std::runtime_error("decoder blew up"); }
}  // namespace

TEST(RawProfileOpen, PlatformExceptionIsCaught) {
    tesk::loader::Substitute throwing;
    throwing.overrides["OpenColorProfileW"] = reinterpret_cast<FARPROC>(reinterpret_cast<void (*)()>(&ThrowingOpen));
    tesk::loader::SetSubstitute(L"MSCMS.DLL", throwing);
    ReaderProbe reader;
    tesk::loader::ClearSubstitutes();
    Bytes bytes = MatrixDisplay().Build();
    Outcome outcome = Open(reader, bytes, bytes.size());
    EXPECT_FALSE(outcome.result);
    EXPECT_TRUE(outcome.valid);
    EXPECT_FALSE(outcome.hasHandle);
}

TEST(RawProfileOpen, AFailureDropsThePreviousHandleWithoutClosingIt) {
    ReaderProbe reader;
    Bytes good = MatrixDisplay().Build();
    ASSERT_TRUE(Open(reader, good, good.size()).result);
    void* previous = reader.GetProfile();

    Bytes bad = good;
    bad[8] = 7;
    EXPECT_FALSE(Open(reader, bad, bad.size()).result);
    EXPECT_EQ(reader.GetProfile(), nullptr);
    EXPECT_TRUE(IsOpen(reader, previous));
    reader.CloseProfile(previous);
}
