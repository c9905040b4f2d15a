// teskcolor convert: an image into the working space or another RGB profile.
#include <cstdio>

#include "cli/BatchRun.h"
#include "cli/Commands.h"
#include "cli/Errors.h"
#include "cli/ModuleHost.h"
#include "cli/Operations.h"
#include "cli/SessionSettings.h"
#include "cli/imageio/ImageFile.h"
#include "colormgr/ColorManager.h"

namespace teskcolor {

namespace {

struct SConvertOptions {
    std::string to, from;
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
    return RunOnFiles(options.files, "converting", [&](const std::string& in, const std::string& out, CStatusControl* status) {
        const SImage input = ReadImage(in, status);
        SImage output;
        {
            std::lock_guard turn(ColourManagerTurn());
            output = ConvertImage(manager, input, options.from, status);
        }
        WriteImage(out, output, status);
    });
}

}  // namespace

SCommand AddConvertCommand(CLI::App& root) {
    auto options = std::make_shared<SConvertOptions>();
    CLI::App* command = AddSubcommand(
        root, "convert", "convert an image into the working space or another RGB profile",
        "Converts an RGB or grey image from its embedded profile into the working space (or\n"
        "into --to PROFILE, for this run only), relative colorimetric. Grey images become RGB;\n"
        "alpha is kept.\n"
        "reads: INPUT, its embedded profile (or --from), the target profile.\n"
        "writes: OUTPUT, RGB, tagged with the target profile; with --output-dir, each INPUT\n"
        "under its own name there, several at once.",
        "teskcolor convert --to AdobeRGB1998.icc photo.jpg photo-adobe.tif");
    command->add_option("--to", options->to, "target RGB profile instead of the working space")->type_name("PROFILE");
    command->add_option("--from", options->from, "the source profile for an image that carries none")
        ->type_name("PROFILE");
    AddEncodingOptions(*command);
    AddFileArguments(*command, options->files);
    return {command, [options] { return Run(*options); }};
}

}  // namespace teskcolor
