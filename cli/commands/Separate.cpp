// teskcolor separate: RGB into four ink plates, or one CMYK TIFF.
#include <cstdio>
#include <filesystem>

#include "cli/Arguments.h"
#include "cli/BandedSeparation.h"
#include "cli/Commands.h"
#include "cli/Errors.h"
#include "cli/ModuleHost.h"
#include "cli/Operations.h"
#include "cli/PlateFiles.h"
#include "cli/ProgressBar.h"
#include "cli/imageio/ImageFile.h"

namespace teskcolor {

int RunSeparate(const Args& args) {
    CArguments arguments("separate", args, {{"--invert", false}, {"--packed", false}, {"--cmyk", true}});
    if (arguments.WantsHelp()) {
        std::fputs("usage: teskcolor separate [--invert] [--cmyk PROFILE] INPUT PLATES.tif|PLATES.png\n"
                   "       teskcolor separate --packed [--cmyk PROFILE] INPUT OUTPUT.tif\n"
                   "Separates an RGB (or grey) image through the CMYK profile into four greyscale\n"
                   "plates PLATES-cyan, -magenta, -yellow and -black, of the input's depth. An\n"
                   "embedded profile other than the working space is converted from first.\n"
                   "  --invert         plates hold 255 (65535) for no ink, as 'combine' expects;\n"
                   "                   without it they hold ink amounts (0 = no ink)\n"
                   "  --packed         one CMYK TIFF (8-bit ink amounts) carrying the CMYK profile\n"
                   "  --cmyk PROFILE   the CMYK profile for this run (default: the settings')\n",
                   stdout);
        return 0;
    }
    arguments.ExpectPositional(2, "separate [--invert|--packed] [--cmyk PROFILE] INPUT OUTPUT");
    const std::string output = arguments.Positional()[1];
    const bool packed = arguments.Has("--packed");
    if (packed && arguments.Has("--invert")) throw CCliError(EExit::Usage, "separate: --packed and --invert exclude each other");
    const auto type = ImageTypeForPath(output);
    if (packed ? type != EImageType::Tiff : (!type || *type == EImageType::Jpeg))
        throw CCliError(EExit::Usage, packed ? "separate: --packed writes a .tif file"
                                             : "separate: plates are written as .tif or .png");
    CColorManager& manager = ColourManager();
    if (auto cmyk = arguments.Value("--cmyk")) UseCMYKProfileForThisRun(manager, *cmyk);

    CProgressBar progress("separating");
    if (packed) {
        SeparateFileToPacked(manager, arguments.Positional()[0], output, progress.Status());
        progress.Finish();
        std::printf("wrote %s\n", output.c_str());
        return 0;
    }
    const auto written =
        SeparateFileToPlates(manager, arguments.Positional()[0], output, arguments.Has("--invert"), progress.Status());
    progress.Finish();
    for (const std::string& path : written) std::printf("wrote %s\n", path.c_str());
    return 0;
}

}  // namespace teskcolor
