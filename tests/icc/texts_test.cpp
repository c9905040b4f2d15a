// Description and copyright texts as the reader gives them.
#include "reader_support.h"

using namespace tesk::test::icc;

namespace {
std::unique_ptr<ReaderProbe> WithTag(uint32_t signature, const Bytes& tag) {
    ProfileBuilder builder = MatrixDisplay();
    builder.Set(signature, tag);
    auto reader = ReaderOf(builder.Build());
    EXPECT_NE(reader->GetProfile(), nullptr);
    return reader;
}
}  // namespace

TEST(ProfileTexts, DescriptionFromDescOrMluc) {
    CString text;
    ASSERT_TRUE(WithTag('desc', Desc("Monitor 2026"))->GetDescription(text));
    EXPECT_EQ(text, L"Monitor 2026");
    ASSERT_TRUE(WithTag('desc', Mluc({u"Écran \U0001F5A5", u"Screen"}))->GetDescription(text));
    EXPECT_EQ(text, L"Écran \U0001F5A5");
    // A type that is neither leaves the text alone.
    ProfileBuilder textDescription = MatrixDisplay();
    textDescription.Set('desc', Text("plain"));
    text = L"before";
    EXPECT_FALSE(LenientReaderOf(textDescription.Build())->GetDescription(text));
    EXPECT_EQ(text, L"before");
    EXPECT_FALSE(ReaderProbe().GetDescription(text));
}

TEST(ProfileTexts, CopyrightMustBeTextType) {
    CString text;
    ASSERT_TRUE(WithTag('cprt', Text("Copyright 2026 Nobody"))->GetCopyright(text));
    EXPECT_EQ(text, L"Copyright 2026 Nobody");
    text = L"before";
    EXPECT_FALSE(WithTag('cprt', Mluc({u"Copyright"}))->GetCopyright(text));
    EXPECT_EQ(text, L"before");
}

TEST(ProfileTexts, TextStringDecodesToUtf8AndKeepsOldTextOnEmptyDesc) {
    std::string text;
    auto reader = WithTag('zdsc', Mluc({u"\U0001F600 smile", u"second"}));
    void* handle = reader->GetProfile();
    ASSERT_TRUE(reader->GetTextString(handle, 'zdsc', text));
    EXPECT_EQ(text, "\xF0\x9F\x98\x80 smile");

    // An empty desc leaves the text; the answer is whether a text is there.
    auto empty = WithTag('zdsc', Desc("ignored", 0));
    text = "old";
    EXPECT_TRUE(empty->GetTextString(handle, 'zdsc', text));
    EXPECT_EQ(text, "old");
    text.clear();
    EXPECT_FALSE(empty->GetTextString(handle, 'zdsc', text));

    // No records: the text stays as it was.
    auto noRecords = WithTag('zdsc', Mluc({}));
    text = "kept";
    EXPECT_TRUE(noRecords->GetTextString(handle, 'zdsc', text));
    EXPECT_EQ(text, "kept");

    auto other = WithTag('zdsc', Text("plain"));
    EXPECT_FALSE(other->GetTextString(handle, 'zdsc', text = ""));
    EXPECT_FALSE(other->GetTextString(handle, 'none', text));
}
