// Pictures checked by what they must show: marks at the pixels their values
// map to, curves through known points, histogram bars of known heights.
#include <cairo.h>
#include <gtest/gtest.h>
#include <lcms2.h>

#include <cmath>
#include <cstring>
#include <memory>
#include <string>

#include "cli/imageio/ImageFile.h"
#include "cli/plots/GammaRampPlot.h"
#include "cli/plots/InkCoverage.h"
#include "cli/plots/InkCoverageCheck.h"
#include "cli/plots/InkCoveragePlot.h"
#include "cli/plots/ProfileGamut.h"
#include "cli/plots/ProfilePlot.h"
#include "image_fixtures.h"
#include "support/lcms_profiles.h"
#include "support/temp_env.h"

namespace teskcolor {
namespace {

using tesk::test::SavedProfile;

class CPicture {
public:
    explicit CPicture(const std::string& path) : m_surface(cairo_image_surface_create_from_png(path.c_str())) {}
    ~CPicture() { cairo_surface_destroy(m_surface); }
    bool Loaded() const { return cairo_surface_status(m_surface) == CAIRO_STATUS_SUCCESS; }
    // True when a pixel next to (x, y) is `colour` to within a little antialiasing.
    bool Shows(double x, double y, const SColour& colour) const {
        for (int dy = -1; dy <= 1; ++dy)
            for (int dx = -1; dx <= 1; ++dx)
                if (PixelIs(int(std::floor(x)) + dx, int(std::floor(y)) + dy, colour)) return true;
        return false;
    }
    // True when the pixel at (x, y) and its neighbours are all `colour`.
    bool OnlyShows(double x, double y, const SColour& colour) const {
        for (int dy = -1; dy <= 1; ++dy)
            for (int dx = -1; dx <= 1; ++dx)
                if (!PixelIs(int(std::floor(x)) + dx, int(std::floor(y)) + dy, colour)) return false;
        return true;
    }

private:
    bool PixelIs(int x, int y, const SColour& colour) const {
        const auto* row = cairo_image_surface_get_data(m_surface) + size_t(y) * size_t(cairo_image_surface_get_stride(m_surface));
        const uint32_t pixel = reinterpret_cast<const uint32_t*>(row)[size_t(x)];
        const double got[3] = {(pixel >> 16 & 0xFF) / 255.0, (pixel >> 8 & 0xFF) / 255.0, (pixel & 0xFF) / 255.0};
        return std::abs(got[0] - colour.r) < 0.08 && std::abs(got[1] - colour.g) < 0.08 && std::abs(got[2] - colour.b) < 0.08;
    }

