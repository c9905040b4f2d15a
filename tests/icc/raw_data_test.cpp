// Opening a profile held in memory: the checks made before the platform is
// asked, the platform's verdict, and the repair of version 2.1.0 profiles.
#include <tesk/loader.h>

#include <functional>
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

// `valid` turns false only when the platform opened the profile and judged it;
// a block refused before (or by) the platform's open leaves it true.
TEST(RawProfileChecks, VerdictPerDamage) {
    auto signature = [](const char* s) { return [s](Bytes& b) { std::copy_n(s, 4, b.begin() + 36); }; };
    auto version = [](uint32_t v) { return [v](Bytes& b) { PutBE32(b, 8, v); }; };
    struct Row {
        const char* what;
        std::function<void(Bytes&)> damage;
        long sizeDelta;
        bool result, valid;
    };
    const Row rows[] = {
        {"intact", nullptr, 0, true, true},
        {"block longer than declared", nullptr, 64, true, true},
        {"block one byte short", nullptr, -1, false, true},
        // One matching signature byte passes the lenient test; the platform is strict.
        {"axxx", signature("axxx"), 0, false, false},
        {"xxxx", signature("xxxx"), 0, false, true},
        {"major 0", version(0), 0, false, true},
        {"major 255", version(0xFF000000), 0, false, true},
        {"2.0", version(0x02000000), 0, true, true},
        {"4.3", version(0x04300000), 0, true, true},
        {"first tag far outside", [](Bytes& b) { PutBE32(b, 136, 0x7FFFFF00); }, 0, false, true},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        Bytes bytes = MatrixDisplay().Build();
        const size_t declared = bytes.size();
        if (row.damage) row.damage(bytes);
        bytes.resize(declared + 64, 0);
        ReaderProbe reader;
        const Outcome outcome = Open(reader, bytes, size_t(long(declared) + row.sizeDelta));
        EXPECT_EQ(outcome.result, row.result);
        EXPECT_EQ(outcome.valid, row.valid);
        EXPECT_EQ(outcome.hasHandle, row.result);
    }
}

TEST(RawProfileChecks, AtMost128Tags) {
    ProfileBuilder builder = MatrixDisplay();
    for (uint32_t i = 0; builder.TagCount() < 128; ++i) builder.Set('p000' + i, Text("private"));
    // The engine behind the platform takes at most 100 tags: judge the count
    // alone with a platform that takes what it can open.
    EXPECT_NE(LenientReaderOf(builder.Build())->GetProfile(), nullptr);
    builder.Set('q000', Text("one too many"));
    EXPECT_EQ(LenientReaderOf(builder.Build())->GetProfile(), nullptr);
    Outcome outcome = Open(builder.Build());
    EXPECT_FALSE(outcome.result);
    EXPECT_TRUE(outcome.valid);
}

TEST(RawProfileChecks, BlocksTooShortForAHeaderAreRefusedSafely) {
    for (size_t size : {0u, 4u, 37u, 40u, 129u}) {
        Bytes bytes = MatrixDisplay().Build();
        PutBE32(bytes, 0, uint32_t(size));
        ReaderProbe reader;
        Outcome outcome = Open(reader, bytes, size);
        EXPECT_FALSE(outcome.result || outcome.hasHandle) << size;
    }
    bool valid = false;
    EXPECT_FALSE(ReaderProbe().CreateFromRawData(nullptr, 0, valid));
    EXPECT_TRUE(valid);
}

TEST(RawProfileRepair, OnlyVersion210ProfilesHaveTheirCopyrightResized) {
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

    outcome = Open(UnterminatedCopyrightProfile(0x02200000));
    EXPECT_FALSE(outcome.result || outcome.valid || outcome.hasHandle);
    // The repair mends nothing but the copyright.
    ProfileBuilder noWhite = MatrixDisplay();
    noWhite.version = 0x02100000;
    noWhite.Remove('wtpt');
    outcome = Open(noWhite.Build());
    EXPECT_FALSE(outcome.result || outcome.valid);
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
    EXPECT_FALSE(outcome.result || outcome.hasHandle);
    EXPECT_TRUE(outcome.valid);
}
