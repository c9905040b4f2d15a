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

}  // namespace

TEST(Colorimetry, ColorantsAndWhitePoints) {
    ProfileBuilder builder = MatrixDisplay();
    Bytes cut = XYZ(0.5, 0.25, 0.125);
    cut.resize(16);
    builder.Set('zXYZ', cut).Set('bkpt', XYZ(0.0034, 0.0036, 0.0030));
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
    b.Set('bkpt', XYZ(0, 0, 0.001));
    auto withBlack = ReaderOf(b.Build());
    EXPECT_FALSE(first->IsMediaBlackPointSame(*withBlack));
}

TEST(Colorimetry, ChromaticAdaptationMatrix) {
    ProfileBuilder builder = MatrixDisplay();
    builder.Set('chad', Sf32({1.0478, 0.0229, 0.5, 0.0295, 0.9905, 0.25, 0.125, 0.0151, 0.7517}));
    double matrix[9] = {};
    ASSERT_TRUE(ReaderOf(builder.Build())->GetChromaticAdaptationTag(matrix));
    EXPECT_NEAR(matrix[0], 1.0478, 1e-4);
    EXPECT_EQ(matrix[2], 0.5);
    EXPECT_EQ(matrix[6], 0.125);
    EXPECT_FALSE(ReaderOf(MatrixDisplay().Build())->GetChromaticAdaptationTag(matrix));
}

TEST(ColorSpec, GammaFromTheRedCurveAndInvertibleColorants) {
    SColorSpecRGB colorSpec{};
    ASSERT_TRUE(ReaderOf(MatrixDisplay(CurvGamma(0x0233)).Build())->BuildColorSpecRGB(colorSpec));
    EXPECT_EQ(colorSpec.m_bsRGB, 0);
    EXPECT_DOUBLE_EQ(colorSpec.m_dGamma, 2.19921875);
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c) EXPECT_NEAR(colorSpec.m_dMatrix[r][c], kPrimaries[r][c], 1e-4);
    // Inverse times matrix is the identity.
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c) {
            double sum = 0;
            for (int k = 0; k < 3; ++k) sum += colorSpec.m_dMatrix[r][k] * colorSpec.m_dInverse[k][c];
            EXPECT_NEAR(sum, r == c ? 1.0 : 0.0, 1e-9);
        }

    SColorSpecRGB sampled{};
    ASSERT_TRUE(ReaderOf(MatrixDisplay(CurvSampled(PowerCurve(256, 1.8))).Build())->BuildColorSpecRGB(sampled));
    EXPECT_EQ(sampled.m_bsRGB, 0);
    EXPECT_NEAR(sampled.m_dGamma, 1.8, 0.005);

    SColorSpecRGB srgb{};
    srgb.m_dGamma = 5;
    ASSERT_TRUE(ReaderOf(MatrixDisplay(CurvSampled({0, 65535})).Build())->BuildColorSpecRGB(srgb));
    EXPECT_EQ(srgb.m_bsRGB, 1);
    EXPECT_EQ(srgb.m_dGamma, 0.0);

    SColorSpecRGB identity{};
    identity.m_bsRGB = 7;
    identity.m_dGamma = 3.0;
    ASSERT_TRUE(ReaderOf(MatrixDisplay(CurvIdentity()).Build())->BuildColorSpecRGB(identity));
    EXPECT_EQ(identity.m_bsRGB, 7);
    EXPECT_EQ(identity.m_dGamma, 3.0);
}

TEST(ColorSpec, MissingBlueColorantLeavesARowOfZerosAndFails) {
    ProfileBuilder builder = MatrixDisplay();
    builder.Remove('bXYZ');
    auto reader = LenientReaderOf(builder.Build());
    ASSERT_NE(reader->GetProfile(), nullptr);
    SColorSpecRGB colorSpec{};
    EXPECT_FALSE(reader->BuildColorSpecRGB(colorSpec));
    EXPECT_NEAR(colorSpec.m_dMatrix[1][1], kPrimaries[1][1], 1e-4);
    EXPECT_EQ(colorSpec.m_dMatrix[2][0], 0.0);
    EXPECT_EQ(colorSpec.m_dMatrix[2][1], 0.0);
    EXPECT_EQ(colorSpec.m_dMatrix[2][2], 0.0);

    // Without red, green and blue are not even asked for.
    builder = MatrixDisplay();
    builder.Remove('rXYZ');
    SColorSpecRGB noRed{};
    EXPECT_FALSE(LenientReaderOf(builder.Build())->BuildColorSpecRGB(noRed));
    EXPECT_EQ(noRed.m_dMatrix[1][1], 0.0);
}

