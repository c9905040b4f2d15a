// teskcolor view: an image shown colour-managed in an X11 window.
#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <algorithm>
#include <optional>

#include "cli/Commands.h"
#include "cli/DrawableImage.h"
#include "cli/Errors.h"
#include "cli/ModuleHost.h"
#include "cli/ProgressBar.h"
#include "cli/X11Window.h"
#include "cli/imageio/ImageFile.h"
#include "colormgr/ColorManager.h"

namespace teskcolor {

namespace {

struct SViewOptions {
    std::optional<std::string> screenshot;
    double timeout = -1;
    std::optional<double> zoom;
    std::string image;
};

int Run(const SViewOptions& options) {
    RequireDisplay("view");
    CColorManager& manager = ColourManager();
    const std::string& path = options.image;
    CProgressBar progress("reading");
    const CRowIterator full = DrawableImage(manager, path, false, progress);
    // Fit the screen unless a zoom is asked for: a window larger than the
    // screen can be neither seen nor captured whole.
    const auto [screenWidth, screenHeight] = ScreenSize();
    const double fit = std::min({1.0, 0.9 * screenWidth / full.GetWidth(), 0.9 * screenHeight / full.GetHeight()});
    const double zoom = options.zoom.value_or(fit);
    const CRowIterator image = ScaledImage(full, zoom);
    if (zoom * full.GetWidth() > screenWidth || zoom * full.GetHeight() > screenHeight)
        throw CCliError(EExit::Usage, "view: at that --zoom the image is larger than the screen");
    if (zoom != 1.0) std::printf("shown at %.0f %%\n", zoom * 100);
    CX11Window window(image.GetWidth(), image.GetHeight(),
                      "teskcolor view: " + std::filesystem::path(path).filename().string());
    window.Show();
    bool drawn = true;
    auto paint = [&] {
        HWND hwnd = window.Handle();
        HDC dc = ::GetDC(hwnd);
        if (!dc) {
            drawn = false;
            return;
        }
        DevicePtr device(new CVDeviceContext(dc, false));
        drawn = device->DrawImage(&image, nullptr, 0, 0, true, false);
        device.reset();
        ::ReleaseDC(hwnd, dc);
    };
    bool captured = false;
    auto afterFirstPaint = [&] {
        if (!options.screenshot) return;
        SImage shot;
        shot.pixels = window.Capture();
        WriteImage(*options.screenshot, shot);
        captured = true;
    };
    if (!window.Run(options.timeout, paint, afterFirstPaint))
        throw CCliError(EExit::Failed, "the window was never shown on the display");
    if (!drawn) throw CCliError(EExit::Failed, path + ": the image could not be drawn in the window");
    if (options.screenshot && !captured) throw CCliError(EExit::Failed, "no screenshot was taken");
    if (options.screenshot) std::printf("wrote %s\n", options.screenshot->c_str());
    return 0;
}

}  // namespace

SCommand AddViewCommand(CLI::App& root) {
    auto options = std::make_shared<SViewOptions>();
    CLI::App* command = AddSubcommand(
        root, "view", "show an image colour-managed in an X11 window",
        "Shows an image in an X11 window, colour-managed: from its embedded profile (or the\n"
        "working space) through the display transform to the monitor profile. Needs an X\n"
        "display (DISPLAY). q or Escape closes the window. An image larger than the screen is\n"
        "shown scaled to fit it, unless --zoom says otherwise.\n"
        "reads: IMAGE, the working-space and monitor profiles. writes: the screenshot, if asked.",
        "teskcolor view --timeout 0 --screenshot shown.png photo.jpg");
    command->add_option("--screenshot", options->screenshot, "write what the window shows to FILE (TIFF, PNG or JPEG)")
        ->type_name("FILE");
    command->add_option("--timeout", options->timeout,
                        "close the window S seconds after it is first drawn (0: at once, after the screenshot)")
        ->type_name("S")
        ->check(CLI::Range(0.0, 1e6));
    command->add_option("--zoom", options->zoom, "scale of the image on screen (default: 1, or smaller to fit the screen)")
        ->check(CLI::Range(0.01, 16.0));
    command->add_option("IMAGE", options->image, "the image to show")->required();
    return {command, [options] { return Run(*options); }};
}

}  // namespace teskcolor
