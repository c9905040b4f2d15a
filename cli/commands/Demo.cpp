// teskcolor demo: the main job on built-in defaults, leaving its files in one folder.
#include <cstdio>
#include <filesystem>

#include "cli/Commands.h"
#include "cli/Errors.h"
#include "cli/GamutWarning.h"
#include "cli/ModuleHost.h"
#include "cli/Operations.h"
#include "cli/PlateFiles.h"
#include "cli/ProgressBar.h"
#include "cli/imageio/ImageFile.h"
#include "cli/imageio/OutputFile.h"
#include "cli/plots/ContactSheet.h"
#include "cli/plots/ProfilePlot.h"
#include "colormgr/ColorManager.h"

namespace teskcolor {

namespace {

struct SDemoOptions {
    std::string cmyk;
    std::string folder = "teskcolor-demo";
};

int Run(const SDemoOptions& options) {
    const std::filesystem::path folder = std::filesystem::absolute(options.folder);
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error) throw CCliError(EExit::WriteFailed, folder.string() + ": cannot create the folder: " + error.message());

    CColorManager& manager = ColourManager();
    if (!options.cmyk.empty()) UseCMYKProfileForThisRun(manager, options.cmyk);
    const SProfileSource& cmykProfile = DefaultCMYKProfile(manager);
    const SProfileSource& workingSpace = WorkingSpaceProfile(manager);

    const auto path = [&](const char* name) { return (folder / name).string(); };
    // The demo's files replace those of an earlier run all together, or not at all.
    COutputTransaction files;
    SWriteOptions writeOptions;
    writeOptions.transaction = &files;
    CProgressBar progress("demo");
    SImage chart = MakeChart(1200, 800, false);
    chart.iccProfile = workingSpace.bytes;
    WriteImage(path("chart.tif"), chart, progress.Status(), writeOptions);
    auto plates = SeparateToPlates(manager, chart, true, progress.Status());
    WritePlates(path("chart.tif"), plates, files, progress.Status());
    WriteImage(path("chart-cmyk.tif"), SeparateToPacked(manager, chart, progress.Status()), progress.Status(),
               writeOptions);
    const SImage recombined = CombinePlates(manager, plates, progress.Status());
    WriteImage(path("recombined.tif"), recombined, progress.Status(), writeOptions);
    const std::string proofProfile = cmykProfile.file.empty() ? std::string() : cmykProfile.file;
    const SImage proof = ProofImage(manager, recombined, proofProfile, int(manager.GetLCSIntent()), 1, progress.Status());
    WriteImage(path("proof.tif"), proof, progress.Status(), writeOptions);
    // The chart's colours the press cannot print, as proof --gamut-warning paints them, in
    // magenta: the usual grey would vanish into the chart's grey ground.
    SImage gamutWarning = chart;
    if (!gamutWarning.pixels.Create(chart.pixels.GetWidth(), chart.pixels.GetHeight(), chart.pixels.GetPixelFormat()) ||
        !RowIterator::CopyRect(gamutWarning.pixels, chart.pixels))
        throw CCliError(EExit::Failed, "not enough memory for the gamut warning");
    PaintGamutWarning(gamutWarning, OutOfGamutPixels(manager, chart, cmykProfile.bytes, int(manager.GetLCSIntent())),
                      ParseWarningColour("#ff00ff"));
    WriteImage(path("gamut-warning.tif"), gamutWarning, progress.Status(), writeOptions);
    files.Commit();
    WriteContactSheet(path("contact-sheet.png"), {{"chart", &chart},
                                                  {"cyan plate", &plates[0]},
                                                  {"magenta plate", &plates[1]},
                                                  {"yellow plate", &plates[2]},
                                                  {"black plate", &plates[3]},
                                                  {"recombined", &recombined},
                                                  {"soft proof", &proof},
                                                  {"gamut warning", &gamutWarning}},
                      4);
    WriteGamutPlot(path("gamuts.png"), {{workingSpace.bytes, workingSpace.origin}, {cmykProfile.bytes, cmykProfile.origin}});
    progress.Finish();

    // The sheet first: the one file to open to see the run.
    std::printf("contact sheet       %s\n", path("contact-sheet.png").c_str());
    std::printf("working space: %s\nCMYK profile:  %s\n", workingSpace.origin.c_str(), cmykProfile.origin.c_str());
    std::printf("1. chart            %s\n", path("chart.tif").c_str());
    const auto platePaths = PlatePaths(path("chart.tif"));
    std::printf("2. plates           %s\n", platePaths[0].c_str());
    for (size_t i = 1; i < 4; ++i) std::printf("                    %s\n", platePaths[i].c_str());
    std::printf("   packed CMYK      %s\n", path("chart-cmyk.tif").c_str());
    std::printf("3. recombined RGB   %s\n", path("recombined.tif").c_str());
    std::printf("4. soft proof       %s\n", path("proof.tif").c_str());
    std::printf("5. gamut warning    %s\n", path("gamut-warning.tif").c_str());
    std::printf("6. gamuts           %s\n", path("gamuts.png").c_str());
    std::printf("done: the files are in %s\n", folder.c_str());
    return 0;
}

}  // namespace

SCommand AddDemoCommand(CLI::App& root) {
    auto options = std::make_shared<SDemoOptions>();
    CLI::App* command = AddSubcommand(
        root, "demo", "chart, separation, recombination and proof in one folder",
        "Makes a colour test chart, separates it into four plates with the CMYK profile,\n"
        "recombines the plates into RGB, soft-proofs the result for the display through\n"
        "the CMYK profile and paints the chart's colours that profile cannot print in magenta.\n"
        "reads: the settings' working-space and CMYK profiles.\n"
        "writes: into FOLDER (default ./teskcolor-demo) chart.tif,\n"
        "chart-{cyan,magenta,yellow,black}.tif, chart-cmyk.tif, recombined.tif, proof.tif,\n"
        "gamut-warning.tif, gamuts.png (the working space's and the CMYK profile's gamuts), and\n"
        "contact-sheet.png: the chart, the plates, the recombined image, the proof and the gamut\n"
        "warning side by side, printed first.",
        "teskcolor demo /tmp/demo");
    AddCmykOption(*command, options->cmyk);
    command->add_option("FOLDER", options->folder, "where the files go (default ./teskcolor-demo)");
    return {command, [options] { return Run(*options); }};
}

}  // namespace teskcolor
