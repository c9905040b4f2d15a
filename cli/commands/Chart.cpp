// teskcolor chart: a colour test chart in the working space.
#include <cstdio>

#include "cli/Arguments.h"
#include "cli/Commands.h"
#include "cli/ModuleHost.h"
#include "cli/Operations.h"
#include "cli/ProgressBar.h"
#include "cli/imageio/ImageFile.h"

namespace teskcolor {

int RunChart(const Args& args) {
    CArguments arguments("chart", args, {{"--width", true}, {"--height", true}, {"--16bit", false}});
    if (arguments.WantsHelp()) {
        std::fputs("usage: teskcolor chart [--width W] [--height H] [--16bit] OUTPUT\n"
                   "Makes a test chart: a grey ramp; red, green, blue, cyan, magenta and yellow\n"
                   "ramps; the 24 patches of the classic colour checker; a hue and lightness\n"
                   "gradient. Tagged with the working-space profile. OUTPUT is .tif, .png or .jpg.\n"
                   "  --width W, --height H   size in pixels (default 1200 x 800)\n"
                   "  --16bit                 16 bits a channel (TIFF and PNG)\n",
                   stdout);
        return 0;
    }
    arguments.ExpectPositional(1, "chart [--width W] [--height H] [--16bit] OUTPUT");
    const int width = int(arguments.Number("--width", 24, 30000).value_or(1200));
    const int height = int(arguments.Number("--height", 24, 30000).value_or(800));
    SImage chart = MakeChart(width, height, arguments.Has("--16bit"));
    chart.iccProfile = WorkingSpaceProfile(ColourManager()).bytes;
    CProgressBar progress("writing");
    WriteImage(arguments.Positional()[0], chart, progress.Status());
    progress.Finish();
    std::printf("wrote %s (%d x %d, %s)\n", arguments.Positional()[0].c_str(), width, height,
                DescribeLayout(chart).c_str());
    return 0;
}

}  // namespace teskcolor
