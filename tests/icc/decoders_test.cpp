// Tag decoders on raw bytes: the documented readings, and what happens when
// the counts, offsets and lengths in a tag do not fit the tag.
#include <gtest/gtest.h>

#include <cmath>
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

SICCCurveType CurveOf(std::vector<uint16_t>& entries) {
    return SICCCurveType{static_cast<uint32_t>(entries.size()), entries.data(), 0.0f};
}

}  // namespace

TEST(CurveDecoding, GammaSampledAndIdentity) {
    OwnedCurve gamma;
    ASSERT_TRUE(DecodeCurve(View(CurvGamma(0x0233)), gamma));
    EXPECT_EQ(gamma.m_nCount, 1u);
    EXPECT_FLOAT_EQ(gamma.m_fGamma, 2.19921875f);
    EXPECT_EQ(gamma.m_pEntries, nullptr);

    OwnedCurve sampled;
    ASSERT_TRUE(DecodeCurve(View(CurvSampled({0x0102, 0x8000, 0xFFFE})), sampled));
    ASSERT_EQ(sampled.m_nCount, 3u);
    EXPECT_EQ(std::vector<uint16_t>(sampled.m_pEntries, sampled.m_pEntries + 3),
              (std::vector<uint16_t>{0x0102, 0x8000, 0xFFFE}));

    OwnedCurve identity;
    EXPECT_TRUE(DecodeCurve(View(CurvIdentity()), identity));
    EXPECT_EQ(identity.m_nCount, 0u);
}

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

TEST(ParametricDecoding, WordsAreReadFromTheStartOfTheTag) {
    SICCParametricCurveType simple{};
    ASSERT_TRUE(DecodeParametricCurve(View(Para(0, {2.2})), simple));
    EXPECT_EQ(simple.m_nFunctionType, 0);
    EXPECT_EQ(simple.m_nParamCount, 1u);
    EXPECT_EQ(simple.m_dG, 1.0);  // "para" as a number, clamped

    SICCParametricCurveType type3{};
    ASSERT_TRUE(DecodeParametricCurve(View(Para(3, {2.4, 1 / 1.055, 0.055 / 1.055, 1 / 12.92, 0.04045})), type3));
    EXPECT_EQ(type3.m_nParamCount, 4u);
    EXPECT_EQ(type3.m_dG, 1.0);
    EXPECT_EQ(type3.m_dA, 0.0);  // the reserved word
    EXPECT_EQ(type3.m_dB, 1.0);  // the function-type word
    EXPECT_EQ(type3.m_dC, 1.0);  // 2.4 clamped
    EXPECT_NEAR(type3.m_dD, 1 / 1.055, 1e-4);
    EXPECT_EQ(type3.m_dE, 0.0);  // five words for type 3: e is never reached

    SICCParametricCurveType type0{};
    DecodeParametricWords(View(Para(0, {2.2})), type0, 1);
    EXPECT_EQ(type0.m_dA, 0.0);
    EXPECT_EQ(type0.m_dB, 0.0);  // type word of a type-0 tag
}

TEST(ParametricDecoding, AnUnknownTypeFailsAndACutTagReadsOnlyInsideItself) {
    SICCParametricCurveType curve{};
    Bytes tag = Para(5, {0.5, 0.5, 0.5, 0.5, 0.5, 0.5, 0.5});
    EXPECT_FALSE(DecodeParametricCurve(View(tag), curve));
    EXPECT_EQ(curve.m_nParamCount, 0u);  // left as it was
    EXPECT_EQ(curve.m_nFunctionType, 5);
    SICCParametricCurveType cut{};
    Bytes shortTag(tag.begin(), tag.begin() + 9);  // half the type word
    EXPECT_TRUE(DecodeParametricCurve(View(shortTag), cut));
    EXPECT_EQ(cut.m_nFunctionType, 0);
    EXPECT_EQ(cut.m_dG, 1.0);
}

TEST(GammaFit, ReducesAPowerCurveToItsExponentOrFallsBackTo22) {
    auto power18 = PowerCurve(256, 1.8), power22 = PowerCurve(1024, 2.2);
    EXPECT_NEAR(FitGamma(CurveOf(power18)), 1.8, 0.005);
    EXPECT_NEAR(FitGamma(CurveOf(power22)), 2.2, 0.005);
    // Normalised by its own last value, not by 65535.
    for (auto& v : power18) v = uint16_t(v / 2);
    EXPECT_NEAR(FitGamma(CurveOf(power18)), 1.8, 0.01);

    std::vector<uint16_t> two = {0, 65535}, zeros(256, 0), top(256, 65535);
    for (auto* unfit : {&two, &zeros, &top}) EXPECT_EQ(FitGamma(CurveOf(*unfit)), 2.2);
    EXPECT_EQ(FitGamma(SICCCurveType{1, nullptr, 1.8f}), 2.2);
}

