// teskcolor print: an image printed through the printer's profile.
#include <tesk/path.h>
#include <windows.h>
#include <winspool.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <vector>

#include "cli/Commands.h"
#include "cli/DrawableImage.h"
#include "cli/ProgressBar.h"
#include "cli/Errors.h"
#include "cli/ModuleHost.h"
#include "colormgr/ColorManager.h"

namespace teskcolor {

namespace {

// The file name of the profile a device context uses, "" for none.
std::string ProfileOfContext(HDC dc) {
    wchar_t path[MAX_PATH + 1] = {};
    DWORD size = MAX_PATH;
    if (!::GetICMProfileW(dc, &size, path)) return "";
    path[MAX_PATH] = 0;
    return std::filesystem::path(tesk::path::ToNative(path)).filename().string();
}

std::wstring DefaultPrinter() {
    wchar_t name[520] = {};
    DWORD size = 520;
    if (!::GetDefaultPrinterW(name, &size) || !name[0]) throw CCliError(EExit::NotFound, "there is no default printer");
    return name;
}

struct SPrintOptions {
    std::optional<std::string> printer, title;
    std::string image;
};

int Run(const SPrintOptions& options) {
    const std::string& path = options.image;
    CColorManager& manager = ColourManager();
    CProgressBar progress("reading");
    const CRowIterator image = DrawableImage(manager, path, true, progress);

    std::wstring printer =
        options.printer ? tesk::path::Wide(*options.printer) : DefaultPrinter();
    manager.SetDefaultPrinterW(printer.c_str());  // its profile for SetupDC
    const LONG modeSize = ::DocumentPropertiesW(nullptr, nullptr, printer.data(), nullptr, nullptr, 0);
    if (modeSize <= 0) throw CCliError(EExit::NotFound, "no printer named " + tesk::path::ToNative(printer.c_str()));
    std::vector<BYTE> modeBytes(static_cast<size_t>(modeSize));
    auto* mode = reinterpret_cast<DEVMODEW*>(modeBytes.data());
    ::DocumentPropertiesW(nullptr, nullptr, printer.data(), mode, nullptr, DM_OUT_BUFFER);
    HDC dc = ::CreateDCW(nullptr, printer.c_str(), nullptr, mode);
    if (!dc) throw CCliError(EExit::Failed, "the printer's device context could not be made");

    const std::wstring title =
        tesk::path::Wide(options.title.value_or(std::filesystem::path(path).filename().string()));
    bool printed = false, matched = false;
    std::string matchedWith;
    {
        DevicePtr device(new CVDeviceContext(dc, true));
        matched = ::SetICMMode(dc, ICM_QUERY) == ICM_ON;
        if (matched) matchedWith = ProfileOfContext(dc);
        DOCINFOW document{sizeof(DOCINFOW), title.c_str(), nullptr, nullptr, 0};
        if (::StartDocW(dc, &document) > 0) {
            if (::StartPage(dc) > 0) {
                // As large as the page allows, centred, aspect kept.
                const int pageWidth = ::GetDeviceCaps(dc, HORZRES), pageHeight = ::GetDeviceCaps(dc, VERTRES);
                const double scale = std::min(double(pageWidth) / image.GetWidth(),
                                              double(pageHeight) / image.GetHeight());
                const int width = std::max(1, int(image.GetWidth() * scale));
                const int height = std::max(1, int(image.GetHeight() * scale));
                printed = device->DrawImageToPrinter(&image, (pageWidth - width) / 2, (pageHeight - height) / 2,
                                                     width, height, image.GetWidth(), image.GetHeight());
                printed = ::EndPage(dc) > 0 && printed;
            }
            if (printed) printed = ::EndDoc(dc) > 0;
            else ::AbortDoc(dc);
        }
    }
    ::DeleteDC(dc);
    if (!printed) throw CCliError(EExit::Failed, "printing failed");
    std::printf("printed %s on %s\n", path.c_str(), tesk::path::ToNative(printer.c_str()).c_str());
    if (matched)
        std::printf("colour-matched to the printer profile %s\n", matchedWith.c_str());
    else if (manager.GetMode() == VCM_MODE_PROFILES)
        std::printf("not colour-matched: the printer's profile is not installed in the colour directory\n"
                    "(see 'teskcolor profiles --help')\n");
    return 0;
}

}  // namespace

SCommand AddPrintCommand(CLI::App& root) {
    auto options = std::make_shared<SPrintOptions>();
    CLI::App* command = AddSubcommand(
        root, "print", "print an image through the printer's profile",
        "Prints an image on one page, as large as fits, centred, through the printer's colour\n"
        "profile (its driver's or the one associated with it) when the colour settings use\n"
        "profiles.\n"
        "reads: IMAGE, the working-space and printer profiles. writes: a print job.",
        "teskcolor print --printer Office photo.jpg");
    command->add_option("--printer", options->printer, "another printer than the default one")->type_name("NAME");
    command->add_option("--title", options->title, "the job's title (default: the image's file name)")
        ->type_name("TEXT");
    command->add_option("IMAGE", options->image, "the image to print")->required();
    return {command, [options] { return Run(*options); }};
}

}  // namespace teskcolor
