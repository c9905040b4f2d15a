// The bytes of each tag type the writer lays out, as they land in the file,
// and the size account the header's profile size is made from.
#include <gtest/gtest.h>
#include <tesk/path.h>

#include <string>
#include <vector>

#include "icc/ICCWriteColorProfile.h"
#include "support/temp_env.h"
#include "written_profile.h"

namespace {

using Bytes = std::vector<uint8_t>;
using tesk::test::BE16;
using tesk::test::BE32;
using tesk::test::WrittenProfile;

class WriterLayout : public tesk::test::IsolatedTest {
protected:
    void SetUp() override {
        path_ = env_.ColorDir() + "/layout.icc";
        ASSERT_TRUE(writer_.OpenICCProfileForWrite(tesk::path::ToWindows(path_).c_str()));
    }
    // Closes the profile (valid or not, the platform writes it) and reads the file.
    WrittenProfile Finish() {
        const CM_PROFILE result = writer_.FinalizeProfileWrite();
        EXPECT_TRUE(result == CM_PROFILE_VALID || result == CM_PROFILE_INVALID) << result;
        return WrittenProfile(path_);
    }
    uint32_t DeclaredSize() {
        PROFILEHEADER header;
        writer_.CreateProfileHeader(header);
        return header.phSize;
    }

