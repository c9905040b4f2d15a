// Colorants, white points, the RGB colour record, the logical colour
// space and the classification of profile files.
#include <tesk/path.h>

#include <filesystem>

#include "reader_support.h"
#include "support/temp_env.h"

using namespace tesk::test::icc;
namespace fs = std::filesystem;

namespace {

constexpr double kPrimaries[3][3] = {{0.4361, 0.2225, 0.0139}, {0.3851, 0.7169, 0.0971}, {0.1431, 0.0606, 0.7141}};

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
