// teskcolor convert: an image into the working space or another RGB profile.
#include <cstdio>

#include "cli/BandedConversion.h"
#include "cli/BatchRun.h"
#include "cli/Commands.h"
#include "cli/DeviceLink.h"
#include "cli/Errors.h"
#include "cli/ModuleHost.h"
#include "cli/Operations.h"
#include "cli/SessionSettings.h"
#include "cli/imageio/ImageFile.h"
#include "colormgr/ColorManager.h"

namespace teskcolor {

namespace {

struct SConvertOptions {
    std::string to, from, link;
    std::optional<int> intent;
    bool floatSamples = false, lab = false;
    SFileArguments files;
};

int Run(const SConvertOptions& options) {
    CColorManager& manager = ColourManager();
    if (!options.to.empty()) {
        const SProfileSource& profile = ResolveProfile(options.to, &manager);
        RequireColourSpace(profile, 0x52474220, "the target");
        KeepWritesForThisRun();
        CString name(profile.moduleName);
        manager.SetColorWorkingSpace(name);
    }
    SWriteOptions writeOptions;
    writeOptions.tiffSamples = options.floatSamples ? ETiffSamples::Float
                               : options.lab        ? ETiffSamples::Lab
                                                    : ETiffSamples::AsImage;
    return RunOnFiles(options.files, "converting", [&](const std::string& in, const std::string& out, CStatusControl* status) {
        if (writeOptions.tiffSamples != ETiffSamples::AsImage && ImageTypeForPath(out) != EImageType::Tiff)
            throw CCliError(EExit::Usage, "convert: --float and --lab write a .tif file");
        if (options.link.empty()) {
            ConvertFile(manager, {in, out, options.from, options.intent, writeOptions}, status);
            return;
        }
        // A link is applied to the whole image at once.
        const SImage input = ReadImage(in, status);
        SImage output;
        {
            std::lock_guard turn(ColourManagerTurn());
            output = ApplyDeviceLink(ResolveProfile(options.link, &manager), input, options.intent);
        }
        WriteImage(out, output, status, writeOptions);
    });
}

}  // namespace

SCommand AddConvertCommand(CLI::App& root) {
    auto options = std::make_shared<SConvertOptions>();
    CLI::App* command = AddSubcommand(
        root, "convert", "convert an image into the working space or another RGB profile",
        "Converts an RGB or grey image from its embedded profile into the working space (or\n"
        "into --to PROFILE, for this run only), relative colorimetric unless --intent. Grey\n"
        "images become RGB; alpha is kept. With --link, the pixels go through the device link\n"
        "as they are (the embedded profile is not used) and the result carries no profile.\n"
        "Floating-point and Lab TIFFs are read too (into 16-bit RGB); --float and --lab write\n"
        "them.\n"
        "reads: INPUT, its embedded profile (or --from), the target profile.\n"
        "writes: OUTPUT, RGB, tagged with the target profile; with --output-dir, each INPUT\n"
        "under its own name there, several at once.",
        "teskcolor convert --to AdobeRGB1998.icc photo.jpg photo-adobe.tif");
    CLI::Option* to =
        command->add_option("--to", options->to, "target RGB profile instead of the working space")->type_name("PROFILE");
    CLI::Option* from = command->add_option("--from", options->from, "the source profile for an image that carries none")
                            ->type_name("PROFILE");
    command->add_option("--link", options->link, "apply this device-link profile instead (RGB or CMYK out, untagged)")
        ->type_name("LINK")
        ->excludes(to)
        ->excludes(from);
    AddIntentOption(*command, options->intent, "--intent", "rendering intent (default relative)");
    AddBlackPointOption(*command);
    CLI::Option* floatSamples =
        command->add_flag("--float", options->floatSamples, "write 32-bit floating-point samples (TIFF)");
    command->add_flag("--lab", options->lab, "write the result as ICC L*a*b* (TIFF), of the image's depth")
        ->excludes(floatSamples);
    AddEncodingOptions(*command);
    AddFileArguments(*command, options->files);
    return {command, [options] { return Run(*options); }};
}

}  // namespace teskcolor