    std::string path_;
    CICCWriteColorProfile writer_;
};

TEST_F(WriterLayout, SingleGammaCurveIsU8Fixed8AndSampledCurveIsBigEndian) {
    SICCCurveType gamma{1, nullptr, 2.2f};
    ASSERT_TRUE(writer_.SetTRCCurveType('rTRC', gamma));
    uint16_t entries[3] = {0x0102, 0x8000, 0xFFFE};
    SICCCurveType sampled{3, entries, 0.0f};
    ASSERT_TRUE(writer_.SetTRCCurveType('gTRC', sampled));
    SICCCurveType identity{0, nullptr, 0.0f};
    ASSERT_TRUE(writer_.SetTRCCurveType('bTRC', identity));
    SICCCurveType missingEntries{4, nullptr, 0.0f};
    EXPECT_FALSE(writer_.SetTRCCurveType('kTRC', missingEntries));

    const WrittenProfile file = Finish();
    EXPECT_EQ(file.Tag('rTRC'), (Bytes{'c', 'u', 'r', 'v', 0, 0, 0, 0, 0, 0, 0, 1, 0x02, 0x33}));
    EXPECT_EQ(file.Tag('gTRC'),
              (Bytes{'c', 'u', 'r', 'v', 0, 0, 0, 0, 0, 0, 0, 3, 0x01, 0x02, 0x80, 0x00, 0xFF, 0xFE}));
    EXPECT_EQ(file.Tag('bTRC'), (Bytes{'c', 'u', 'r', 'v', 0, 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_FALSE(file.Tag('kTRC').has_value());
}

TEST_F(WriterLayout, VideoCardGammaFormulaAndTable) {
    SVCGTGamma formula{};
    formula.m_nGammaType = kVCGTFormula;
    formula.m_formula = {1, 2, 3, 4, 5, 6, 7, 8, 0x89ABCDEF};
    ASSERT_TRUE(writer_.SetVCGTInformation(formula));
    const Bytes formulaTag = Finish().Tag('vcgt').value();
    ASSERT_EQ(formulaTag.size(), 48u);
    std::vector<uint32_t> words;
    for (size_t at = 0; at < 48; at += 4) words.push_back(BE32(formulaTag, at));
    EXPECT_EQ(words, (std::vector<uint32_t>{'vcgt', 0, 1, 1, 2, 3, 4, 5, 6, 7, 8, 0x89ABCDEF}));

    ASSERT_TRUE(writer_.OpenICCProfileForWrite(tesk::path::ToWindows(path_).c_str()));
    uint16_t entries[2 * 3] = {0x1234, 0xABCD, 0x0001, 0xFF00, 0x00FF, 0x8001};
    SVCGTGamma table{};
    table.m_nGammaType = kVCGTTable;
    table.m_table = {2, 3, 1, entries};
    ASSERT_TRUE(writer_.SetVCGTInformation(table));
    const Bytes tableTag = Finish().Tag('vcgt').value();
    // 1 x 3 x 2 x 2 + 18 bytes; the entries in host (little-endian) order.
    EXPECT_EQ(tableTag, (Bytes{'v', 'c', 'g', 't', 0, 0, 0, 0, 0, 0, 0, 0, 0, 2, 0, 3, 0, 1, 0x34, 0x12, 0xCD, 0xAB,
                               0x01, 0x00, 0x00, 0xFF, 0xFF, 0x00, 0x01, 0x80}));
}

TEST_F(WriterLayout, ColorimetricTagsAreS15Fixed16) {
    SMyXYZNumber xyz{0.9642, 1.0, 0.8249};
    ASSERT_TRUE(writer_.SetMediaWhitePoint(xyz));
    SMyXYZNumber black{0.5 / 65536.0, 0.0, 2.0};
    ASSERT_TRUE(writer_.SetMediaBlackPoint(black));
    double matrix[9] = {1.0, -0.25, 0.0, 0.0, 1.5, 0.0, -1.0, 0.0, 32767.0};
    ASSERT_TRUE(writer_.SetChromaticAdaptationTag(matrix));
    EXPECT_FALSE(writer_.SetChromaticAdaptationTag(nullptr));
    EXPECT_EQ(DeclaredSize(), 132u + 12 * 3 + 20 + 20 + 44);

    const WrittenProfile file = Finish();
    EXPECT_EQ(file.Tag('wtpt'), (Bytes{'X', 'Y', 'Z', ' ', 0, 0, 0, 0, 0, 0, 0xF6, 0xD6, 0, 1, 0, 0, 0, 0, 0xD3, 0x2D}));
    const Bytes blackTag = file.Tag('bkpt').value();
    EXPECT_EQ(BE32(blackTag, 8), 1u) << "half a step rounds up";
    EXPECT_EQ(BE32(blackTag, 16), 0x00020000u);
    const Bytes chad = file.Tag('chad').value();
    ASSERT_EQ(chad.size(), 44u);
    std::vector<uint32_t> words;
    for (size_t at = 0; at < 44; at += 4) words.push_back(BE32(chad, at));
    EXPECT_EQ(words, (std::vector<uint32_t>{'sf32', 0, 0x00010000, 0xFFFFC000, 0, 0, 0x00018000, 0, 0xFFFF0000, 0,
                                            0x7FFF0000}));
}

TEST_F(WriterLayout, TextTags) {
    std::list<std::string> description{"Display", "ignored"};
    ASSERT_TRUE(writer_.SetStringTag('desc', description));
    std::list<std::string> names{"first", "second"};
    ASSERT_TRUE(writer_.SetStringTag('mluc', names));
    std::list<std::string> model{"Model"};
    ASSERT_TRUE(writer_.SetStringTag('dmdd', model));
    std::list<std::string> copyright{"(c) me", "unused"};
    ASSERT_TRUE(writer_.SetCopyrightTag('xxxx', copyright));

    const WrittenProfile file = Finish();
    // desc: the ASCII count covers every string, the text is the first one.
    const Bytes desc = file.Tag('desc').value();
    ASSERT_EQ(desc.size(), 14u + 91);
    EXPECT_EQ(BE32(desc, 0), static_cast<uint32_t>('desc'));
    EXPECT_EQ(BE32(desc, 8), 15u);
    EXPECT_EQ(std::string(desc.begin() + 12, desc.begin() + 20), std::string("Display\0", 8));
    for (size_t i = 19; i < desc.size(); ++i) ASSERT_EQ(desc[i], 0) << i;

    Bytes mluc{'m', 'l', 'u', 'c', 0, 0, 0, 0, 0, 0, 0, 2, 0, 0, 0, 12, 'E', 'N', 3, 'H', 0, 0, 0, 12, 0, 0, 0, 24};
    for (char c : std::string("firstsecond")) mluc.push_back(uint8_t(c));
    EXPECT_EQ(file.Tag('mluc'), mluc);

    // Other signatures get the version-2 description type.
    const Bytes dmdd = file.Tag('dmdd').value();
    ASSERT_EQ(dmdd.size(), 5u + 91);
    EXPECT_EQ(BE32(dmdd, 0), static_cast<uint32_t>('desc'));
    EXPECT_EQ(BE32(dmdd, 8), 6u);

    // The copyright goes under 'cprt' whatever the signature asked for.
    EXPECT_FALSE(file.Tag('xxxx').has_value());
    EXPECT_EQ(file.Tag('cprt'), (Bytes{'t', 'e', 'x', 't', 0, 0, 0, 0, '(', 'c', ')', ' ', 'm', 'e', 0}));
}

TEST_F(WriterLayout, SizeAccountAddsTheRemainderNotThePadding) {
    // Nine tags totalling 1000 bytes: eight curves of 112 bytes and one of 104.
    std::vector<uint16_t> entries(50, 0x4000);
    const unsigned long tags[9] = {'c001', 'c002', 'c003', 'c004', 'c005', 'c006', 'c007', 'c008', 'c009'};
    for (int i = 0; i < 9; ++i) {
        SICCCurveType curve{i < 8 ? 50u : 46u, entries.data(), 0.0f};
        ASSERT_TRUE(writer_.SetTRCCurveType(tags[i], curve));
    }
    EXPECT_EQ(DeclaredSize(), 1240u);
    ASSERT_TRUE(writer_.SetDefaultProfileHeader());

    // A 13-byte tag counts 14, a 15-byte one 18, a 16-byte one 16.
    std::list<std::string> four{"abcd"};
    ASSERT_TRUE(writer_.SetCopyrightTag('cprt', four));
    EXPECT_EQ(DeclaredSize(), 1240u + 12 + 14);
    std::list<std::string> six{"abcdef"};
    ASSERT_TRUE(writer_.SetCopyrightTag('cprt', six));
    EXPECT_EQ(DeclaredSize(), 1240u + 24 + 14 + 18) << "rewriting a tag counts it again";
    SICCParametricCurveType three{1.0, 2, 3, 0, 0, 0, 0, 0};
    ASSERT_TRUE(writer_.SetTRCParametricCurveType('para', three));
    EXPECT_EQ(DeclaredSize(), 1240u + 36 + 14 + 18 + 16);

    // The header set earlier keeps the size of its moment; the file itself
    // carries its true size.
    const WrittenProfile file = Finish();
    EXPECT_EQ(file.HeaderWord(0), file.Bytes().size());
    EXPECT_EQ(file.TagCount(), 11u);
}

}  // namespace
