// Tag decoders on raw bytes: the documented readings, and what happens when
// the counts, offsets and lengths in a tag do not fit the tag.
#include <gtest/gtest.h>

#include <memory>

#include "host/VException.h"
#include "icc/TagDecoders.h"
#include "icc_builder.h"

using namespace tesk::icc;
using namespace tesk::test::icc;

namespace {

TagBytes View(const Bytes& bytes) { return TagBytes(bytes.data(), bytes.size()); }

struct OwnedCurve : SICCCurveType {
    OwnedCurve() : SICCCurveType{} {}
    ~OwnedCurve() { delete[] m_pEntries; }
};

}  // namespace

TEST(CurveDecoding, ATagShorterThanItsCountIsErrorCode202) {
    Bytes claims256 = CurvSampled(std::vector<uint16_t>(256, 7));
    claims256.resize(100);
    OwnedCurve curve;
    try {
        DecodeCurve(View(claims256), curve);
        FAIL() << "no exception";
    } catch (const CVException& e) {
        EXPECT_EQ(e.GetCode(), 202);
    }
    // The entries the tag holds are read before the length is checked; the
    // rest read as zero.
    ASSERT_EQ(curve.m_nCount, 256u);
    ASSERT_NE(curve.m_pEntries, nullptr);
    EXPECT_EQ(curve.m_pEntries[43], 7);
    EXPECT_EQ(curve.m_pEntries[44], 0);
    delete[] curve.m_pEntries;
    curve.m_pEntries = nullptr;
    // A count of four billion in a 12-byte tag must not allocate.
    Bytes huge = CurvIdentity();
    PutBE32(huge, 8, 0xFFFFFFFF);
    EXPECT_THROW(DecodeCurve(View(huge), curve), CVException);
    Bytes gammaCut = CurvGamma(0x0100);
    gammaCut.resize(13);
    EXPECT_THROW(DecodeCurve(View(gammaCut), curve), CVException);
}

TEST(VideoCardGamma, TablesGetDoubleRoomTwoByteDropsTheLastValueOneByteIsScaled) {
    Bytes data;
    for (int i = 0; i < 768; ++i) data.insert(data.end(), {uint8_t(i >> 8), uint8_t(i + 1)});
    Bytes tag = VcgtTable(3, 256, 2, data);
    ASSERT_EQ(tag.size(), 1554u);
    SVCGTGamma gamma{};
    ASSERT_TRUE(DecodeVCGT(View(tag), gamma));
    std::unique_ptr<uint16_t[]> values(gamma.m_table.m_pData);
    EXPECT_EQ(gamma.m_nGammaType, kVCGTTable);
    EXPECT_EQ(gamma.m_table.m_nChannels, 3);
    EXPECT_EQ(gamma.m_table.m_nEntryCount, 256);
    EXPECT_EQ(gamma.m_table.m_nEntrySize, 2);
    EXPECT_EQ(values[0], 0x0001);
    EXPECT_EQ(values[766], ((766 >> 8) << 8) | ((766 + 1) & 0xFF));
    EXPECT_EQ(values[767], 0);  // its last byte is the tag's last byte
    for (int i = 768; i < 1536; ++i) ASSERT_EQ(values[i], 0) << i;

    Bytes ramp(768);
    for (int i = 0; i < 768; ++i) ramp[i] = uint8_t(i);
    SVCGTGamma narrow{};
    ASSERT_TRUE(DecodeVCGT(View(VcgtTable(3, 256, 1, ramp)), narrow));
    std::unique_ptr<uint16_t[]> scaled(narrow.m_table.m_pData);
    EXPECT_EQ(scaled[1], 0x0100);
    EXPECT_EQ(scaled[767], 0xFF00);
}

TEST(VideoCardGamma, ClaimsBeyondTheTagReadZerosOrFail) {
    SVCGTGamma gamma{};
    ASSERT_TRUE(DecodeVCGT(View(VcgtTable(3, 256, 2, {})), gamma));
    std::unique_ptr<uint16_t[]> values(gamma.m_table.m_pData);
    for (int i = 0; i < 1536; ++i) ASSERT_EQ(values[i], 0);
    SVCGTGamma huge{};
    EXPECT_FALSE(DecodeVCGT(View(VcgtTable(0xFFFF, 0xFFFF, 0xFFFF, {})), huge));
    EXPECT_EQ(huge.m_table.m_pData, nullptr);
}

TEST(XYZDecoding, ValuesNeedTheirPlaceInTheTag) {
    Bytes tag = XYZ(0.9642, 1.0, 0.8249);
    SMyXYZNumber xyz{-1, -1, -1};
    ASSERT_TRUE(DecodeXYZ(View(tag), xyz));
    EXPECT_NEAR(xyz.X, 0.9642, 1e-4);
    EXPECT_EQ(xyz.Y, 1.0);

    SMyXYZNumber partial{-1, -1, -1};
    EXPECT_FALSE(DecodeXYZ(View(Bytes(tag.begin(), tag.begin() + 16)), partial));
    EXPECT_NEAR(partial.X, 0.9642, 1e-4);
    EXPECT_EQ(partial.Y, 1.0);
    EXPECT_EQ(partial.Z, -1);

    ASSERT_TRUE(DecodeXYZ(View(XYZ(-1.0, 0, 0)), xyz));
    EXPECT_EQ(xyz.X, 65535.0);  // read as unsigned
    PutBE32(tag, 0, 'sf32');
    EXPECT_FALSE(DecodeXYZ(View(tag), xyz));
}

TEST(TextDecoding, DescCountAndTerminator) {
    EXPECT_EQ(DecodeDescAscii(View(Desc("Display"))), "Display");
    EXPECT_EQ(DecodeDescAscii(View(Desc("Display", 0))), "");
    EXPECT_EQ(DecodeDescAscii(View(Desc("Display", 4))), "Disp");
    Bytes runsOff = Desc("Display", 0xFFFFFFF0);
    runsOff.resize(12 + 5);
    EXPECT_EQ(DecodeDescAscii(View(runsOff)), "Displ");
    EXPECT_EQ(DecodeDescWide(View(Desc("Caf\xE9"))), L"Caf\u00E9");
    Bytes text = Text("(c) nobody");
    EXPECT_EQ(DecodeTextType(View(text)), L"(c) nobody");
    text.pop_back();  // no terminator: the text ends with the tag
    EXPECT_EQ(DecodeTextType(View(text)), L"(c) nobody");
}

TEST(TextDecoding, MlucFirstRecordOnly) {
    std::wstring text;
    ASSERT_TRUE(DecodeMlucFirstRecord(View(Mluc({u"first", u"second"})), text));
    EXPECT_EQ(text, L"first");
    ASSERT_TRUE(DecodeMlucFirstRecord(View(Mluc({u"abcd"}, -1)), text));
    EXPECT_EQ(text, L"abc");  // an odd length drops its last byte
    ASSERT_TRUE(DecodeMlucFirstRecord(View(Mluc({u"\U0001F600 ok \xD800!"})), text));
    EXPECT_EQ(text, L"\U0001F600 ok \uFFFD!");
    text = L"kept";
    EXPECT_FALSE(DecodeMlucFirstRecord(View(Mluc({})), text));
    EXPECT_EQ(text, L"kept");

    Bytes offsetOutside = Mluc({u"x"});
    PutBE32(offsetOutside, 24, 0xFFFFFFF0);
    PutBE32(offsetOutside, 20, 0xFFFFFFFE);
    ASSERT_TRUE(DecodeMlucFirstRecord(View(offsetOutside), text));
    EXPECT_EQ(text, L"");
}
