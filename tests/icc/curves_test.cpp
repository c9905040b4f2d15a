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
    const Bytes g22 = CurvGamma(0x0233), g18 = CurvGamma(0x01CD), g10 = CurvGamma(0x0100);
    const Bytes sampled = CurvSampled(PowerCurve(256, 2.2)), para22 = Para(0, {2.2});
    auto changedEntries = PowerCurve(256, 2.2);
    changedEntries[128] ^= 1;
    const std::tuple<ProfileBuilder, ProfileBuilder, bool> cases[] = {
        // A profile with different red and green curves is always "the same".
        {WithCurves(g22, g18, g22), MatrixDisplay(g18), true},
        {MatrixDisplay(g18), WithCurves(g22, g18, g22), true},
        {MatrixDisplay(g22), MatrixDisplay(g22), true},
        {MatrixDisplay(g22), MatrixDisplay(g18), false},
        {MatrixDisplay(CurvIdentity()), MatrixDisplay(CurvIdentity()), false},  // deliberately no match
        {MatrixDisplay(sampled), MatrixDisplay(sampled), true},
        {MatrixDisplay(sampled), MatrixDisplay(CurvSampled(changedEntries)), false},
        {MatrixDisplay(sampled), MatrixDisplay(CurvSampled(PowerCurve(1024, 2.2))), false},
        // Channels of different lengths count as one curve.
        {WithCurves(sampled, sampled, CurvSampled(PowerCurve(16, 2.2))), MatrixDisplay(g22), false},
        // Type-0 parametric curves all read as g = 1.0, whatever their exponent.
        {MatrixDisplay(para22), MatrixDisplay(Para(0, {1.8})), true},
        {MatrixDisplay(para22), MatrixDisplay(g10), false},
        {MatrixDisplay(g10), MatrixDisplay(para22), false},
        // A parametric curve of another type is not one curve for all channels.
        {MatrixDisplay(Para(3, {2.4, 0.9, 0.1, 0.07, 0.04})), MatrixDisplay(g10), true},
    };
    for (size_t i = 0; i < std::size(cases); ++i)
        EXPECT_EQ(Same(std::get<0>(cases[i]), std::get<1>(cases[i])), std::get<2>(cases[i])) << "case " << i;
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
