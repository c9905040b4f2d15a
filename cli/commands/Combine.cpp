// teskcolor combine: four plates, or one CMYK image, back to RGB.
#include <cstdio>
#include <filesystem>

#include "cli/BandedConversion.h"
#include "cli/Commands.h"
#include "cli/Errors.h"
#include "cli/ModuleHost.h"
#include "cli/Operations.h"
#include "cli/PlateFiles.h"
#include "cli/SeparationIntent.h"
#include "cli/ProgressBar.h"
#include "cli/imageio/ImageFile.h"
#include "cli/imageio/StandardStreams.h"

namespace teskcolor {

namespace {

struct SCombineOptions {
    bool inkAmounts = false;
    std::optional<int> intent;
    std::string cmyk;
    std::vector<std::string> files;
};

int Run(const SCombineOptions& options) {
    const auto& words = options.files;
    if (words.size() != 2 && words.size() != 5)
        throw CCliError(EExit::Usage, "combine: give CYAN MAGENTA YELLOW BLACK OUTPUT, or INPUT OUTPUT");
    const std::string intent = ChooseSeparationIntent(options.intent);
    CColorManager& manager = ColourManager();
    if (!options.cmyk.empty()) UseCMYKProfileForThisRun(manager, options.cmyk);

    SCombineFiles job;
    job.output = words.back();
    job.inkAmounts = options.inkAmounts;
    std::error_code error;
    if (words.size() == 5) {
        job.inputs.assign(words.begin(), words.end() - 1);
    } else if ((IsStandardStream(words[0]) || std::filesystem::exists(words[0], error)) &&
               ReadImageHeader(words[0]).cmyk) {
        job.inputs = {words[0]};
    } else {
        const auto plates = PlatePaths(words[0]);
        job.inputs.assign(plates.begin(), plates.end());
    }
    CProgressBar progress("combining");
    CombineFiles(manager, job, progress.Status());
    progress.Finish();
    std::printf("%s\nwrote %s\n", intent.c_str(), job.output.c_str());
    return 0;
}

}  // namespace

SCommand AddCombineCommand(CLI::App& root) {
    auto options = std::make_shared<SCombineOptions>();
    CLI::App* command = AddSubcommand(
        root, "combine", "recombine four plates, or a CMYK TIFF, into an RGB image",
        "Recombines four greyscale plates through the CMYK profile into an RGB image in the\n"
        "working space. PLATES.tif names the four plates as 'separate' wrote them. A TIFF plate\n"
        "says how it reads (MinIsWhite: ink amounts, as plain 'separate' writes them; MinIsBlack:\n"
        "255 = no ink, as 'separate --invert' writes them). PNG cannot say it: PNG plates are\n"
        "taken as 255 = no ink unless --ink-amounts. A CMYK TIFF or JPEG is converted from its\n"
        "embedded profile, or from the CMYK profile when it has none.\n"
        "reads: the plates (or the CMYK image), the CMYK and working-space profiles.\n"
        "writes: OUTPUT, RGB, tagged with the working-space profile.",
        "teskcolor combine plates.tif back.tif");
    command->add_flag("--ink-amounts", options->inkAmounts,
                      "PNG (or older MinIsBlack TIFF) plates hold ink amounts (0 = no ink)");
    AddCmykOption(*command, options->cmyk);
    AddIntentOption(*command, options->intent);
    AddBlackPointOption(*command);
    AddEncodingOptions(*command);
    command->add_option("FILES", options->files, "CYAN MAGENTA YELLOW BLACK OUTPUT, or PLATES.tif|CMYK.tif OUTPUT")
        ->required();
    return {command, [options] { return Run(*options); }};
}

}  // namespace teskcolor
