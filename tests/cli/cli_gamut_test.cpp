// The gamut warning of `proof` and the share `info --gamut` reports, against
// the pixels lcms2's own tificc -g marks.
#include <gtest/gtest.h>

#include <cstdlib>
#include <nlohmann/json.hpp>

#include "cli/imageio/ImageFile.h"
#include "cli_runner.h"
#include "support/temp_env.h"

namespace teskcolor::test {
namespace {

bool PixelIs(const SImage& image, int x, int y, const BYTE (&bgr)[3]) {
    const BYTE* pixel = image.pixels.GetRow(y) + 3 * x;
    return pixel[0] == bgr[0] && pixel[1] == bgr[1] && pixel[2] == bgr[2];
}

class CliGamut : public tesk::test::IsolatedTest {
protected:
    std::string Path(const std::string& name) const { return env_.Root() + "/" + name; }
    void Run(const std::vector<std::string>& args) {
        const SRun run = RunTeskcolor(args);
        ASSERT_EQ(run.code, 0) << args[0] << ": " << run.err;
    }
};

TEST_F(CliGamut, WarningMarksThePixelsTificcMarks) {
    const std::string tificc = FindTool("tificc");
    if (tificc.empty()) GTEST_SKIP() << "tificc (liblcms2-utils) is not installed";
    const std::string fogra = tesk::test::DataPath("ColorProfile/ISO Coated (FOGRA39).icc");
    Run({"chart", "--width", "600", "--height", "400", Path("chart.tif")});
    // Two warning colours: a pixel is marked exactly where the two proofs differ.
    for (const char* colour : {"255,0,255", "0,255,0"})
        Run({"proof", "--intent", "perceptual", "--proof-profile", fogra, std::string("--gamut-warning=") + colour,
             Path("chart.tif"), Path(std::string("proof-") + colour + ".tif")});
    const std::string working = env_.ColorDir() + "/sRGB Color Space Profile.icm";
    for (const char* marking : {"-g", ""}) {
        const std::string command = "'" + tificc + "' -t0 " + marking + " '-i" + working + "' '-o" + working +
                                    "' '-p" + fogra + "' '" + Path("chart.tif") + "' '" +
                                    Path(std::string("tificc") + marking + ".tif") + "' >/dev/null 2>&1";
        ASSERT_EQ(std::system(command.c_str()), 0);
    }
    const SImage magenta = ReadImage(Path("proof-255,0,255.tif")), green = ReadImage(Path("proof-0,255,0.tif"));
    const SImage marked = ReadImage(Path("tificc-g.tif")), unmarked = ReadImage(Path("tificc.tif"));
    // lcms2's default alarm colour, which tificc paints.
    const BYTE alarm[3] = {127, 127, 127};
    int ours = 0, differ = 0;
    for (int y = 0; y < 400; ++y)
        for (int x = 0; x < 600; ++x) {
            const bool out = PixelIs(magenta, x, y, {255, 0, 255}) && PixelIs(green, x, y, {0, 255, 0});
            const bool reference = PixelIs(marked, x, y, alarm) && !PixelIs(unmarked, x, y, alarm);
            ours += out;
            differ += out != reference;
        }
    // Measured: no pixel of the 240000 differs.
    EXPECT_EQ(differ, 0);
    EXPECT_GT(ours, 600 * 400 / 10);

    const SRun info = RunTeskcolor({"info", "--gamut", "--json", "--cmyk", fogra, Path("chart.tif")});
    ASSERT_EQ(info.code, 0) << info.err;
    EXPECT_EQ(nlohmann::json::parse(info.out)["out_of_gamut"], ours);
}

}  // namespace
}  // namespace teskcolor::test
