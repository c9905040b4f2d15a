// teskcolor chart: a colour test chart in the working space.
#include <cstdio>

#include "cli/Commands.h"
#include "cli/Errors.h"
#include "cli/ModuleHost.h"
#include "cli/Operations.h"
#include "cli/ProgressBar.h"
#include "cli/imageio/ImageFile.h"

namespace teskcolor {

namespace {

struct SChartOptions {
    int width = 1200;
    int height = 800;
    bool sixteenBit = false;
    std::string output;
};

int Run(const SChartOptions& options) {
    if (options.sixteenBit && ImageTypeForPath(options.output) == EImageType::Jpeg)
        throw CCliError(EExit::Usage, "chart: JPEG holds 8 bits a channel; --16bit needs .tif or .png");
    SImage chart = MakeChart(options.width, options.height, options.sixteenBit);
    chart.iccProfile = WorkingSpaceProfile(ColourManager()).bytes;
    CProgressBar progress("writing");
    WriteImage(options.output, chart, progress.Status());
    progress.Finish();
    std::printf("wrote %s (%d x %d, %s)\n", options.output.c_str(), options.width, options.height,
                DescribeLayout(chart).c_str());
    return 0;
}

}  // namespace

SCommand AddChartCommand(CLI::App& root) {
    auto options = std::make_shared<SChartOptions>();
    CLI::App* command = AddSubcommand(
        root, "chart", "make a colour test chart image",
        "Makes a test chart: a grey ramp; red, green, blue, cyan, magenta and yellow ramps;\n"
        "the 24 patches of the classic colour checker; a hue and lightness gradient.\n"
        "reads: the working-space profile of the settings. writes: OUTPUT (.tif, .png or\n"
        ".jpg), tagged with the working-space profile.",
        "teskcolor chart --width 600 --height 400 chart.png");
    command->add_option("--width", options->width, "width in pixels (default 1200)")->check(CLI::Range(24, 30000));
    command->add_option("--height", options->height, "height in pixels (default 800)")->check(CLI::Range(24, 30000));
    command->add_flag("--16bit", options->sixteenBit, "16 bits a channel (TIFF and PNG)");
    AddEncodingOptions(*command);
    command->add_option("OUTPUT", options->output, "the chart image to write")->required();
    return {command, [options] { return Run(*options); }};
}

}  // namespace teskcolor