TEST(SrgbRecognition, SamplesAgainstTheSrgbCurve) {
    std::vector<uint16_t> ends = {0, 65535};
    EXPECT_TRUE(IsSrgbCurve(CurveOf(ends)));  // only the end points are sampled
    std::vector<uint16_t> ramp(256), one = {65535}, allZero(16, 0), power22 = PowerCurve(1024, 2.2);
    for (size_t i = 0; i < ramp.size(); ++i) ramp[i] = uint16_t(i * 257);
    for (auto* other : {&ramp, &power22, &one, &allZero}) EXPECT_FALSE(IsSrgbCurve(CurveOf(*other)));
}

TEST(CurveAgreement, LengthsThatDifferAreNotToldApart) {
    auto a = PowerCurve(256, 2.2), b = PowerCurve(256, 2.2), c = PowerCurve(1024, 1.0), d = PowerCurve(256, 2.2);
    EXPECT_TRUE(CurvesAgree(CurveOf(a), CurveOf(b), CurveOf(c)));
    b[100] += 1;
    EXPECT_FALSE(CurvesAgree(CurveOf(a), CurveOf(b), CurveOf(d)));
    EXPECT_TRUE(CurvesAgree(CurveOf(a), CurveOf(d), CurveOf(a)));

    SICCCurveType g18{1, nullptr, 1.8f}, g22{1, nullptr, 2.2f}, nan{1, nullptr, std::nanf("")}, identity{};
    EXPECT_TRUE(CurvesAgree(g18, g18, g18));
    EXPECT_FALSE(CurvesAgree(g18, g22, g18));
    EXPECT_FALSE(CurvesAgree(nan, nan, nan));
    EXPECT_TRUE(CurvesAgree(identity, identity, identity));
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

TEST(VideoCardGamma, FormulaKeepsTheFixedPointPatterns) {
    std::vector<uint32_t> nine = {0x00023333, 0, 0x00010000, 0x00020000, 0x100, 0xFF00, 0x0001C000, 1, 0xFFFFFFFF};
    SVCGTGamma gamma{};
    ASSERT_TRUE(DecodeVCGT(View(VcgtFormula(nine)), gamma));
    EXPECT_EQ(gamma.m_nGammaType, kVCGTFormula);
    EXPECT_EQ(gamma.m_formula.m_nRedGamma, nine[0]);
    EXPECT_EQ(gamma.m_formula.m_nGreenMin, nine[4]);
    EXPECT_EQ(gamma.m_formula.m_nBlueMax, nine[8]);
}

TEST(VideoCardGamma, HeaderlessLayoutStartsAtByteEight) {
    Bytes shortOld = TypeHeader('vcgt', 44);
    PutBE32(shortOld, 8, 0x00024000);
    SVCGTGamma formula{};
    ASSERT_TRUE(DecodeVCGT(View(shortOld), formula));
    EXPECT_EQ(formula.m_nGammaType, kVCGTFormula);
    EXPECT_EQ(formula.m_formula.m_nRedGamma, 0x00024000u);

    Bytes bytesOld = TypeHeader('vcgt', 800);
    for (size_t i = 8; i < 800; ++i) bytesOld[i] = uint8_t(i);
    PutBE32(bytesOld, 8, 7);  // a type word that is no type: data start here
    SVCGTGamma table{};
    ASSERT_TRUE(DecodeVCGT(View(bytesOld), table));
    std::unique_ptr<uint16_t[]> values(table.m_table.m_pData);
    EXPECT_EQ(table.m_nGammaType, kVCGTTable);
    EXPECT_EQ(table.m_table.m_nChannels, 3);
    EXPECT_EQ(values[3], 0x0700);
    EXPECT_EQ(values[4], uint16_t(12 << 8));
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

TEST(MatrixDecoding, NineWordsFromByteEight) {
    Bytes tag = Sf32({1.0478, 0.0229, -0.0501, 0.0295, 0.9905, -0.0171, -0.0092, 0.0151, 0.7517});
    double m[9];
    DecodeMatrix(View(tag), m);
    EXPECT_NEAR(m[0], 1.0478, 1e-4);
    EXPECT_NEAR(m[8], 0.7517, 1e-4);
    EXPECT_GT(m[2], 65535.0);  // negative words read as unsigned
    DecodeMatrix(View(Bytes(tag.begin(), tag.begin() + 12)), m);
    EXPECT_NEAR(m[0], 1.0478, 1e-4);
    EXPECT_EQ(m[1], 0.0);
}
