// Rendering intents, black-point compensation and device links, each checked
// against lcms2's own tificc on the same image and profiles.
#include <gtest/gtest.h>
#include <lcms2.h>

#include <cstdlib>
#include <nlohmann/json.hpp>

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
        tificc_ = FindTool("tificc");
        if (tificc_.empty()) GTEST_SKIP() << "tificc (liblcms2-utils) is not installed";
        ASSERT_EQ(RunTeskcolor({"chart", "--width", "96", "--height", "48", Path("chart.tif")}).code, 0);
    }
    std::string Path(const std::string& name) const { return env_.Root() + "/" + name; }
    // tificc's result (high-resolution precalculation, as the platform's BEST_MODE) for `options`.
    SImage Reference(const std::string& options, const std::string& input) {
        const std::string command = ShellQuote(tificc_) + " -c2 " + options + " " + ShellQuote(input) + " " +
                                    ShellQuote(Path("reference.tif")) + " >/dev/null 2>&1";
        EXPECT_EQ(std::system(command.c_str()), 0) << command;
        return ReadImage(Path("reference.tif"));
    }
    std::string tificc_;
};

// An RGB input profile with a D65 white: absolute colorimetric differs from relative.
void WriteD65InputProfile(const std::string& path) {
    cmsCIExyY d65;
    cmsWhitePointFromTemp(&d65, 6504);
    const cmsCIExyYTRIPLE primaries = {{0.64, 0.33, 1}, {0.30, 0.60, 1}, {0.15, 0.06, 1}};
    cmsToneCurve* gamma = cmsBuildGamma(nullptr, 2.2);
    cmsToneCurve* curves[3] = {gamma, gamma, gamma};
    cmsHPROFILE profile = cmsCreateRGBProfile(&d65, &primaries, curves);
    cmsFreeToneCurve(gamma);
    cmsSetDeviceClass(profile, cmsSigInputClass);
    cmsSetProfileVersion(profile, 2.1);
    cmsCIEXYZ paper;
    cmsxyY2XYZ(&paper, &d65);
    cmsWriteTag(profile, cmsSigMediaWhitePointTag, &paper);
    tesk::test::WriteBytes(path, tesk::test::SavedProfile(profile));
}

TEST_F(CliRendering, EveryIntentWithAndWithoutBlackPointCompensationMatchesTificc) {
    const std::string fogra = tesk::test::DataPath("ColorProfile/ISO Coated (FOGRA39).icc");
    const std::string working = env_.ColorDir() + "/sRGB Color Space Profile.icm";
    WriteD65InputProfile(Path("d65.icc"));
    ASSERT_EQ(RunTeskcolor({"separate", "--packed", "--cmyk", fogra, Path("chart.tif"), Path("cmyk.tif")}).code, 0);
    struct SCommandCase {
        std::vector<std::string> args;
        std::string input, from, to;
    };
    const std::vector<SCommandCase> commands = {
        {{"separate", "--packed", "--cmyk", fogra}, Path("chart.tif"), working, fogra},
        {{"combine", "--cmyk", fogra}, Path("cmyk.tif"), fogra, working},
        {{"convert", "--to", Path("d65.icc")}, Path("chart.tif"), working, Path("d65.icc")},
    };
    for (const SCommandCase& command : commands)
        for (int intent = 0; intent < 4; ++intent)
            for (const bool bpc : {false, true}) {
                std::vector<std::string> args = command.args;
                args.insert(args.end(), {"--intent", std::to_string(intent), command.input, Path("ours.tif")});
                if (bpc) args.insert(args.begin() + 1, "--bpc");
                const SRun run = RunTeskcolor(args);
                ASSERT_EQ(run.code, 0) << args[0] << ": " << run.err;
                const std::string options = "-t" + std::to_string(intent) + (bpc ? " -b " : " ") +
                                            ShellQuote("-i" + command.from) + " " + ShellQuote("-o" + command.to);
                const int difference =
                    MaxSampleDifference(ReadImage(Path("ours.tif")).pixels, Reference(options, command.input).pixels);
                EXPECT_GE(difference, 0) << args[0] << " intent " << intent << " bpc " << bpc;
                EXPECT_LE(difference, 1) << args[0] << " intent " << intent << " bpc " << bpc;
            }
}

TEST_F(CliRendering, DeviceLinksApplyAsTificcAppliesThemAndInfoNamesTheirSpaces) {
    const std::string fogra = tesk::test::DataPath("ColorProfile/ISO Coated (FOGRA39).icc");
    const std::string linkicc = FindTool("linkicc");
    if (linkicc.empty()) GTEST_SKIP() << "linkicc (liblcms2-utils) is not installed";
    const std::string make = ShellQuote(linkicc) + " -t0 " + ShellQuote("-o" + Path("link.icc")) + " '*sRGB' " +
                             ShellQuote(fogra) + " >/dev/null 2>&1";
    ASSERT_EQ(std::system(make.c_str()), 0);

    ASSERT_EQ(RunTeskcolor({"convert", "--link", Path("link.icc"), Path("chart.tif"), Path("linked.tif")}).code, 0);
    const SImage linked = ReadImage(Path("linked.tif"));
    ASSERT_TRUE(linked.cmyk);
    EXPECT_LE(MaxSampleDifference(linked.pixels, Reference("-l" + ShellQuote(Path("link.icc")), Path("chart.tif")).pixels), 1);
    // The plates hold the same inks (read back as grey: 255 - ink).
    ASSERT_EQ(RunTeskcolor({"separate", "--link", Path("link.icc"), Path("chart.tif"), Path("plates.tif")}).code, 0);
    const SImage black = ReadImage(Path("plates-black.tif"));
    for (int y = 0; y < 48; ++y)
        for (int x = 0; x < 96; ++x) ASSERT_EQ(255 - black.pixels.GetRow(y)[x], linked.pixels.GetRow(y)[4 * x + 3]);

    const auto info = nlohmann::json::parse(RunTeskcolor({"info", "--json", Path("link.icc")}).out);
    EXPECT_EQ(info["device_link"], nlohmann::json({{"input", "RGB "}, {"output", "CMYK"}}));
}

}  // namespace
}  // namespace teskcolor::test
