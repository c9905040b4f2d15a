// teskcolor combine: four plates, or one CMYK image, back to RGB.
#include <cstdio>
#include <filesystem>

#include "cli/Arguments.h"
#include "cli/Commands.h"
#include "cli/Errors.h"
#include "cli/ModuleHost.h"
#include "cli/Operations.h"
#include "cli/PlateFiles.h"
#include "cli/ProgressBar.h"
#include "cli/imageio/ImageFile.h"

namespace teskcolor {

int RunCombine(const Args& args) {
    CArguments arguments("combine", args, {{"--ink-amounts", false}, {"--cmyk", true}});
    if (arguments.WantsHelp()) {
        std::fputs("usage: teskcolor combine [--ink-amounts] [--cmyk PROFILE] CYAN MAGENTA YELLOW BLACK OUTPUT\n"
                   "       teskcolor combine [--ink-amounts] [--cmyk PROFILE] PLATES.tif OUTPUT\n"
                   "       teskcolor combine [--cmyk PROFILE] CMYK.tif OUTPUT\n"
                   "Recombines four greyscale plates (255 = no ink, as 'separate --invert' makes them)\n"
                   "through the CMYK profile into an RGB image in the working space. PLATES.tif\n"
                   "names the four plates as 'separate' wrote them. A CMYK TIFF or JPEG is converted\n"
                   "from its embedded profile, or from the CMYK profile when it has none.\n"
                   "  --ink-amounts    the plates hold ink amounts (0 = no ink), as plain 'separate' makes them\n"
                   "  --cmyk PROFILE   the CMYK profile for this run (default: the settings')\n",
                   stdout);
        return 0;
    }
    const auto& words = arguments.Positional();
    if (words.size() != 2 && words.size() != 5)
        throw CCliError(EExit::Usage, "usage: teskcolor combine [OPTIONS] CYAN MAGENTA YELLOW BLACK OUTPUT | INPUT OUTPUT");
    const std::string output = words.back();
    CColorManager& manager = ColourManager();
    if (auto cmyk = arguments.Value("--cmyk")) UseCMYKProfileForThisRun(manager, *cmyk);
    CProgressBar progress("reading");

    std::array<std::string, 4> inputs;
    if (words.size() == 2) {
        std::error_code error;
        if (std::filesystem::exists(words[0], error)) {
            const SImage packed = ReadImage(words[0], progress.Status());
            if (packed.cmyk) {
                progress.Phase("combining");
                const SImage rgb = CombinePacked(manager, packed, progress.Status());
                progress.Phase("writing");
                WriteImage(output, rgb, progress.Status());
                progress.Finish();
                std::printf("wrote %s\n", output.c_str());
                return 0;
            }
        }
        inputs = PlatePaths(words[0]);
    } else {
        for (size_t i = 0; i < 4; ++i) inputs[i] = words[i];
    }
    std::array<SImage, 4> plates;
    for (size_t i = 0; i < 4; ++i) {
        plates[i] = ReadImage(inputs[i], progress.Status());
        if (!CVPixelFormat::IsGreyscale(plates[i].pixels.GetPixelFormat()) || plates[i].cmyk)
            throw CCliError(EExit::Unsupported, inputs[i] + ": a plate is a grey image, not " + DescribeLayout(plates[i]));
        if (arguments.Has("--ink-amounts")) ComplementPlate(plates[i]);
    }
    progress.Phase("combining");
    const SImage rgb = CombinePlates(manager, plates, progress.Status());
    progress.Phase("writing");
    WriteImage(output, rgb, progress.Status());
    progress.Finish();
    std::printf("wrote %s\n", output.c_str());
    return 0;
}

}  // namespace teskcolor
