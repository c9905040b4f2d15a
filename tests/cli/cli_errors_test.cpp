// The program's contract with scripts: help on every command, one-line
// errors with distinct exit codes, and no output left behind by a failure.
#include <gtest/gtest.h>
#include <tiffio.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "cli/imageio/ImageFile.h"
#include "cli_runner.h"
#include "image_fixtures.h"
#include "support/temp_env.h"

namespace teskcolor::test {
namespace {

namespace fs = std::filesystem;

const std::string kFogra = tesk::test::DataPath("ColorProfile/ISO Coated (FOGRA39).icc");

class CliErrors : public tesk::test::IsolatedTest {
protected:
    std::string Path(const std::string& name) const { return env_.Root() + "/" + name; }
    size_t FilesIn(const std::string& folder) const {
        size_t count = 0;
        for (const auto& entry : fs::directory_iterator(folder)) count += entry.is_regular_file();
        return count;
    }
    // Exactly one line, starting with the program's name.
    static void ExpectOneLine(const SRun& run) {
        EXPECT_EQ(run.err.rfind("teskcolor: ", 0), 0u) << run.err;
        EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;
    }
};

TEST_F(CliErrors, EveryCommandHasHelp) {
    for (const char* command : {"info", "convert", "separate", "combine", "proof", "profiles", "settings",
                                "make-profile", "chart", "demo", "gamma", "view", "print", "setup"}) {
        const SRun run = RunTeskcolor({command, "--help"});
        EXPECT_EQ(run.code, 0) << command;
        EXPECT_NE(run.out.find(std::string("usage: teskcolor ") + command), std::string::npos) << command;
    }
    EXPECT_EQ(RunTeskcolor({"--help"}).code, 0);
    EXPECT_EQ(RunTeskcolor({}).code, 2);
}

TEST_F(CliErrors, BadArgumentsAreUsageErrors) {
    SRun run = RunTeskcolor({"separate", "--bogus", "a.tif", "b.tif"});
    EXPECT_EQ(run.code, 2);
    ExpectOneLine(run);
    EXPECT_EQ(RunTeskcolor({"frobnicate"}).code, 2);
    EXPECT_EQ(RunTeskcolor({"chart", "--width", "ten", Path("c.png")}).code, 2);
    EXPECT_EQ(RunTeskcolor({"separate", "--cmyk"}).code, 2);
    EXPECT_EQ(RunTeskcolor({"settings", "set", "intent", "7"}).code, 2);
}

// Numbers and choices that used to be taken, rounded or stored as 0.
TEST_F(CliErrors, EveryNumberAndChoiceIsChecked) {
    for (const auto& args : std::vector<std::vector<std::string>>{
             {"chart", "--width", "100.5", Path("c.png")},
             {"chart", "--16bit", Path("c16.jpg")},
             {"proof", "--intent", "1.5", Path("in.png"), Path("out.png")},
             {"proof", "--proof-intent", "vivid", Path("in.png"), Path("out.png")},
             {"make-profile", "--primaries", "p3", Path("p.icc")},
             {"settings", "set", "embedded", "foo"},
             {"settings", "set", "proof-intent", "relative colorimetric"}}) {
        const SRun run = RunTeskcolor(args);
        EXPECT_EQ(run.code, 2) << args[0] << " " << args[1];
        ExpectOneLine(run);
    }
    EXPECT_EQ(FilesIn(env_.Root()), 0u);
}

TEST_F(CliErrors, ProgramConventions) {
    SRun run = RunTeskcolor({"--version"});
    EXPECT_EQ(run.code, 0);
    EXPECT_EQ(run.out.rfind("teskcolor ", 0), 0u) << run.out;
    run = RunTeskcolor({"help", "separate"});
    EXPECT_EQ(run.code, 0);
    EXPECT_NE(run.out.find("usage: teskcolor separate"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("example:"), std::string::npos) << run.out;
    EXPECT_EQ(RunTeskcolor({"help", "frobnicate"}).code, 2);
    // The module's trace for one run, and only when asked.
    EXPECT_NE(RunTeskcolor({"--verbose", "settings", "show"}).err.find("[INFO]"), std::string::npos);
    EXPECT_EQ(RunTeskcolor({"settings", "show"}).err, "");
    // No display is not a failure of the colour system.
    unsetenv("DISPLAY");
    for (const char* command : {"view", "setup"}) {
        run = RunTeskcolor(command == std::string("view") ? std::vector<std::string>{command, Path("x.png")}
                                                            : std::vector<std::string>{command});
        EXPECT_EQ(run.code, 8) << command << ": " << run.err;
        ExpectOneLine(run);
    }
}

TEST_F(CliErrors, MissingInputIsExitThree) {
    const SRun run = RunTeskcolor({"separate", "--invert", Path("absent.tif"), Path("plates.tif")});
    EXPECT_EQ(run.code, 3);
    ExpectOneLine(run);
    EXPECT_NE(run.err.find("absent.tif"), std::string::npos);
    EXPECT_EQ(RunTeskcolor({"info", Path("absent.icc")}).code, 3);
    EXPECT_EQ(FilesIn(env_.Root()), 0u);
}

TEST_F(CliErrors, TruncatedImageIsExitFourAndLeavesNoOutput) {
    for (const char* extension : {".tif", ".png", ".jpg"}) {
        const std::string input = Path(std::string("in") + extension);
        WriteImage(input, SmoothImage(200, 150, VPF_RGB_8));
        std::vector<uint8_t> bytes = tesk::test::ReadBytes(input);
        bytes.resize(bytes.size() / 2);
        tesk::test::WriteBytes(input, bytes);

        for (const auto& args : std::vector<std::vector<std::string>>{
                 {"separate", "--packed", input, Path("packed.tif")},
                 {"separate", "--invert", input, Path("plates.png")},
                 {"convert", "--from", kFogra, input, Path("out.png")},
                 {"proof", input, Path("proof.tif")}}) {
            const SRun run = RunTeskcolor(args);
            EXPECT_EQ(run.code, 4) << args[0] << " " << extension << ": " << run.err;
            ExpectOneLine(run);
        }
        EXPECT_EQ(FilesIn(env_.Root()), 1u) << extension;  // the damaged input alone
        fs::remove(input);
    }
}

// Deflate strips of 16 rows, the last one overwritten: the damage is met
// only after the separation has written whole bands of every output.
void WriteTiffDamagedAtTheEnd(const std::string& path, int width, int height) {
    TIFF* tif = TIFFOpen(path.c_str(), "w");
    ASSERT_NE(tif, nullptr);
    TIFFSetField(tif, TIFFTAG_IMAGEWIDTH, uint32_t(width));
    TIFFSetField(tif, TIFFTAG_IMAGELENGTH, uint32_t(height));
    TIFFSetField(tif, TIFFTAG_BITSPERSAMPLE, uint16_t(8));
    TIFFSetField(tif, TIFFTAG_SAMPLESPERPIXEL, uint16_t(3));
    TIFFSetField(tif, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB);
    TIFFSetField(tif, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(tif, TIFFTAG_COMPRESSION, COMPRESSION_ADOBE_DEFLATE);
    TIFFSetField(tif, TIFFTAG_ROWSPERSTRIP, uint32_t(16));
    std::vector<uint8_t> row(size_t(width) * 3);
    for (int y = 0; y < height; ++y) {
        for (size_t i = 0; i < row.size(); ++i) row[i] = uint8_t(i + 3 * y);
        ASSERT_GE(TIFFWriteScanline(tif, row.data(), uint32_t(y), 0), 0);
    }
    TIFFClose(tif);

    tif = TIFFOpen(path.c_str(), "r");
    ASSERT_NE(tif, nullptr);
    uint64_t* offsets = nullptr;
    uint64_t* counts = nullptr;
    ASSERT_TRUE(TIFFGetField(tif, TIFFTAG_STRIPOFFSETS, &offsets) && TIFFGetField(tif, TIFFTAG_STRIPBYTECOUNTS, &counts));
    const uint32_t last = TIFFNumberOfStrips(tif) - 1;
    const size_t begin = size_t(offsets[last]), end = begin + size_t(counts[last]);
    TIFFClose(tif);
    std::vector<uint8_t> bytes = tesk::test::ReadBytes(path);
    ASSERT_LE(end, bytes.size());
    std::fill(bytes.begin() + std::ptrdiff_t(begin), bytes.begin() + std::ptrdiff_t(end), uint8_t(0xFF));
    tesk::test::WriteBytes(path, bytes);
}

TEST_F(CliErrors, DamageMetAfterTheFirstBandStillLeavesNoOutput) {
    const std::string input = Path("late.tif");
    WriteTiffDamagedAtTheEnd(input, 2000, 1500);
    for (const auto& args : std::vector<std::vector<std::string>>{{"separate", "--packed", input, Path("packed.tif")},
                                                                 {"separate", input, Path("plates.tif")}}) {
        const SRun run = RunTeskcolor(args);
        EXPECT_EQ(run.code, 4) << run.err;
        ExpectOneLine(run);
        EXPECT_NE(run.err.find("at row 14"), std::string::npos) << run.err;
    }
    EXPECT_EQ(FilesIn(env_.Root()), 1u);
}

TEST_F(CliErrors, UnsupportedPixelFormatIsExitFive) {
    const std::string input = Path("grey-alpha.png");
    WriteImage(input, PatternImage(16, 16, VPF_GREY_ALPHA_8));
    const SRun run = RunTeskcolor({"separate", "--invert", input, Path("plates.tif")});
    EXPECT_EQ(run.code, 5) << run.err;
    ExpectOneLine(run);
    EXPECT_EQ(FilesIn(env_.Root()), 1u);
}

TEST_F(CliErrors, ProfileOfTheWrongClassIsExitSix) {
    const std::string input = Path("chart.png");
    ASSERT_EQ(RunTeskcolor({"chart", "--width", "64", "--height", "48", input}).code, 0);
    const std::string rgbProfile = Path("srgb.icc");
    tesk::test::WriteBytes(rgbProfile, SrgbProfileBytes());

    SRun run = RunTeskcolor({"separate", "--invert", "--cmyk", rgbProfile, input, Path("plates.tif")});
    EXPECT_EQ(run.code, 6) << run.err;
    ExpectOneLine(run);
    run = RunTeskcolor({"settings", "set", "working-space", kFogra});
    EXPECT_EQ(run.code, 6) << run.err;
    // A CMYK profile embedded in an RGB image does not fit it.
    SImage tagged = SmoothImage(8, 8, VPF_RGB_8);
    tagged.iccProfile = tesk::test::ReadBytes(kFogra);
    WriteImage(Path("mistagged.tif"), tagged);
    EXPECT_EQ(RunTeskcolor({"separate", "--packed", Path("mistagged.tif"), Path("packed.tif")}).code, 6);
    EXPECT_FALSE(fs::exists(Path("plates-cyan.tif")));
    EXPECT_FALSE(fs::exists(Path("packed.tif")));
}

TEST_F(CliErrors, RunOnlyOverridesLeaveTheStoredSettingsAlone) {
    const std::string input = Path("chart.png");
    ASSERT_EQ(RunTeskcolor({"chart", "--width", "64", "--height", "48", input}).code, 0);
    const std::string before = RunTeskcolor({"settings", "show", "--json"}).out;
    ASSERT_EQ(RunTeskcolor({"separate", "--invert", "--cmyk", kFogra, input, Path("plates.tif")}).code, 0);
    ASSERT_EQ(RunTeskcolor({"proof", "--proof-profile", kFogra, input, Path("proof.tif")}).code, 0);
    EXPECT_EQ(RunTeskcolor({"settings", "show", "--json"}).out, before);

    ASSERT_EQ(RunTeskcolor({"settings", "set", "cmyk-profile", kFogra}).code, 0);
    ASSERT_EQ(RunTeskcolor({"settings", "set", "intent", "saturation"}).code, 0);
    const std::string after = RunTeskcolor({"settings", "show"}).out;
    EXPECT_NE(after.find("FOGRA39"), std::string::npos) << after;
    EXPECT_NE(after.find("intent           saturation (2)"), std::string::npos) << after;
}

TEST_F(CliErrors, SettingsFileHasNamedKeysAndOldFilesAreRead) {
    fs::create_directories(env_.ConfigDir() + "/teskcolor");
    const std::string file = env_.ConfigDir() + "/teskcolor/settings.json";
    tesk::test::WriteBytes(file, {});
    std::ofstream(file) << R"({"169/177": {"int": 2}})";
    EXPECT_NE(RunTeskcolor({"settings", "show"}).out.find("saturation (2)"), std::string::npos);
    ASSERT_EQ(RunTeskcolor({"settings", "set", "intent", "absolute"}).code, 0);
    std::stringstream text;
    text << std::ifstream(file).rdbuf();
    EXPECT_NE(text.str().find("\"intent\""), std::string::npos) << text.str();
    EXPECT_EQ(text.str().find("169/177"), std::string::npos) << text.str();
}

}  // namespace
}  // namespace teskcolor::test
