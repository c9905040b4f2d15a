// Tone curves read through the reader: what a TRC tag becomes, how two
// profiles' curves are compared, and the video-card gamma tag.
#include <cstring>
#include <memory>

#include "reader_support.h"

using namespace tesk::test::icc;

namespace {

struct Curve : TRCCURVE {
    Curve() { std::memset(static_cast<TRCCURVE*>(this), 0, sizeof(TRCCURVE)); }
    ~Curve() {
        if (m_nSignature == 'curv' && m_curve.m_nCount >= 2) delete[] m_curve.m_pEntries;
    }
};

ProfileBuilder WithCurves(const Bytes& red, const Bytes& green, const Bytes& blue) {
    ProfileBuilder builder = MatrixDisplay();
    builder.Set('rTRC', red).Set('gTRC', green).Set('bTRC', blue);
    return builder;
}

bool Same(const ProfileBuilder& a, const ProfileBuilder& b) {
    auto first = ReaderOf(a.Build());
    auto second = ReaderOf(b.Build());
    EXPECT_NE(first->GetProfile(), nullptr);
    EXPECT_NE(second->GetProfile(), nullptr);
    return first->IsTRCsSame(*second);
}

}  // namespace

TEST(ToneCurves, TagKindsAreDecodedAndOthersRefused) {
    ProfileBuilder builder = MatrixDisplay(CurvGamma(0x0233));
    Bytes claims256 = CurvSampled(std::vector<uint16_t>(256, 1000));
    claims256.resize(100);
    builder.Set('zTRC', claims256).Set('yTRC', Text("not a curve")).Set('xTRC', Para(0, {2.2}));
    auto reader = ReaderOf(builder.Build());
    ASSERT_NE(reader->GetProfile(), nullptr);

    Curve gamma, para;
    ASSERT_TRUE(reader->GetTRC('rTRC', gamma));
    EXPECT_EQ(gamma.m_nSignature, DWORD('curv'));
    ASSERT_TRUE(reader->GetTRC('xTRC', para));
    EXPECT_EQ(para.m_nSignature, DWORD('para'));
    // A cut curve (the decoder throws), another type, a missing tag.
    for (uint32_t refused : {'zTRC', 'yTRC', 'kTRC'}) {
        Curve curve;
        EXPECT_FALSE(reader->GetTRC(refused, curve)) << std::hex << refused;
    }
}

TEST(ToneCurves, ComparisonOnlyDecidesBetweenSingleCurveProfiles) {
    const Bytes g22 = CurvGamma(0x0233), g18 = CurvGamma(0x01CD);
    // One profile with different red and green curves: always "the same".
    EXPECT_TRUE(Same(WithCurves(g22, g18, g22), MatrixDisplay(g18)));
    EXPECT_TRUE(Same(MatrixDisplay(g18), WithCurves(g22, g18, g22)));
    EXPECT_TRUE(Same(MatrixDisplay(g22), MatrixDisplay(g22)));
    EXPECT_FALSE(Same(MatrixDisplay(g22), MatrixDisplay(g18)));
    // Two identity curves are deliberately not a match.
    EXPECT_FALSE(Same(MatrixDisplay(CurvIdentity()), MatrixDisplay(CurvIdentity())));

    const Bytes sampled = CurvSampled(PowerCurve(256, 2.2));
    auto changedEntries = PowerCurve(256, 2.2);
    changedEntries[128] ^= 1;
    EXPECT_TRUE(Same(MatrixDisplay(sampled), MatrixDisplay(sampled)));
    EXPECT_FALSE(Same(MatrixDisplay(sampled), MatrixDisplay(CurvSampled(changedEntries))));
    EXPECT_FALSE(Same(MatrixDisplay(sampled), MatrixDisplay(CurvSampled(PowerCurve(1024, 2.2)))));
    // Channels of different lengths count as one curve.
    EXPECT_FALSE(Same(WithCurves(sampled, sampled, CurvSampled(PowerCurve(16, 2.2))), MatrixDisplay(g22)));
}

TEST(ToneCurves, ParametricCurvesCompareByTheirReadValues) {
    const Bytes para22 = Para(0, {2.2}), para18 = Para(0, {1.8}), type3 = Para(3, {2.4, 0.9, 0.1, 0.07, 0.04});
    // Type-0 curves all read as g = 1.0, whatever their exponent.
    EXPECT_TRUE(Same(MatrixDisplay(para22), MatrixDisplay(para18)));
    EXPECT_FALSE(Same(MatrixDisplay(para22), MatrixDisplay(CurvGamma(0x0100))));
    EXPECT_FALSE(Same(MatrixDisplay(CurvGamma(0x0100)), MatrixDisplay(para22)));
    // A parametric curve of another type is not one curve for all channels.
    EXPECT_TRUE(Same(MatrixDisplay(type3), MatrixDisplay(CurvGamma(0x0100))));
}

TEST(ToneCurves, MissingCurvesCountAsTheSame) {
    ProfileBuilder noBlue = MatrixDisplay(CurvGamma(0x0100));
    noBlue.Remove('bTRC');
    auto withCurves = ReaderOf(MatrixDisplay().Build());
    auto withoutBlue = LenientReaderOf(noBlue.Build());
    ASSERT_NE(withoutBlue->GetProfile(), nullptr);
    EXPECT_TRUE(withoutBlue->IsTRCsSame(*withCurves));
    EXPECT_TRUE(withCurves->IsTRCsSame(*withoutBlue));
    ReaderProbe empty;
    EXPECT_TRUE(empty.IsTRCsSame(*withCurves));
    EXPECT_TRUE(withCurves->IsTRCsSame(empty));
}

TEST(ToneCurves, RequestedTagsAndTheVideoCardGamma) {
    Bytes data(768);
    for (int i = 0; i < 768; ++i) data[i] = uint8_t(255 - i % 256);
    auto plain = ReaderOf(MatrixDisplay().Build());
    EXPECT_FALSE(plain->DoesProfileTagExist('vcgt'));
    unsigned long size = 0;
    std::unique_ptr<unsigned char[]> tag(plain->GetRequestedTag('wtpt', size));
    ASSERT_TRUE(tag);
    EXPECT_EQ(size, 20u);
    EXPECT_EQ(std::memcmp(tag.get(), "XYZ ", 4), 0);

    auto reader = ReaderOf(MatrixDisplay().Set('vcgt', VcgtTable(3, 256, 1, data)).Build());
    ASSERT_TRUE(reader->DoesProfileTagExist('vcgt'));
    SVCGTGamma gamma{};
    ASSERT_TRUE(reader->GetVCGTTable(gamma));
    std::unique_ptr<uint16_t[]> values(gamma.m_table.m_pData);
    EXPECT_EQ(gamma.m_nGammaType, 0u);
    EXPECT_EQ(values[0], 0xFF00);
    EXPECT_EQ(values[767], 0);
    EXPECT_FALSE(ReaderProbe().GetVCGTTable(gamma));
}
