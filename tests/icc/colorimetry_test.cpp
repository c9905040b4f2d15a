// Colorants, white points, the RGB colour record, the logical colour
// space and the classification of profile files.
#include <tesk/path.h>

#include <cstring>
#include <filesystem>

#include "reader_support.h"
#include "support/temp_env.h"

using namespace tesk::test::icc;
namespace fs = std::filesystem;

namespace {

constexpr double kPrimaries[3][3] = {{0.4361, 0.2225, 0.0139}, {0.3851, 0.7169, 0.0971}, {0.1431, 0.0606, 0.7141}};

long ChromaticitySum(const CIEXYZ& xyz) { return long(xyz.ciexyzX) + xyz.ciexyzY + xyz.ciexyzZ; }

std::unique_ptr<ReaderProbe> Without(uint32_t tag) {
    ProfileBuilder builder = MatrixDisplay();
    return LenientReaderOf(builder.Remove(tag).Build());
}

}  // namespace

TEST(Colorimetry, ColorantsPointsAndAdaptation) {
    Bytes cut = XYZ(0.5, 0.25, 0.125);
    cut.resize(16);
    ProfileBuilder builder = MatrixDisplay();
    builder.Set('zXYZ', cut).Set('bkpt', XYZ(0.0034, 0.0036, 0.0030));
    builder.Set('chad', Sf32({1.0478, 0.0229, 0.5, 0.0295, 0.9905, 0.25, 0.125, 0.0151, 0.7517}));
    auto reader = ReaderOf(builder.Build());
    SMyXYZNumber xyz{};
    ASSERT_TRUE(reader->GetXYZColorant(xyz, 'gXYZ'));
    EXPECT_NEAR(xyz.Y, kPrimaries[1][1], 1e-4);
    ASSERT_TRUE(reader->GetMediaWhitePoint(xyz));
    EXPECT_EQ(xyz.Y, 1.0);
    ASSERT_TRUE(reader->GetMediaBlackPoint(xyz));
    EXPECT_NEAR(xyz.Z, 0.0030, 1e-4);
    EXPECT_FALSE(reader->GetXYZColorant(xyz, 'zXYZ'));
    EXPECT_FALSE(reader->GetXYZColorant(xyz, 'rTRC'));

    double matrix[9] = {};
    ASSERT_TRUE(reader->GetChromaticAdaptationTag(matrix));
    EXPECT_NEAR(matrix[0], 1.0478, 1e-4);
    EXPECT_EQ(matrix[2], 0.5);
    EXPECT_EQ(matrix[6], 0.125);
    EXPECT_FALSE(ReaderOf(MatrixDisplay().Build())->GetChromaticAdaptationTag(matrix));
}

TEST(Colorimetry, WhitePointsMustMatchToTheLastBit) {
    ProfileBuilder a = MatrixDisplay(), b = MatrixDisplay();
    Bytes white = XYZ(0.9642, 1.0, 0.8249);
    PutBE32(white, 12, 0x00010001);
    b.Set('wtpt', white);
    auto first = ReaderOf(a.Build()), second = ReaderOf(b.Build()), again = ReaderOf(a.Build());
    EXPECT_FALSE(first->IsMediaWhitePointSame(*second));
    EXPECT_TRUE(first->IsMediaWhitePointSame(*again));
    // Neither has a black point: both read as zero, so they agree.
    EXPECT_TRUE(first->IsMediaBlackPointSame(*second));
    EXPECT_FALSE(first->IsMediaBlackPointSame(*ReaderOf(b.Set('bkpt', XYZ(0, 0, 0.001)).Build())));
}

TEST(ColorSpec, GammaFromTheRedCurveAndInvertibleColorants) {
    struct Row {
        const char* what;
        Bytes curve;
        int isSrgb;
        double gamma, tolerance;
    };
    const Row rows[] = {
        {"single gamma", CurvGamma(0x0233), 0, 2.19921875, 0},
        {"sampled power curve", CurvSampled(PowerCurve(256, 1.8)), 0, 1.8, 0.005},
        {"sRGB curve", CurvSampled({0, 65535}), 1, 0.0, 0},
        {"identity leaves both", CurvIdentity(), 7, 3.0, 0},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        SColorSpecRGB colour{};
        colour.m_bsRGB = 7;
        colour.m_dGamma = 3.0;
        ASSERT_TRUE(ReaderOf(MatrixDisplay(row.curve).Build())->BuildColorSpecRGB(colour));
        EXPECT_EQ(colour.m_bsRGB, row.isSrgb);
        EXPECT_NEAR(colour.m_dGamma, row.gamma, row.tolerance);
        for (int r = 0; r < 3; ++r)
            for (int c = 0; c < 3; ++c) {
                EXPECT_NEAR(colour.m_dMatrix[r][c], kPrimaries[r][c], 1e-4);
                double product = 0;  // inverse times matrix is the identity
                for (int k = 0; k < 3; ++k) product += colour.m_dMatrix[r][k] * colour.m_dInverse[k][c];
                EXPECT_NEAR(product, r == c ? 1.0 : 0.0, 1e-9);
            }
    }
}

