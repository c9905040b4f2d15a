// teskcolor proof: the display transform of the settings, to a file.
#include <cstdio>

#include "cli/Arguments.h"
#include "cli/Commands.h"
#include "cli/Errors.h"
#include "cli/ModuleHost.h"
#include "cli/Operations.h"
#include "cli/ProgressBar.h"
#include "cli/imageio/ImageFile.h"
#include "colormgr/ColorManager.h"

namespace teskcolor {

int RunProof(const Args& args) {
    CArguments arguments("proof", args, {{"--proof-profile", true}, {"--intent", true}, {"--proof-intent", true}});
    if (arguments.WantsHelp()) {
        std::fputs("usage: teskcolor proof [--proof-profile PROFILE] [--intent N] [--proof-intent N] INPUT OUTPUT\n"
                   "Renders an image as the display shows it: from the working space through the\n"
                   "display transform to the monitor profile, and with --proof-profile through that\n"
                   "profile first (a soft proof of the print). The output carries the monitor\n"
                   "profile. Settings given here hold for this run only.\n"
                   "  --proof-profile PROFILE   soft-proof through this profile (e.g. the CMYK one)\n"
                   "  --intent N                display intent, 0..3 (default: the settings')\n"
                   "  --proof-intent N          proofing intent, 0..3 (default 1, relative colorimetric)\n",
                   stdout);
        return 0;
    }
    arguments.ExpectPositional(2, "proof [OPTIONS] INPUT OUTPUT");
    CColorManager& manager = ColourManager();
    const int intent = int(arguments.Number("--intent", 0, 3).value_or(manager.GetLCSIntent()));
    const int proofIntent = int(arguments.Number("--proof-intent", 0, 3).value_or(1));
    CProgressBar progress("reading");
    const SImage input = ReadImage(arguments.Positional()[0], progress.Status());
    const SImage display = ProofImage(manager, input, arguments.Value("--proof-profile").value_or(""), intent,
                                      proofIntent, progress.Status());
    progress.Phase("writing");
    WriteImage(arguments.Positional()[1], display, progress.Status());
    progress.Finish();
    std::printf("wrote %s\n", arguments.Positional()[1].c_str());
    return 0;
}

}  // namespace teskcolor