TEST(LogColorSpace, CalibratedRgbFromColorantsAndGammas) {
    auto reader = ReaderOf(MatrixDisplay(CurvGamma(0x01CD)).Build());
    LOGCOLORSPACEW lcs;
    std::memset(&lcs, 0xAB, sizeof(lcs));
    ASSERT_TRUE(reader->CreateLogColorSpaceFromCurrentProfile(lcs));
    EXPECT_EQ(lcs.lcsSignature, DWORD(LCS_SIGNATURE));
    EXPECT_EQ(lcs.lcsVersion, 0x400u);
    EXPECT_EQ(lcs.lcsSize, 588u);
    EXPECT_EQ(lcs.lcsCSType, LCS_CALIBRATED_RGB);
    EXPECT_EQ(lcs.lcsIntent, 0);
    // 1.80078125 in 16.16.
    EXPECT_EQ(lcs.lcsGammaRed, 0x0001CD00u);
    EXPECT_EQ(lcs.lcsGammaGreen, 0x0001CD00u);
    EXPECT_EQ(lcs.lcsGammaBlue, 0x0001CD00u);
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
    EXPECT_EQ(lcs.lcsGammaRed, 29491u);
    EXPECT_EQ(lcs.lcsGammaBlue, 29491u);
    EXPECT_EQ(std::wstring(lcs.lcsFilename), name);

    auto srgb = ReaderOf(MatrixDisplay(CurvSampled({0, 65535})).Build());
    handle = srgb->GetProfile();
    ASSERT_TRUE(srgb->CreateLogColorSpace(lcs, handle, nullptr));
    EXPECT_EQ(lcs.lcsCSType, LCS_sRGB);
    EXPECT_EQ(lcs.lcsEndpoints.ciexyzRed.ciexyzX, 0);
    EXPECT_EQ(lcs.lcsGammaRed, 0u);
}

TEST(LogColorSpace, DamagedProfileDegradesToSrgb) {
    for (uint32_t missing : {'gXYZ', 'gTRC'}) {
        ProfileBuilder builder = MatrixDisplay();
        LOGCOLORSPACEW lcs;
        EXPECT_FALSE(LenientReaderOf(builder.Remove(missing).Build())->CreateLogColorSpaceFromCurrentProfile(lcs));
        EXPECT_EQ(lcs.lcsCSType, LCS_sRGB);
    }
}

TEST(LogColorSpace, TypeFollowsTheRedCurveAndChannelAgreement) {
    auto type = [](const ProfileBuilder& builder) {
        auto reader = LenientReaderOf(builder.Build());
        void* handle = reader->GetProfile();
        return reader->GetLCSCSType(handle);
    };
    const Bytes ends = CurvSampled({0, 65535});
    ProfileBuilder builder = MatrixDisplay(ends);
    EXPECT_EQ(type(builder), LCS_sRGB);
    // Other lengths are not told apart; equal lengths with other values are.
    builder.Set('bTRC', CurvSampled(PowerCurve(16, 1.0)));
    EXPECT_EQ(type(builder), LCS_sRGB);
    builder.Set('bTRC', CurvSampled({0, 65000}));
    EXPECT_EQ(type(builder), 0);
    EXPECT_EQ(type(MatrixDisplay(Para(0, {2.2}))), 0);
    EXPECT_EQ(type(MatrixDisplay(CurvGamma(0x0233))), 0);
    builder = MatrixDisplay(ends);
    builder.Remove('bTRC');
    EXPECT_EQ(type(builder), 0);
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
    void SetUp() override { fs::create_directories(env_.ColorDir()); }
    CString Install(const std::string& name, const ProfileBuilder& builder) {
        tesk::test::WriteBytes(env_.ColorDir() + "/" + name, builder.Build());
        return CString(tesk::path::Wide(name).c_str());
    }
};

TEST_F(Classification, WorkingSpacesAreRgbDisplaysWithOneCurveOrColourSpaces) {
    ReaderProbe reader;
    CString name = Install("gamma.icm", MatrixDisplay(CurvGamma(0x0233)));
    EXPECT_TRUE(reader.IsProfileWorkingSpace(name));
    EXPECT_EQ(reader.GetProfile(), nullptr);

    name = Install("para.icm", MatrixDisplay(Para(0, {2.2})));
    EXPECT_TRUE(reader.IsProfileWorkingSpace(name));
    name = Install("para3.icm", MatrixDisplay(Para(3, {2.4, 0.9, 0.1, 0.07, 0.04})));
    EXPECT_FALSE(reader.IsProfileWorkingSpace(name));

    ProfileBuilder mixed = MatrixDisplay(CurvGamma(0x0233));
    mixed.Set('gTRC', CurvGamma(0x0234));
    name = Install("mixed.icm", mixed);
    EXPECT_FALSE(reader.IsProfileWorkingSpace(name));
    mixed.Set('gTRC', CurvSampled(PowerCurve(256, 2.2)));
    name = Install("lengths.icm", mixed);
    EXPECT_FALSE(reader.IsProfileWorkingSpace(name));

    // A colour-space profile is one whatever its curves.
    mixed.profileClass = 'spac';
    name = Install("space.icm", mixed);
    EXPECT_TRUE(reader.IsProfileWorkingSpace(name));
    EXPECT_FALSE(reader.IsProfileCMYK(name));

    ProfileBuilder input = MatrixDisplay();
    input.profileClass = 'scnr';
    name = Install("scanner.icm", input);
    EXPECT_FALSE(reader.IsProfileWorkingSpace(name));
    CString absent(L"absent.icm");
    EXPECT_FALSE(reader.IsProfileWorkingSpace(absent));
}

TEST_F(Classification, PrinterCmykProfiles) {
    ReaderProbe reader;
    CString fogra;
    ASSERT_TRUE(fogra.LoadString(10402));
    EXPECT_TRUE(reader.IsProfileCMYK(fogra));
    EXPECT_FALSE(reader.IsProfileWorkingSpace(fogra));
    EXPECT_EQ(reader.GetProfile(), nullptr);
    CString display = Install("display.icm", MatrixDisplay());
    EXPECT_FALSE(reader.IsProfileCMYK(display));
}