TEST(ColorSpec, MissingColorantsLeaveRowsOfZerosAndFail) {
    SColorSpecRGB noBlue{};
    EXPECT_FALSE(Without('bXYZ')->BuildColorSpecRGB(noBlue));
    EXPECT_NEAR(noBlue.m_dMatrix[1][1], kPrimaries[1][1], 1e-4);
    EXPECT_EQ((std::vector<double>(noBlue.m_dMatrix[2], noBlue.m_dMatrix[2] + 3)), std::vector<double>(3, 0.0));
    // Without red, green and blue are not even asked for.
    SColorSpecRGB noRed{};
    EXPECT_FALSE(Without('rXYZ')->BuildColorSpecRGB(noRed));
    EXPECT_EQ(noRed.m_dMatrix[1][1], 0.0);
}

TEST(LogColorSpace, CalibratedRgbFromColorantsAndGammas) {
    auto reader = ReaderOf(MatrixDisplay(CurvGamma(0x01CD)).Build());
    LOGCOLORSPACEW lcs;
    std::memset(&lcs, 0xAB, sizeof(lcs));
    ASSERT_TRUE(reader->CreateLogColorSpaceFromCurrentProfile(lcs));
    EXPECT_EQ((std::vector<DWORD>{lcs.lcsSignature, lcs.lcsVersion, lcs.lcsSize}),
              (std::vector<DWORD>{DWORD(LCS_SIGNATURE), 0x400, 588}));
    EXPECT_EQ(lcs.lcsCSType, LCS_CALIBRATED_RGB);
    EXPECT_EQ(lcs.lcsIntent, 0);
    // 1.80078125 in 16.16.
    EXPECT_EQ((std::vector<DWORD>{lcs.lcsGammaRed, lcs.lcsGammaGreen, lcs.lcsGammaBlue}),
              std::vector<DWORD>(3, 0x0001CD00));
    const double redSum = kPrimaries[0][0] + kPrimaries[0][1] + kPrimaries[0][2];
    EXPECT_NEAR(lcs.lcsEndpoints.ciexyzRed.ciexyzX / 1073741824.0, kPrimaries[0][0] / redSum, 1e-4);
    for (const CIEXYZ* endpoint :
         {&lcs.lcsEndpoints.ciexyzRed, &lcs.lcsEndpoints.ciexyzGreen, &lcs.lcsEndpoints.ciexyzBlue})
        EXPECT_NEAR(ChromaticitySum(*endpoint), 1L << 30, 256);
    EXPECT_EQ(lcs.lcsFilename[0], L'\0');
}

TEST(LogColorSpace, SampledCurvesGetNominalGammaSrgbCurvesTheSrgbTypeAlone) {
    auto sampled = ReaderOf(MatrixDisplay(CurvSampled(PowerCurve(256, 2.2))).Build());
    LOGCOLORSPACEW lcs;
    void* handle = sampled->GetProfile();
    std::wstring name = L"C:\\profiles\\display.icc";
    ASSERT_TRUE(sampled->CreateLogColorSpace(lcs, handle, name.data()));
    EXPECT_EQ(lcs.lcsCSType, LCS_CALIBRATED_RGB);
    EXPECT_EQ((std::vector<DWORD>{lcs.lcsGammaRed, lcs.lcsGammaBlue}), std::vector<DWORD>(2, 29491));
    EXPECT_EQ(std::wstring(lcs.lcsFilename), name);

    auto srgb = ReaderOf(MatrixDisplay(CurvSampled({0, 65535})).Build());
    handle = srgb->GetProfile();
    ASSERT_TRUE(srgb->CreateLogColorSpace(lcs, handle, nullptr));
    EXPECT_EQ(lcs.lcsCSType, LCS_sRGB);
    EXPECT_EQ(lcs.lcsEndpoints.ciexyzRed.ciexyzX, 0);
    EXPECT_EQ(lcs.lcsGammaRed, 0u);

    // A damaged profile degrades to sRGB.
    for (uint32_t missing : {'gXYZ', 'gTRC'}) {
        EXPECT_FALSE(Without(missing)->CreateLogColorSpaceFromCurrentProfile(lcs));
        EXPECT_EQ(lcs.lcsCSType, LCS_sRGB);
    }
}

