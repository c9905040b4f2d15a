// teskcolor separate: RGB into four ink plates, or one CMYK TIFF.
#include <cstdio>
#include <filesystem>

#include "cli/BandedSeparation.h"
#include "cli/Commands.h"
#include "cli/DeviceLink.h"
#include "cli/Errors.h"
#include "cli/ModuleHost.h"
#include "cli/Operations.h"
#include "cli/PlateFiles.h"
#include "cli/SeparationIntent.h"
#include "cli/ProgressBar.h"
#include "cli/imageio/ImageFile.h"
#include "cli/plots/InkCoverageCheck.h"

namespace teskcolor {

namespace {

struct SSeparateOptions {
    bool invert = false, packed = false, sixteenBit = false;
    std::optional<int> intent;
    std::string cmyk, link, input, output;
    SInkCheckOptions ink;
};

// A device link (RGB to CMYK) stands for the working space, the CMYK profile and the intent.
int SeparateThroughLink(const SSeparateOptions& options) {
    if (options.ink.Wanted() && !options.ink.maxInk)
        throw CCliError(EExit::Usage, "separate: with --link, give --max-ink (a link names no CMYK profile to read it from)");
    if (options.sixteenBit) throw CCliError(EExit::Usage, "separate: a device link gives 8-bit CMYK; --16bit does not apply");
    CProgressBar progress("separating");
    const SProfileSource& link = ResolveProfile(options.link, &ColourManager());
    const SImage packed = ApplyDeviceLink(link, ReadImage(options.input, progress.Status()), options.intent);
    if (!packed.cmyk) throw CCliError(EExit::WrongProfile, link.origin + ": the link does not give CMYK");
    std::vector<std::string> written = {options.output};
    if (options.packed)
        WriteImage(options.output, packed, progress.Status());
    else
        written = WritePlatesOfPacked(options.output, packed, options.invert);
    progress.Finish();
    std::printf("device link: %s\n", link.origin.c_str());
    for (const std::string& path : written) std::printf("wrote %s\n", path.c_str());
    return CheckInkCoverage(options.ink, written, options.invert, {});
}

int Run(const SSeparateOptions& options) {
    const auto type = ImageTypeForPath(options.output);
    if (options.packed ? (!type || *type == EImageType::Png) : (!type || *type == EImageType::Jpeg))
        throw CCliError(EExit::Usage, options.packed ? "separate: --packed writes a .tif or .jpg file"
                                                     : "separate: plates are written as .tif or .png");
    if (options.sixteenBit && (!options.packed || type != EImageType::Tiff))
        throw CCliError(EExit::Usage, "separate: --16bit is for --packed .tif; plates take the input's depth");
    if (!options.link.empty()) return SeparateThroughLink(options);
    const std::string intent = ChooseSeparationIntent(options.intent);
    CColorManager& manager = ColourManager();
    if (!options.cmyk.empty()) UseCMYKProfileForThisRun(manager, options.cmyk);

    CProgressBar progress("separating");
    if (options.packed) {
        SeparateFileToPacked(manager, options.input, options.output, options.sixteenBit, progress.Status());
        progress.Finish();
        std::printf("%s\nwrote %s\n", intent.c_str(), options.output.c_str());
        return CheckInkCoverage(options.ink, {options.output}, false, DefaultCMYKProfile(manager).bytes);
    }
    const auto written = SeparateFileToPlates(manager, options.input, options.output, options.invert, progress.Status());
    progress.Finish();
    std::printf("%s\n", intent.c_str());
    for (const std::string& path : written) std::printf("wrote %s\n", path.c_str());
    return CheckInkCoverage(options.ink, written, options.invert, DefaultCMYKProfile(manager).bytes);
}

}  // namespace

SCommand AddSeparateCommand(CLI::App& root) {
    auto options = std::make_shared<SSeparateOptions>();
    CLI::App* command = AddSubcommand(
        root, "separate", "split an RGB image into cyan, magenta, yellow and black plates",
        "Separates an RGB (or grey) image through the CMYK profile into four greyscale plates\n"
        "PLATES-cyan, -magenta, -yellow and -black, of the input's depth. An embedded profile\n"
        "other than the working space is converted from first.\n"
        "reads: INPUT, the working-space and CMYK profiles.\n"
        "TIFF plates record which way they read (MinIsWhite for ink amounts), so that 'combine'\n"
        "takes them back as they are; PNG plates do not ('combine --ink-amounts' for those).\n"
        "writes: four plates named after OUTPUT (.tif or .png), or with --packed one CMYK TIFF\n"
        "or JPEG carrying the CMYK profile. With --report, --max-ink or --fail-over-limit the total ink\n"
        "coverage is measured and printed (and drawn with --report) against the limit.\n"
        "With --link, the pixels go through the device link as they are and the output\n"
        "carries no profile.",
        "teskcolor separate photo.tif plates.tif");
    CLI::Option* invert = command->add_flag(
        "--invert", options->invert, "plates hold 255 (65535) for no ink; without it they hold ink amounts");
    command->add_flag("--packed", options->packed, "one CMYK TIFF or JPEG of ink amounts (8-bit; 16-bit TIFF with --16bit) carrying the CMYK profile")
        ->excludes(invert);
    command->add_flag("--16bit", options->sixteenBit, "with --packed: 16 bits a channel (the colour manager separates at 8-bit precision)");
    CLI::Option* cmyk = AddCmykOption(*command, options->cmyk);
    command->add_option("--link", options->link, "separate through this RGB-to-CMYK device link instead")
        ->type_name("LINK")
        ->excludes(cmyk);
    AddIntentOption(*command, options->intent);
    AddBlackPointOption(*command);
    AddInkCoverageOptions(*command, options->ink);
    command->add_option("INPUT", options->input, "the RGB or grey image")->required();
    AddEncodingOptions(*command);
    command->add_option("OUTPUT", options->output, "PLATES.tif|PLATES.png, or OUTPUT.tif|OUTPUT.jpg with --packed")->required();
    return {command, [options] { return Run(*options); }};
}

}  // namespace teskcolor
