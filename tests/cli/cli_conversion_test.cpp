// The program's results: profile reports, separations against lcms2's own
// tificc, the separate/combine round trip, and the demo.
#include <gtest/gtest.h>
#include <lcms2.h>

#include <cmath>
#include <cstring>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "cli/imageio/ImageFile.h"
#include "cli_runner.h"
#include "image_fixtures.h"
#include "support/conversion_delta_e.h"
#include "support/temp_env.h"

namespace teskcolor::test {
namespace {

namespace fs = std::filesystem;

constexpr const char* kInks[4] = {"cyan", "magenta", "yellow", "black"};

std::string Profile(const char* name) { return tesk::test::DataPath(std::string("ColorProfile/") + name); }

class CliConversion : public tesk::test::IsolatedTest {
protected:
    std::string Path(const std::string& name) const { return env_.Root() + "/" + name; }
    void Run(const std::vector<std::string>& args) {
        const SRun run = RunTeskcolor(args);
        ASSERT_EQ(run.code, 0) << args[0] << ": " << run.err;
    }
};

TEST_F(CliConversion, InfoJsonOnTheSharedCMYKProfiles) {
    for (const char* name : {"ISO Coated (FOGRA39).icc", "SWOP Coated (TR003).icc"}) {
        const SRun run = RunTeskcolor({"info", "--json", Profile(name)});
        ASSERT_EQ(run.code, 0) << run.err;
        const auto info = nlohmann::json::parse(run.out);
        EXPECT_EQ(info["verdict"], "valid");
        EXPECT_EQ(info["header"]["class"], "prtr");
        EXPECT_EQ(info["header"]["colour_space"], "CMYK");
        EXPECT_EQ(info["header"]["connection_space"], "Lab ");
        EXPECT_EQ(info["header"]["size"], fs::file_size(Profile(name)));
        EXPECT_NE(info["description"].get<std::string>().find(std::string(name).substr(0, 4)), std::string::npos);
        EXPECT_FALSE(info["copyright"].get<std::string>().empty());
        EXPECT_EQ(info["module_analysis"]["classification"]["cmyk_printer"], true);
        EXPECT_EQ(info["module_analysis"]["classification"]["working_space"], false);
        // Paper white: a little darker and yellower than the D50 illuminant.
        const auto white = info["module_analysis"]["colorimetry"]["white_point"];
        EXPECT_GT(white[1].get<double>(), 0.7);
        EXPECT_LE(white[1].get<double>(), 1.0);
    }
    // The SWOP profile is the default CMYK profile here; the FOGRA one is not.
    const auto swop = nlohmann::json::parse(RunTeskcolor({"info", "--json", Profile("SWOP Coated (TR003).icc")}).out);
    EXPECT_EQ(swop["module_analysis"]["classification"]["same_as_cmyk_profile"], true);
}

TEST_F(CliConversion, InfoReportsAnImagesEmbeddedProfileAndRefusesGarbage) {
    SImage image = SmoothImage(8, 8, VPF_RGB_8);
    image.iccProfile = SrgbProfileBytes();
    WriteImage(Path("tagged.png"), image);
    const auto info = nlohmann::json::parse(RunTeskcolor({"info", "--json", Path("tagged.png")}).out);
    EXPECT_EQ(info["header"]["colour_space"], "RGB ");
    EXPECT_EQ(info["module_analysis"]["curves"]["rTRC"]["type"], "para");
    EXPECT_EQ(info["module_analysis"]["curves"]["rTRC"]["function_type"], 3);
    // A monitor-class profile counts as a working space only with single-gamma curves.
    EXPECT_EQ(info["module_analysis"]["classification"]["working_space"], false);

    std::vector<uint8_t> garbage = SrgbProfileBytes();
    for (size_t i = 36; i < 40; ++i) garbage[i] = 'x';  // no signature byte left
    tesk::test::WriteBytes(Path("bad.icc"), garbage);
    const SRun run = RunTeskcolor({"info", "--json", Path("bad.icc")});
    EXPECT_EQ(run.code, 4);
    EXPECT_EQ(nlohmann::json::parse(run.out)["verdict"], "refused");
}

TEST_F(CliConversion, MadeProfileReadsBackWithItsGamma) {
    Run({"make-profile", "--gamma", "1.8", "--primaries", "adobe", "--description", "Test display", Path("d.icc")});
    const auto info = nlohmann::json::parse(RunTeskcolor({"info", "--json", Path("d.icc")}).out);
    EXPECT_EQ(info["verdict"], "valid");
    EXPECT_EQ(info["description"], "Test display");
    EXPECT_EQ(info["header"]["class"], "mntr");
    EXPECT_NEAR(info["module_analysis"]["curves"]["gTRC"]["gamma"].get<double>(), 1.8, 1.0 / 256);
    EXPECT_NEAR(info["module_analysis"]["colorimetry"]["rXYZ"][0].get<double>(), 0.6097, 1e-4);
    EXPECT_EQ(info["module_analysis"]["classification"]["working_space"], true);
    // lcms2 reads it as the same colour space.
    cmsHPROFILE profile = cmsOpenProfileFromFile(Path("d.icc").c_str(), "r");
    ASSERT_NE(profile, nullptr);
    const cmsToneCurve* curve = static_cast<const cmsToneCurve*>(cmsReadTag(profile, cmsSigGreenTRCTag));
    ASSERT_NE(curve, nullptr);
    EXPECT_NEAR(cmsEstimateGamma(curve, 0.01), 1.8, 0.01);
    cmsCloseProfile(profile);
}

// RGB colours a press can print: CMYK ink mixes seen through the profile.
SImage InGamutImage(const std::string& cmykProfile) {
    cmsHPROFILE cmyk = cmsOpenProfileFromFile(cmykProfile.c_str(), "r");
    cmsHPROFILE srgb = cmsCreate_sRGBProfile();
    cmsHTRANSFORM toRgb = cmsCreateTransform(cmyk, TYPE_CMYK_8, srgb, TYPE_BGR_8, INTENT_RELATIVE_COLORIMETRIC, 0);
    SImage image;
    image.pixels.Create(6 * 6 * 6, 3, VPF_RGB_8);
    for (int row = 0; row < 3; ++row) {
        for (int i = 0; i < 216; ++i) {
            const uint8_t ink[4] = {uint8_t(i % 6 * 30), uint8_t(i / 6 % 6 * 30), uint8_t(i / 36 * 30), uint8_t(row * 40)};
            cmsDoTransform(toRgb, ink, image.pixels.GetRow(row) + i * 3, 1);
        }
    }
    cmsDeleteTransform(toRgb);
    cmsCloseProfile(cmyk);
    cmsCloseProfile(srgb);
    image.iccProfile = SrgbProfileBytes();
    return image;
}

TEST_F(CliConversion, SeparateThenCombineGivesInGamutColoursBack) {
    for (const char* name : {"SWOP Coated (TR003).icc", "ISO Coated (FOGRA39).icc"}) {
        const std::string profile = Profile(name);
        WriteImage(Path("in.tif"), InGamutImage(profile));
        // Either plate convention comes back on combine's defaults: the TIFF plates say which they hold.
        for (const std::string convention : {"--invert", "--intent=perceptual"}) {
            Run({"separate", convention, "--cmyk", profile, Path("in.tif"), Path("plates.tif")});
            Run({"combine", "--cmyk", profile, Path("plates.tif"), Path("back.tif")});
            const SImage input = ReadImage(Path("in.tif"));
            const SImage back = ReadImage(Path("back.tif"));
            ASSERT_EQ(back.pixels.GetPixelFormat(), VPF_RGB_8);
            EXPECT_FALSE(back.iccProfile.empty());
            const auto [worst, mean] = tesk::test::DeltaE2000(input.pixels, back.pixels);
            EXPECT_LT(mean, 1.0) << name << " " << convention;
            EXPECT_LT(worst, 5.0) << name << " " << convention;
            std::printf("%s %s: CIEDE2000 mean %.2f, worst %.2f\n", name, convention.c_str(), mean, worst);
        }
    }
}

TEST_F(CliConversion, PlatesAreComplementsAndSixteenBitPlatesAreTimes257) {
    Run({"chart", "--width", "120", "--height", "80", Path("chart8.tif")});
    // The same pixels at 16 bits (x 257): the separation works on their high byte.
    const SImage chart8 = ReadImage(Path("chart8.tif"));
    SImage chart16;
    chart16.iccProfile = chart8.iccProfile;
    ASSERT_TRUE(chart16.pixels.Create(120, 80, VPF_RGB_16));
    ASSERT_TRUE(RowIterator::CopyRect(chart16.pixels, chart8.pixels));
    WriteImage(Path("chart16.tif"), chart16);

    Run({"separate", Path("chart8.tif"), Path("ink.png")});
    Run({"separate", "--invert", Path("chart8.tif"), Path("inv.png")});
    Run({"separate", "--invert", Path("chart16.tif"), Path("inv16.tif")});
    for (const char* ink : kInks) {
        const SImage amounts = ReadImage(Path(std::string("ink-") + ink + ".png"));
        const SImage inverted = ReadImage(Path(std::string("inv-") + ink + ".png"));
        const SImage wide = ReadImage(Path(std::string("inv16-") + ink + ".tif"));
        ASSERT_EQ(amounts.pixels.GetPixelFormat(), VPF_GREY_8);
        ASSERT_EQ(wide.pixels.GetPixelFormat(), VPF_GREY_16);
        int inked = 0;
        for (int y = 0; y < 80; ++y) {
            for (int x = 0; x < 120; ++x) {
                const uint8_t v = amounts.pixels.GetRow(y)[x];
                inked += v > 0;
                ASSERT_EQ(inverted.pixels.GetRow(y)[x], uint8_t(255 - v)) << ink << " " << x << "," << y;
                uint16_t w;
                std::memcpy(&w, wide.pixels.GetRow(y) + 2 * x, 2);
                ASSERT_EQ(w, uint16_t(257 * inverted.pixels.GetRow(y)[x])) << ink << " " << x << "," << y;
            }
        }
        EXPECT_GT(inked, 120 * 80 / 4) << ink;  // every ink is used by the chart
    }
}

TEST_F(CliConversion, PackedSeparationAgreesWithTificc) {
    const std::string tificc = FindTool("tificc");
    if (tificc.empty()) GTEST_SKIP() << "tificc (liblcms2-utils) is not installed";
    const std::string profile = Profile("ISO Coated (FOGRA39).icc");
    // Tall enough that the separation streams it in more than one band.
    Run({"chart", "--width", "3000", "--height", "1000", Path("chart.tif")});
    Run({"separate", "--packed", "--cmyk", profile, Path("chart.tif"), Path("packed.tif")});
    Run({"separate", "--cmyk", profile, Path("chart.tif"), Path("ink.tif")});
    // The working space the chart is in, as the module wrote it.
    const std::string working = env_.ColorDir() + "/sRGB Color Space Profile.icm";
    ASSERT_TRUE(fs::exists(working));
    // -c2: the high-resolution precalculated transform that the platform's BEST_MODE asks for.
    const std::string command = "'" + tificc + "' -t0 -c2 '-i" + working + "' '-o" + profile + "' '" + Path("chart.tif") +
                                "' '" + Path("reference.tif") + "' >/dev/null 2>&1";
    ASSERT_EQ(std::system(command.c_str()), 0);
    const SImage ours = ReadImage(Path("packed.tif"));
    const SImage reference = ReadImage(Path("reference.tif"));
    ASSERT_TRUE(ours.cmyk && reference.cmyk);
    EXPECT_EQ(ours.iccProfile, tesk::test::ReadBytes(profile));
    EXPECT_LE(MaxSampleDifference(ours.pixels, reference.pixels), 1);
    EXPECT_GE(MaxSampleDifference(ours.pixels, reference.pixels), 0);
    // The plates, banded on their own path, hold the packed image's channels
    // (MinIsWhite: read back as grey, 255 - ink).
    for (int ink = 0; ink < 4; ++ink) {
        const SImage plate = ReadImage(Path(std::string("ink-") + kInks[ink] + ".tif"));
        ASSERT_EQ(plate.pixels.GetHeight(), 1000);
        for (int y = 0; y < 1000; ++y)
            for (int x = 0; x < 3000; ++x)
                ASSERT_EQ(255 - plate.pixels.GetRow(y)[x], ours.pixels.GetRow(y)[4 * x + ink]) << kInks[ink] << " " << x << "," << y;
    }
}

// Bands forced small give the bytes of one band; a large image is never held whole.
TEST_F(CliConversion, BandedConversionsMatchOneBandInBoundedMemory) {
    Run({"chart", "--width", "64", "--height", "50", Path("chart.tif")});
    Run({"make-profile", "--primaries", "adobe", Path("adobe.icc")});
    Run({"separate", Path("chart.tif"), Path("plates.tif")});
    Run({"separate", "--packed", Path("chart.tif"), Path("packed.tif")});
    for (auto args : std::vector<std::vector<std::string>>{
             {"convert", "--to", Path("adobe.icc"), Path("chart.tif")},
             {"convert", "--intent", "perceptual", "--to", Path("adobe.icc"), Path("chart.tif")},
             {"proof", "--proof-profile", Profile("ISO Coated (FOGRA39).icc"), Path("chart.tif")},
             {"proof", "--gamut-warning", Path("chart.tif")},
             {"combine", Path("plates.tif")},
             {"combine", Path("packed.tif")}}) {
        args.push_back(Path("whole.tif"));
        Run(args);
        setenv("TESKCOLOR_BAND_ROWS", "7", 1);
        args.back() = Path("banded.tif");
        Run(args);
        unsetenv("TESKCOLOR_BAND_ROWS");
        EXPECT_EQ(tesk::test::ReadBytes(Path("whole.tif")), tesk::test::ReadBytes(Path("banded.tif"))) << args[0];
    }
    SImage large = PatternImage(6000, 3000, VPF_RGB_8);  // 54 MB of pixels
    large.iccProfile = SrgbProfileBytes();
    WriteImage(Path("large.tif"), large);
    large = {};
    const long peak = PeakMemoryMiB({"convert", "--to", Path("adobe.icc"), Path("large.tif"), Path("out.tif")});
    EXPECT_GT(peak, 0);
#ifndef __SANITIZE_ADDRESS__  // its shadow memory and quarantine are not the program's
    EXPECT_LE(peak, 64);
#endif
}

// On a terminal the bar follows the bands and ends full.
TEST_F(CliConversion, ConvertProgressMovesWithTheBandsToTheEnd) {
    Run({"chart", "--width", "64", "--height", "50", Path("chart.tif")});
    setenv("TESKCOLOR_BAND_ROWS", "10", 1);
    const std::string command = tesk::test::ShellQuote(TESKCOLOR_EXE) + " convert " + Path("chart.tif") + " " + Path("out.tif");
    const std::string screen = tesk::test::RunShell("script -qec " + tesk::test::ShellQuote(command) + " /dev/null").out;
    unsetenv("TESKCOLOR_BAND_ROWS");
    for (const char* shown : {"converting [######", " 40%", "100%"}) EXPECT_NE(screen.find(shown), std::string::npos) << shown << "\n" << screen;
}

// sRGB as another maker writes it: version 4, a parametric curve, and red
// nudged by less than converting between the two would show at 16 bits.
std::vector<uint8_t> AnotherMakersSrgb() {
    const cmsFloat64Number srgb[5] = {2.4, 1 / 1.055, 0.055 / 1.055, 1 / 12.92, 0.04045};
    cmsToneCurve* curve = cmsBuildParametricToneCurve(nullptr, 4, srgb);
    cmsToneCurve* curves[3] = {curve, curve, curve};
    const cmsCIExyY white = {0.3127, 0.3290, 1.0};
    const cmsCIExyYTRIPLE primaries = {{0.6405, 0.33, 1.0}, {0.30, 0.60, 1.0}, {0.15, 0.06, 1.0}};
    cmsHPROFILE profile = cmsCreateRGBProfile(&white, &primaries, curves);
    cmsFreeToneCurve(curve);
    return tesk::test::SavedProfile(profile);
}

// Another maker's sRGB is the working space in all but its bytes: taken as it
// is, not converted (which at 16 bits would move samples). Adobe RGB is converted.
TEST_F(CliConversion, AnotherMakersSrgbIsTakenAsTheWorkingSpace) {
    Run({"make-profile", "--primaries", "adobe", Path("adobe.icc")});
    SImage image = PatternImage(64, 48, VPF_RGB_16);
    for (const bool adobe : {false, true}) {
        image.iccProfile = adobe ? tesk::test::ReadBytes(Path("adobe.icc")) : AnotherMakersSrgb();
        WriteImage(Path("in.tif"), image);
        Run({"convert", Path("in.tif"), Path("out.tif")});
        const int moved = MaxSampleDifference(image.pixels, ReadImage(Path("out.tif")).pixels);
        EXPECT_EQ(moved > 0, adobe) << moved;
    }
}

// 16-bit ink within one 8-bit step of lcms2's own 16-bit separation, and
// combine takes the file back.
TEST_F(CliConversion, SixteenBitPackedSeparationAgreesWithTificcAndCombines) {
    const std::string tificc = FindTool("tificc");
    if (tificc.empty()) GTEST_SKIP() << "tificc (liblcms2-utils) is not installed";
    const std::string profile = Profile("ISO Coated (FOGRA39).icc");
    // Samples that are whole 8-bit steps: the module separates 16-bit RGB on
    // its high byte, so only these are held to lcms2's 16-bit result.
    Run({"chart", "--width", "300", "--height", "200", Path("chart8.tif")});
    const SImage chart8 = ReadImage(Path("chart8.tif"));
    SImage chart16;
    chart16.iccProfile = chart8.iccProfile;
    ASSERT_TRUE(chart16.pixels.Create(300, 200, VPF_RGB_16) && RowIterator::CopyRect(chart16.pixels, chart8.pixels));
    WriteImage(Path("chart.tif"), chart16);
    Run({"separate", "--packed", "--16bit", "--cmyk", profile, Path("chart.tif"), Path("packed.tif")});
    const std::string working = env_.ColorDir() + "/sRGB Color Space Profile.icm";
    const std::string command = "'" + tificc + "' -t0 -c2 -w16 '-i" + working + "' '-o" + profile + "' '" +
                                Path("chart.tif") + "' '" + Path("reference.tif") + "' >/dev/null 2>&1";
    ASSERT_EQ(std::system(command.c_str()), 0);
    const SImage ours = ReadImage(Path("packed.tif"));
    ASSERT_TRUE(ours.cmyk);
    ASSERT_EQ(ours.pixels.GetPixelFormat(), VPF_RGBA_16);
    const int worst = MaxSampleDifference(ours.pixels, ReadImage(Path("reference.tif")).pixels);
    EXPECT_GE(worst, 0);
    EXPECT_LE(worst, 257);
    Run({"combine", "--cmyk", profile, Path("packed.tif"), Path("back.tif")});
    EXPECT_FALSE(ReadImage(Path("back.tif")).cmyk);
}

// Both files are Adobe CMYK JPEGs (inverted, APP14), read by our reader and
// held to the same separation as TIFF: a writer or reader that missed the
// inversion would be 255 - ink away.
TEST_F(CliConversion, CmykJpegAgreesWithJpgiccAndCombines) {
    const std::string jpgicc = FindTool("jpgicc");
    if (jpgicc.empty()) GTEST_SKIP() << "jpgicc (liblcms2-utils) is not installed";
    const std::string profile = Profile("ISO Coated (FOGRA39).icc");
    Run({"chart", "--width", "300", "--height", "200", Path("chart.jpg")});
    Run({"separate", "--packed", "--quality", "100", "--cmyk", profile, Path("chart.jpg"), Path("packed.jpg")});
    const std::string working = env_.ColorDir() + "/sRGB Color Space Profile.icm";
    const std::string command = "'" + jpgicc + "' -t0 -c2 -q100 '-i" + working + "' '-o" + profile + "' '" +
                                Path("chart.jpg") + "' '" + Path("reference.jpg") + "' >/dev/null 2>&1";
    ASSERT_EQ(std::system(command.c_str()), 0);
    const SImage ours = ReadImage(Path("packed.jpg"));
    const SImage reference = ReadImage(Path("reference.jpg"));
    ASSERT_TRUE(ours.cmyk && reference.cmyk);
    EXPECT_EQ(ours.iccProfile, tesk::test::ReadBytes(profile));
    const int worst = MaxSampleDifference(ours.pixels, reference.pixels);
    EXPECT_GE(worst, 0);
    EXPECT_LE(worst, 1);
    Run({"separate", "--packed", "--cmyk", profile, Path("chart.jpg"), Path("packed.tif")});
    const int lossy = MaxSampleDifference(ours.pixels, ReadImage(Path("packed.tif")).pixels);
    EXPECT_GE(lossy, 0);
    EXPECT_LE(lossy, 3);
    Run({"combine", Path("packed.jpg"), Path("back.png")});
}

TEST_F(CliConversion, DemoLeavesItsFilesInOneFolder) {
    const SRun run = RunTeskcolor({"demo", Path("demo")});
    ASSERT_EQ(run.code, 0) << run.err;
    EXPECT_NE(run.out.find(Path("demo")), std::string::npos);
    for (const char* name : {"chart.tif", "chart-cyan.tif", "chart-magenta.tif", "chart-yellow.tif",
                             "chart-black.tif", "chart-cmyk.tif", "recombined.tif", "proof.tif"}) {
        ASSERT_TRUE(fs::exists(Path("demo/") + name)) << name;
        const bool plate = std::string(name).find("-") != std::string::npos && std::string(name) != "chart-cmyk.tif";
        EXPECT_EQ(ReadImage(Path("demo/") + name).iccProfile.empty(), plate) << name;
    }
    // The proof through the press profile differs from the plain recombination (it is proofed).
    const SImage recombined = ReadImage(Path("demo/recombined.tif"));
    const SImage proof = ReadImage(Path("demo/proof.tif"));
    EXPECT_GT(MaxSampleDifference(recombined.pixels, proof.pixels), 0);
    EXPECT_TRUE(fs::exists(Path("demo/gamuts.png")));
    size_t files = 0;
    for (const auto& entry : fs::directory_iterator(Path("demo"))) files += entry.is_regular_file();
    EXPECT_EQ(files, 11u);  // no temporaries left

    // The warning's magenta covers exactly the pixels info --gamut counts as out.
    const SImage warning = ReadImage(Path("demo/gamut-warning.tif"));
    const uint8_t kMagenta[3] = {255, 0, 255};
    size_t marked = 0;
    for (int y = 0; y < warning.pixels.GetHeight(); ++y)
        for (int x = 0; x < 3 * warning.pixels.GetWidth(); x += 3)
            marked += std::memcmp(warning.pixels.GetRow(y) + x, kMagenta, 3) == 0;
    const SRun gamut = RunTeskcolor({"info", "--gamut", "--json", Path("demo/chart.tif")});
    ASSERT_EQ(gamut.code, 0) << gamut.err;
    EXPECT_EQ(nlohmann::json::parse(gamut.out)["out_of_gamut"].get<size_t>(), marked);

    // The contact sheet comes first and shows each file in its place, a flat patch of each at its colour.
    EXPECT_EQ(run.out.find("contact sheet"), 0u) << run.out;
    const SImage sheet = ReadImage(Path("demo/contact-sheet.png"));
    const char* kTiles[] = {"chart.tif", "chart-cyan.tif", "chart-magenta.tif", "chart-yellow.tif",
                            "chart-black.tif", "recombined.tif", "proof.tif", "gamut-warning.tif"};
    for (int tile = 0; tile < 8; ++tile) {
        const SImage source = ReadImage(Path("demo/") + kTiles[tile]);
        const int channels = CVPixelFormat::GetChannelCount(source.pixels.GetPixelFormat());
        for (const auto& [x, y] : {std::pair{50, 440}, std::pair{650, 520}}) {
            const int sheetX = 16 + (tile % 4) * 336 + x * 320 / 1200, sheetY = 16 + (tile / 4) * 253 + y * 320 / 1200;
            for (int c = 0; c < 3; ++c)
                EXPECT_NEAR(sheet.pixels.GetRow(sheetY)[3 * sheetX + c],
                            source.pixels.GetRow(y)[channels * x + std::min(c, channels - 1)], 6)
                    << kTiles[tile] << " at " << x << "," << y;
        }
    }
}

TEST_F(CliConversion, GreyWithAlphaConvertsToRgbTaggedWithTheTarget) {
    const SImage grey = PatternImage(16, 8, VPF_GREY_ALPHA_8);
    WriteImage(Path("grey-alpha.png"), grey);
    tesk::test::WriteBytes(Path("srgb.icc"), SrgbProfileBytes());
    Run({"convert", "--from", Path("srgb.icc"), Path("grey-alpha.png"), Path("out.png")});
    const SImage out = ReadImage(Path("out.png"));
    ASSERT_EQ(out.pixels.GetPixelFormat(), VPF_RGBA_8);
    EXPECT_FALSE(out.iccProfile.empty());
    for (int y = 0; y < 8; ++y)
        for (int x = 0; x < 16; ++x) EXPECT_EQ(out.pixels.GetRow(y)[4 * x + 3], grey.pixels.GetRow(y)[2 * x + 1]);
}

// Proofing on in the settings changes the separation's intent, and the command says so.
TEST_F(CliConversion, SeparationSaysItsIntent) {
    Run({"chart", "--width", "64", "--height", "48", Path("c.tif")});
    SRun run = RunTeskcolor({"separate", "--packed", Path("c.tif"), Path("plain.tif")});
    EXPECT_NE(run.out.find("intent: perceptual (0)"), std::string::npos) << run.out;
    Run({"settings", "set", "proof", "on"});
    run = RunTeskcolor({"separate", "--packed", Path("c.tif"), Path("proofing.tif")});
    EXPECT_NE(run.out.find("the proof intent"), std::string::npos) << run.out;
    EXPECT_NE(tesk::test::ReadBytes(Path("proofing.tif")), tesk::test::ReadBytes(Path("plain.tif")));
}

TEST_F(CliConversion, InfoSaysWhyAndShowsTheFilesOwnValues) {
    const std::vector<uint8_t> srgb = SrgbProfileBytes();
    std::vector<uint8_t> truncated(srgb.begin(), srgb.begin() + 200);
    tesk::test::WriteBytes(Path("truncated.icc"), truncated);
    tesk::test::WriteBytes(Path("text.icc"), std::vector<uint8_t>(300, 'x'));
    for (const auto& [file, reason] : {std::pair<std::string, std::string>{"truncated.icc", "truncated: header says"},
                                       {"text.icc", "no 'acsp' signature"}}) {
        const SRun run = RunTeskcolor({"info", "--json", Path(file)});
        EXPECT_EQ(run.code, 4) << file;
        EXPECT_NE(nlohmann::json::parse(run.out)["reason"].get<std::string>().find(reason), std::string::npos) << file;
    }
    tesk::test::WriteBytes(Path("srgb.icc"), srgb);
    const SRun run = RunTeskcolor({"info", "--json", Path("srgb.icc")});
    ASSERT_EQ(run.code, 0) << run.err;
    const auto values = nlohmann::json::parse(run.out)["file_values"];
    EXPECT_EQ(values["rTRC"]["parametric_type"], 4);
    double smallest = 1;
    for (const auto& entry : values["chromatic_adaptation"]) smallest = std::min(smallest, entry.get<double>());
    EXPECT_LT(smallest, 0) << values.dump();

    const std::string named = "/usr/share/color/icc/colord/x11-colors.icc";
    if (!fs::exists(named)) GTEST_SKIP() << "colord-data is not installed";
    const SRun namedRun = RunTeskcolor({"info", "--json", named});
    EXPECT_EQ(namedRun.code, 0) << namedRun.out;
    EXPECT_NE(namedRun.out.find("named-colour"), std::string::npos);
}

TEST_F(CliConversion, EveryMakeProfileCombinationWritesAValidProfile) {
    for (const auto& options : std::vector<std::vector<std::string>>{
             {}, {"--primaries", "adobe"}, {"--primaries", "srgb", "--gamma", "1.8"}, {"--gamma", "2.2"}}) {
        std::vector<std::string> args = {"make-profile"};
        args.insert(args.end(), options.begin(), options.end());
        args.push_back(Path("made.icc"));
        const SRun made = RunTeskcolor(args);
        ASSERT_EQ(made.code, 0) << made.err;
        cmsHPROFILE profile = cmsOpenProfileFromFile(Path("made.icc").c_str(), "r");
        EXPECT_NE(profile, nullptr);
        if (profile) cmsCloseProfile(profile);
        EXPECT_EQ(RunTeskcolor({"info", Path("made.icc")}).code, 0);
    }
}

// lcms2 reads back exactly the texts given, 7-bit or not.
TEST_F(CliConversion, ProfileTextsReadBackExactly) {
    struct SCase {
        const char* description;
        const char* copyright;
        const wchar_t* wideDescription;
        const wchar_t* wideCopyright;
    };
    for (const SCase& c : {SCase{"Plain display", "Public domain", L"Plain display", L"Public domain"},
                           SCase{"Mon \u00e9cran", "\u00a9 Tesk", L"Mon \u00e9cran", L"\u00a9 Tesk"}}) {
        Run({"make-profile", "--description", c.description, "--copyright", c.copyright, Path("texts.icc")});
        cmsHPROFILE profile = cmsOpenProfileFromFile(Path("texts.icc").c_str(), "r");
        ASSERT_NE(profile, nullptr);
        for (auto [signature, expected] : {std::pair{cmsSigProfileDescriptionTag, c.wideDescription},
                                           std::pair{cmsSigCopyrightTag, c.wideCopyright}}) {
            wchar_t text[64] = {};
            const auto* mlu = static_cast<const cmsMLU*>(cmsReadTag(profile, signature));
            ASSERT_NE(mlu, nullptr);
            cmsMLUgetWide(mlu, "en", "US", text, sizeof text);
            EXPECT_EQ(std::wstring(text), expected) << c.description;
        }
        cmsCloseProfile(profile);
        EXPECT_EQ(RunTeskcolor({"info", Path("texts.icc")}).code, 0) << c.description;
    }
}

}  // namespace
}  // namespace teskcolor::test
