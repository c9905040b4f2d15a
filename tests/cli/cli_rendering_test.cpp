// Rendering intents, black-point compensation and device links against lcms2's tificc.
#include <gtest/gtest.h>
#include <lcms2.h>

#include "cli/imageio/ImageFile.h"
#include "cli_runner.h"
#include "image_fixtures.h"
#include "support/lcms_profiles.h"

namespace teskcolor::test {
namespace {

using tesk::test::ShellQuote;

class CliRendering : public tesk::test::IsolatedTest {
protected:
    void SetUp() override {
        if (FindTool("tificc").empty() || FindTool("linkicc").empty()) GTEST_SKIP() << "liblcms2-utils is not installed";
        ASSERT_EQ(RunTeskcolor({"chart", "--width", "96", "--height", "48", Path("chart.tif")}).code, 0);
    }
    std::string Path(const std::string& name) const { return env_.Root() + "/" + name; }
    // `ours` beside tificc's result (-c2: the precalculation of the platform's BEST_MODE) on `input`.
    int DifferenceFromTificc(const std::string& ours, const std::string& options, const std::string& input) {
        const std::string command = ShellQuote(FindTool("tificc")) + " -c2 " + options + " " + ShellQuote(input) +
                                    " " + ShellQuote(Path("reference.tif")) + " >/dev/null 2>&1";
        EXPECT_EQ(std::system(command.c_str()), 0) << command;
        return MaxSampleDifference(ReadImage(ours).pixels, ReadImage(Path("reference.tif")).pixels);
    }
};

TEST_F(CliRendering, EveryIntentWithAndWithoutBlackPointCompensationMatchesTificc) {
    const std::string fogra = tesk::test::DataPath("ColorProfile/ISO Coated (FOGRA39).icc");
    const std::string working = env_.ColorDir() + "/sRGB Color Space Profile.icm";
    // An RGB input profile with a D65 white: absolute colorimetric differs from relative.
    const cmsCIExyY d65 = {0.3127, 0.3290, 1};
    const cmsCIEXYZ white = {0.9505, 1, 1.089};
    const cmsCIExyYTRIPLE primaries = {{0.64, 0.33, 1}, {0.30, 0.60, 1}, {0.15, 0.06, 1}};
    cmsToneCurve* gamma = cmsBuildGamma(nullptr, 2.2);
    cmsToneCurve* curves[3] = {gamma, gamma, gamma};
    cmsHPROFILE input = cmsCreateRGBProfile(&d65, &primaries, curves);
    cmsFreeToneCurve(gamma);
    cmsSetDeviceClass(input, cmsSigInputClass);
    cmsSetProfileVersion(input, 2.1);
    cmsWriteTag(input, cmsSigMediaWhitePointTag, &white);
    tesk::test::WriteBytes(Path("d65.icc"), tesk::test::SavedProfile(input));
    ASSERT_EQ(RunTeskcolor({"separate", "--packed", "--cmyk", fogra, Path("chart.tif"), Path("cmyk.tif")}).code, 0);

    struct SCase {
        std::vector<std::string> command;
        std::string input, from, to;
    };
    const SCase cases[] = {{{"separate", "--packed", "--cmyk", fogra}, Path("chart.tif"), working, fogra},
                           {{"combine", "--cmyk", fogra}, Path("cmyk.tif"), fogra, working},
                           {{"convert", "--to", Path("d65.icc")}, Path("chart.tif"), working, Path("d65.icc")}};
    for (const SCase& c : cases)
        for (const std::string intent : {"0", "1", "2", "3"})
            for (const bool bpc : {false, true}) {
                std::vector<std::string> args = c.command;
                args.insert(args.end(), {"--intent", intent, c.input, Path("ours.tif")});
                if (bpc) args.push_back("--bpc");
                ASSERT_EQ(RunTeskcolor(args).code, 0) << args[0];
                const std::string options = "-t" + intent + (bpc ? " -b " : " ") + ShellQuote("-i" + c.from) + " " +
                                            ShellQuote("-o" + c.to);
                const int difference = DifferenceFromTificc(Path("ours.tif"), options, c.input);
                EXPECT_TRUE(difference >= 0 && difference <= 1) << args[0] << " " << options << ": " << difference;
            }
}

TEST_F(CliRendering, DeviceLinksApplyAsTificcAppliesThem) {
    const std::string make = ShellQuote(FindTool("linkicc")) + " -t0 " + ShellQuote("-o" + Path("link.icc")) +
                             " '*sRGB' " + ShellQuote(tesk::test::DataPath("ColorProfile/ISO Coated (FOGRA39).icc"));
    ASSERT_EQ(std::system((make + " >/dev/null 2>&1").c_str()), 0);
    ASSERT_EQ(RunTeskcolor({"convert", "--link", Path("link.icc"), Path("chart.tif"), Path("linked.tif")}).code, 0);
    EXPECT_LE(DifferenceFromTificc(Path("linked.tif"), ShellQuote("-l" + Path("link.icc")), Path("chart.tif")), 1);
    // Plates hold the same inks (MinIsWhite, read back as 255 - ink).
    ASSERT_EQ(RunTeskcolor({"separate", "--link", Path("link.icc"), Path("chart.tif"), Path("plates.tif")}).code, 0);
    const SImage linked = ReadImage(Path("linked.tif")), black = ReadImage(Path("plates-black.tif"));
    for (int y = 0; y < 48; ++y)
        for (int x = 0; x < 96; ++x) ASSERT_EQ(255 - black.pixels.GetRow(y)[x], linked.pixels.GetRow(y)[4 * x + 3]);
}

}  // namespace
}  // namespace teskcolor::test
