// teskcolor convert: an image into the working space or another RGB profile.
#include <cstdio>

#include "cli/Arguments.h"
#include "cli/Commands.h"
#include "cli/Errors.h"
#include "cli/ModuleHost.h"
#include "cli/Operations.h"
#include "cli/ProgressBar.h"
#include "cli/SessionSettings.h"
#include "cli/imageio/ImageFile.h"
#include "colormgr/ColorManager.h"

namespace teskcolor {

int RunConvert(const Args& args) {
    CArguments arguments("convert", args, {{"--to", true}, {"--from", true}});
    if (arguments.WantsHelp()) {
        std::fputs("usage: teskcolor convert [--to PROFILE] [--from PROFILE] INPUT OUTPUT\n"
                   "Converts an RGB image from its embedded profile into the working space (or into\n"
                   "--to PROFILE, for this run only), relative colorimetric; the output carries the\n"
                   "target profile. Grey images become RGB; alpha is kept.\n"
                   "  --to PROFILE     target RGB profile instead of the working space\n"
                   "  --from PROFILE   the source profile for an image that carries none\n",
                   stdout);
        return 0;
    }
    arguments.ExpectPositional(2, "convert [--to PROFILE] [--from PROFILE] INPUT OUTPUT");
    CColorManager& manager = ColourManager();
    if (auto target = arguments.Value("--to")) {
        const SProfileSource profile = LoadProfileSource(*target, &manager);
        RequireColourSpace(profile, 0x52474220, "the target");
        KeepWritesForThisRun();
        CString name(ModuleProfileName(profile.file.empty() ? *target : profile.file));
        manager.SetColorWorkingSpace(name);
    }
    CProgressBar progress("reading");
    const SImage input = ReadImage(arguments.Positional()[0], progress.Status());
    const SImage output = ConvertImage(manager, input, arguments.Value("--from").value_or(""), progress.Status());
    progress.Phase("writing");
    WriteImage(arguments.Positional()[1], output, progress.Status());
    progress.Finish();
    std::printf("wrote %s\n", arguments.Positional()[1].c_str());
    return 0;
}

}  // namespace teskcolor