    cairo_surface_t* m_surface;
};

constexpr SColour kWhite{1, 1, 1};

class PlotsTest : public tesk::test::IsolatedTest {
protected:
    std::string Path(const std::string& name) const { return env_.Root() + "/" + name; }
};

// A matrix profile with a D50 white, so its colorants' xy are the primaries
// as given; red gamma 1, green 2.2, blue 3.
std::vector<uint8_t> WideProfile() {
    const cmsCIExyYTRIPLE primaries{{0.70, 0.29, 1}, {0.17, 0.78, 1}, {0.13, 0.04, 1}};
    cmsToneCurve* curves[3] = {cmsBuildGamma(nullptr, 1.0), cmsBuildGamma(nullptr, 2.2), cmsBuildGamma(nullptr, 3.0)};
    cmsHPROFILE profile = cmsCreateRGBProfile(cmsD50_xyY(), &primaries, curves);
    for (cmsToneCurve* curve : curves) cmsFreeToneCurve(curve);
    return SavedProfile(profile);
}

TEST_F(PlotsTest, ProfilePictureMarksPrimariesWhitePointAndCurvesWhereTheyLie) {
    WriteProfilePlot(Path("wide.png"), {WideProfile(), "wide"}, std::nullopt);
    const CPicture picture(Path("wide.png"));
    ASSERT_TRUE(picture.Loaded());
    const SAxes xy = ProfilePlotChromaticityAxes();
    for (const auto& [x, y] : {std::pair{0.70, 0.29}, {0.17, 0.78}, {0.13, 0.04}})
        EXPECT_TRUE(picture.Shows(xy.X(x), xy.Y(y), kProfileColour)) << x << "," << y;
    // sRGB, the reference, adapted to D50 as its profile holds it.
    for (const auto& [x, y] : {std::pair{0.6484, 0.3309}, {0.3212, 0.5978}, {0.1559, 0.0660}})
        EXPECT_TRUE(picture.Shows(xy.X(x), xy.Y(y), kReferenceColour)) << x << "," << y;
    EXPECT_TRUE(picture.Shows(xy.X(0.3457), xy.Y(0.3585), kWhitePointColour));
    EXPECT_TRUE(picture.OnlyShows(xy.X(0.45), xy.Y(0.15), kWhite));

    const SAxes curves = ProfilePlotCurveAxes();
    EXPECT_TRUE(picture.Shows(curves.X(0.6), curves.Y(0.6), kChannelColours[0]));
    EXPECT_TRUE(picture.Shows(curves.X(0.6), curves.Y(std::pow(0.6, 2.2)), kChannelColours[1]));
    EXPECT_TRUE(picture.Shows(curves.X(0.6), curves.Y(std::pow(0.6, 3.0)), kChannelColours[2]));
}

TEST_F(PlotsTest, GammaPictureDrawsEachChannelsRampInItsPanel) {
    std::vector<uint16_t> ramp(3 * 256);
    for (size_t i = 0; i < 256; ++i) {
        const double x = double(i) / 255;
        ramp[i] = uint16_t(std::lround(x * 65535));
        ramp[256 + i] = uint16_t(std::lround(x * x * 65535));
        ramp[512 + i] = uint16_t(std::lround(std::sqrt(x) * 65535));
    }
    WriteGammaRampPlot(Path("ramp.png"), ramp, std::nullopt);
    const CPicture picture(Path("ramp.png"));
    ASSERT_TRUE(picture.Loaded());
    const double x = 0.6;
    EXPECT_TRUE(picture.Shows(GammaRampPlotAxes(0).X(x), GammaRampPlotAxes(0).Y(x), kChannelColours[0]));
    EXPECT_TRUE(picture.Shows(GammaRampPlotAxes(1).X(x), GammaRampPlotAxes(1).Y(x * x), kChannelColours[1]));
    EXPECT_TRUE(picture.Shows(GammaRampPlotAxes(2).X(x), GammaRampPlotAxes(2).Y(std::sqrt(x)), kChannelColours[2]));
    EXPECT_TRUE(picture.OnlyShows(GammaRampPlotAxes(1).X(x), GammaRampPlotAxes(1).Y(x), kWhite));
}

// A table-based profile's outline is found by sampling: its corners are the
// solid inks and their overprints, as lcms2 itself converts them.
TEST_F(PlotsTest, CmykOutlineReachesTheSolidsAndOverprints) {
    const std::vector<uint8_t> bytes = tesk::test::ReadBytes(tesk::test::DataPath("ColorProfile/ISO Coated (FOGRA39).icc"));
    const SGamut gamut = GamutOfProfile(bytes, "FOGRA39", kProfileColour);
    EXPECT_TRUE(gamut.primaries.empty());
    ASSERT_GE(gamut.outline.size(), 6u);

    cmsHPROFILE cmyk = cmsOpenProfileFromMem(bytes.data(), cmsUInt32Number(bytes.size()));
    cmsHPROFILE xyz = cmsCreateXYZProfile();
    cmsHTRANSFORM transform = cmsCreateTransform(cmyk, TYPE_CMYK_DBL, xyz, TYPE_XYZ_DBL, INTENT_RELATIVE_COLORIMETRIC, 0);
    const double solids[6][4] = {{100, 0, 0, 0}, {0, 100, 0, 0}, {0, 0, 100, 0},
                                 {0, 100, 100, 0}, {100, 0, 100, 0}, {100, 100, 0, 0}};
    for (const auto& ink : solids) {
        cmsCIEXYZ colour;
        cmsDoTransform(transform, ink, &colour, 1);
        const double sum = colour.X + colour.Y + colour.Z, x = colour.X / sum, y = colour.Y / sum;
        double nearest = 1;
        for (const auto& [vx, vy] : gamut.outline) nearest = std::min(nearest, std::hypot(vx - x, vy - y));
        EXPECT_LT(nearest, 0.01) << ink[0] << " " << ink[1] << " " << ink[2];
    }
    cmsDeleteTransform(transform);
    cmsCloseProfile(xyz);
    cmsCloseProfile(cmyk);
}

// 30 x 20 pixels, C=M=Y=K: the left 10 columns 200 (313.7%), the rest 64 (100.4%).
SImage InkImage(bool cmyk, bool inverted) {
    SImage image;
    image.cmyk = cmyk;
    image.pixels.Create(30, 20, cmyk ? VPF_RGBA_8 : VPF_GREY_8);
    const int channels = cmyk ? 4 : 1;
    for (int y = 0; y < 20; ++y)
        for (int x = 0; x < 30; ++x)
            for (int c = 0; c < channels; ++c) {
                const int value = x < 10 ? 200 : 64;
                image.pixels.GetRow(y)[x * channels + c] = BYTE(inverted ? 255 - value : value);
            }
    return image;
}

TEST_F(PlotsTest, InkCoverageOfPlatesAndOfPackedCmykAgree) {
    WriteImage(Path("packed.tif"), InkImage(true, false));
    std::vector<std::string> plates;
    for (const char* ink : {"c", "m", "y", "k"}) {
        plates.push_back(Path(std::string("plate-") + ink + ".png"));
        WriteImage(plates.back(), InkImage(false, true));
    }
    for (const SInkCoverage& coverage :
         {MeasureInkCoverage({Path("packed.tif")}, false, 300), MeasureInkCoverage(plates, true, 300)}) {
        EXPECT_EQ(coverage.bins[31], 200u);  // 313.7%
        EXPECT_EQ(coverage.bins[10], 400u);  // 100.4%
        EXPECT_EQ(coverage.overLimit, 200u);
        EXPECT_NEAR(coverage.maximum, 4 * 200 / 2.55, 1e-9);
        EXPECT_EQ(coverage.maximumX, 0);
        EXPECT_EQ(coverage.maximumY, 0);
    }

    WriteInkCoveragePlot(Path("ink.png"), MeasureInkCoverage({Path("packed.tif")}, false, 300));
    const CPicture picture(Path("ink.png"));
    ASSERT_TRUE(picture.Loaded());
    const SAxes axes = InkHistogramAxes(MeasureInkCoverage({Path("packed.tif")}, false, 300));
    ASSERT_EQ(axes.yMax, 70);  // two thirds of the pixels in the highest bin
    EXPECT_TRUE(picture.Shows(axes.X(105), axes.Y(64), kProfileColour));
    EXPECT_TRUE(picture.OnlyShows(axes.X(105), axes.Y(69), kWhite));
    EXPECT_TRUE(picture.Shows(axes.X(315), axes.Y(31), kLimitColour));
    EXPECT_TRUE(picture.OnlyShows(axes.X(315), axes.Y(36), kWhite));
    EXPECT_TRUE(picture.OnlyShows(axes.X(205), axes.Y(2), kWhite));

    SInkCheckOptions options;
    options.maxInk = 320;
    options.failOverLimit = true;
    EXPECT_EQ(CheckInkCoverage(options, {Path("packed.tif")}, false, {}), 0);
    options.maxInk = 300;
    EXPECT_EQ(CheckInkCoverage(options, {Path("packed.tif")}, false, {}), 1);
    options.failOverLimit = false;
    EXPECT_EQ(CheckInkCoverage(options, {Path("packed.tif")}, false, {}), 0);
}

}  // namespace
}  // namespace teskcolor
