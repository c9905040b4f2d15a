// teskcolor proof: the display transform of the settings, to a file.
#include <cstdio>

#include "cli/BandedConversion.h"
#include "cli/BatchRun.h"
#include "cli/Commands.h"
#include "cli/Errors.h"
#include "cli/GamutWarning.h"
#include "cli/ModuleHost.h"
#include "cli/Operations.h"
#include "cli/imageio/ImageFile.h"
#include "colormgr/ColorManager.h"

namespace teskcolor {

namespace {

struct SProofOptions {
    std::string proofProfile;
    SFileArguments files;
    std::optional<int> intent, proofIntent;
    std::string gamutWarning;
    CLI::Option* gamutWarningGiven = nullptr;
};

int Run(const SProofOptions& options) {
    CColorManager& manager = ColourManager();
    const int intent = options.intent.value_or(int(manager.GetLCSIntent()));
    const int proofIntent = options.proofIntent.value_or(1);
    SProofFile job{{}, {}, options.proofProfile, intent, proofIntent, std::nullopt};
    if (options.gamutWarningGiven->count() > 0) {
        // A bare flag reads as "true".
        const bool bare = options.gamutWarning.empty() || options.gamutWarning == "true";
        job.gamutWarning = ParseWarningColour(bare ? kDefaultGamutWarningColour : options.gamutWarning);
    }
    return RunOnFiles(options.files, "proofing", [&](const std::string& in, const std::string& out, CStatusControl* status) {
        SProofFile file = job;
        file.input = in;
        file.output = out;
        ProofFile(manager, file, status);
    });
}

}  // namespace

SCommand AddProofCommand(CLI::App& root) {
    auto options = std::make_shared<SProofOptions>();
    CLI::App* command = AddSubcommand(
        root, "proof", "render an image for the display, optionally soft-proofed",
        "Renders an image as the display shows it: from the working space through the display\n"
        "transform to the monitor profile, and with --proof-profile through that profile first\n"
        "(a soft proof of the print). Settings given here hold for this run only.\n"
        "reads: INPUT, the working-space, monitor and proof profiles.\n"
        "writes: OUTPUT, tagged with the monitor profile; with --output-dir, each INPUT under\n"
        "its own name there, several at once.",
        "teskcolor proof --proof-profile \"ISO Coated (FOGRA39)\" photo.tif proof.tif");
    command->add_option("--proof-profile", options->proofProfile, "soft-proof through this profile (e.g. the CMYK one)")
        ->type_name("PROFILE");
    AddIntentOption(*command, options->intent, "--intent", "display intent (default: the settings')");
    AddIntentOption(*command, options->proofIntent, "--proof-intent", "proofing intent (default relative)");
    options->gamutWarningGiven =
        command->add_flag("--gamut-warning", options->gamutWarning,
                          "paint what the proof (or else the CMYK) profile cannot print; --gamut-warning=COLOUR "
                          "(#rrggbb or R,G,B) picks the colour, mid grey #808080 by default");
    AddBlackPointOption(*command);
    AddEncodingOptions(*command);
    AddFileArguments(*command, options->files);
    return {command, [options] { return Run(*options); }};
}

}  // namespace teskcolor
