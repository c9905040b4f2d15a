// Tone curves: how the reader compares two profiles' curves.
#include "reader_support.h"

using namespace tesk::test::icc;

namespace {

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

TEST(ToneCurves, ComparisonOnlyDecidesBetweenSingleCurveProfiles) {
    const Bytes g22 = CurvGamma(0x0233), g18 = CurvGamma(0x01CD), g10 = CurvGamma(0x0100);
    const Bytes sampled = CurvSampled(PowerCurve(256, 2.2)), para22 = Para(0, {2.2});
    auto changedEntries = PowerCurve(256, 2.2);
    changedEntries[128] ^= 1;
    const std::tuple<ProfileBuilder, ProfileBuilder, bool> cases[] = {
        // A profile with different red and green curves is always "the same".
        {WithCurves(g22, g18, g22), MatrixDisplay(g18), true},
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
        // A parametric curve of another type is not one curve for all channels.
        {MatrixDisplay(Para(3, {2.4, 0.9, 0.1, 0.07, 0.04})), MatrixDisplay(g10), true},
    };
    for (size_t i = 0; i < std::size(cases); ++i)
        EXPECT_EQ(Same(std::get<0>(cases[i]), std::get<1>(cases[i])), std::get<2>(cases[i])) << "case " << i;
}