TEST(LogColorSpace, TypeFollowsTheRedCurveAndChannelAgreement) {
    const Bytes ends = CurvSampled({0, 65535});
    ProfileBuilder noBlue = MatrixDisplay(ends);
    noBlue.Remove('bTRC');
    const std::pair<ProfileBuilder, long> cases[] = {
        {MatrixDisplay(ends), LCS_sRGB},
        // Other lengths are not told apart; equal lengths with other values are.
        {MatrixDisplay(ends).Set('bTRC', CurvSampled(PowerCurve(16, 1.0))), LCS_sRGB},
        {MatrixDisplay(ends).Set('bTRC', CurvSampled({0, 65000})), 0},
        {MatrixDisplay(Para(0, {2.2})), 0},
        {MatrixDisplay(CurvGamma(0x0233)), 0},
        {noBlue, 0},
    };
    for (size_t i = 0; i < std::size(cases); ++i) {
        auto reader = LenientReaderOf(cases[i].first.Build());
        void* handle = reader->GetProfile();
        EXPECT_EQ(reader->GetLCSCSType(handle), cases[i].second) << "case " << i;
    }
}

TEST(LogColorSpace, PlatformSrgbProfileOpensInMemory) {
    tesk::test::TempEnvironment env;
    ReaderProbe reader;
    reader.CreatesRGB();
    void* handle = reader.GetProfile();
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(reader.GetLCSCSType(handle), LCS_sRGB);
    PROFILEHEADER header;
    ASSERT_TRUE(HeaderOf(reader, header));
    EXPECT_EQ(header.phDataColorSpace, DWORD('RGB '));
}

class Classification : public tesk::test::IsolatedTest {
protected:
    CString Install(const std::string& name, const ProfileBuilder& builder) {
        fs::create_directories(env_.ColorDir());
        tesk::test::WriteBytes(env_.ColorDir() + "/" + name, builder.Build());
        return CString(tesk::path::Wide(name).c_str());
    }
    static ProfileBuilder OfClass(uint32_t profileClass, ProfileBuilder builder) {
        builder.profileClass = profileClass;
        return builder;
    }
};

// Working spaces are RGB displays whose channels share one curve, or colour-space profiles.
TEST_F(Classification, WorkingSpacesAndCmykPrinters) {
    const ProfileBuilder mixed = MatrixDisplay(CurvGamma(0x0233)).Set('gTRC', CurvGamma(0x0234));
    const std::tuple<const char*, ProfileBuilder, bool> cases[] = {
        {"gamma.icm", MatrixDisplay(CurvGamma(0x0233)), true},
        {"para.icm", MatrixDisplay(Para(0, {2.2})), true},
        {"para3.icm", MatrixDisplay(Para(3, {2.4, 0.9, 0.1, 0.07, 0.04})), false},
        {"mixed.icm", mixed, false},
        {"lengths.icm", MatrixDisplay(CurvGamma(0x0233)).Set('gTRC', CurvSampled(PowerCurve(256, 2.2))), false},
        {"space.icm", OfClass('spac', mixed), true},
        {"scanner.icm", OfClass('scnr', MatrixDisplay()), false},
    };
    ReaderProbe reader;
    for (const auto& [file, builder, workingSpace] : cases) {
        CString name = Install(file, builder);
        EXPECT_EQ(reader.IsProfileWorkingSpace(name), workingSpace) << file;
        EXPECT_FALSE(reader.IsProfileCMYK(name)) << file;
    }
    EXPECT_EQ(reader.GetProfile(), nullptr) << "classifying adopts nothing";
    CString absent(L"absent.icm");
    EXPECT_FALSE(reader.IsProfileWorkingSpace(absent));

    CString fogra;
    ASSERT_TRUE(fogra.LoadString(10402));
    EXPECT_TRUE(reader.IsProfileCMYK(fogra));
    EXPECT_FALSE(reader.IsProfileWorkingSpace(fogra));
    EXPECT_EQ(reader.GetProfile(), nullptr);
}
