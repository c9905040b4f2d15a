// teskcolor gamma, view, print and setup: the display's gamma ramp, a
// colour-managed window, printing through the printer's profile, and the
// colour-matching dialog.
#include <tesk/path.h>
#include <windows.h>
#include <winspool.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <tuple>
#include <vector>

#include "cli/Arguments.h"
#include "cli/Commands.h"
#include "cli/Errors.h"
#include "cli/ModuleHost.h"
#include "cli/Operations.h"
#include "cli/SavedGammaRamp.h"
#include "cli/X11Window.h"
#include "cli/imageio/ImageFile.h"
#include "colormgr/ColorManager.h"
#include "device/VDeviceContext.h"
#include "host/SettingsStore.h"
#include "host/SingletonManager.h"
#include "host/imaging/RowIteratorBands.h"
#include "icc/ICCReadColorProfile.h"

namespace teskcolor {

namespace {

constexpr size_t kRampEntries = 256;
constexpr size_t kRampValues = 3 * kRampEntries;  // red, green, blue
constexpr unsigned long kVcgtTag = 0x76636774;    // 'vcgt'

// ---- gamma ------------------------------------------------------------------

// A device context on the X server's display; `purpose` ends the message
// when there is none ("no display to load the gamma ramp into").
HDC OpenDisplay(const std::string& purpose) {
    if (HDC dc = ::CreateDCW(L"DISPLAY", nullptr, nullptr, nullptr)) return dc;
    const char* display = std::getenv("DISPLAY");
    throw CCliError(EExit::Failed, "there is no display " + purpose + ": " +
                                       (display && *display ? "the X server " + std::string(display) +
                                                                  " cannot be reached or has no RandR 1.3"
                                                            : std::string("DISPLAY is not set")));
}

SRamp ReadDisplayRamp(const std::string& purpose) {
    SRamp ramp(kRampValues, 0);
    HDC dc = OpenDisplay(purpose);
    const bool read = ::GetDeviceGammaRamp(dc, ramp.data());
    ::DeleteDC(dc);
    if (!read) throw CCliError(EExit::Failed, "the display's gamma ramp cannot be read");
    return ramp;
}

// A vcgt table of any size as 256 entries a channel (linear interpolation);
// a one-channel table serves all three.
SRamp RampFromTable(const SVCGTTable& table) {
    const size_t channels = table.m_nChannels, entries = table.m_nEntryCount;
    if (!table.m_pData || entries < 2 || (channels != 1 && channels != 3))
        throw CCliError(EExit::Unsupported, "the vcgt table has an unsupported shape (" + std::to_string(channels) +
                                                " channels of " + std::to_string(entries) + " entries)");
    const double scale = table.m_nEntrySize == 1 ? 257.0 : 1.0;
    SRamp ramp(kRampValues);
    for (size_t channel = 0; channel < 3; ++channel) {
        const uint16_t* values = table.m_pData + (channels == 1 ? 0 : channel) * entries;
        for (size_t i = 0; i < kRampEntries; ++i) {
            const double position = double(i) * double(entries - 1) / double(kRampEntries - 1);
            const size_t below = std::min(size_t(position), entries - 2);
            const double fraction = position - double(below);
            const double value = (values[below] * (1 - fraction) + values[below + 1] * fraction) * scale;
            ramp[channel * kRampEntries + i] = uint16_t(std::clamp(std::lround(value), 0L, 65535L));
        }
    }
    return ramp;
}

SRamp RampFromFormula(const SVCGTFormula& formula) {
    auto fixed = [](uint32_t bits) { return double(int32_t(bits)) / 65536.0; };
    const uint32_t fields[3][3] = {{formula.m_nRedGamma, formula.m_nRedMin, formula.m_nRedMax},
                                   {formula.m_nGreenGamma, formula.m_nGreenMin, formula.m_nGreenMax},
                                   {formula.m_nBlueGamma, formula.m_nBlueMin, formula.m_nBlueMax}};
    SRamp ramp(kRampValues);
    for (size_t channel = 0; channel < 3; ++channel) {
        const double gamma = fixed(fields[channel][0]), low = fixed(fields[channel][1]), high = fixed(fields[channel][2]);
        for (size_t i = 0; i < kRampEntries; ++i) {
            const double value = low + (high - low) * std::pow(double(i) / double(kRampEntries - 1), gamma);
            ramp[channel * kRampEntries + i] = uint16_t(std::clamp(std::lround(value * 65535.0), 0L, 65535L));
        }
    }
    return ramp;
}

// The reader leaves a table value that ends exactly at the tag's end unread
// (zero), as most profiles' tables do; the ramp needs it, so it is taken from
// the tag's last two bytes when the table fills the tag to its end.
void RecoverFinalEntry(CICCReadColorProfile& reader, SVCGTTable& table) {
    constexpr unsigned long kTableStart = 18;  // type, reserved, gamma type, channels, entries, entry size
    const unsigned long values = static_cast<unsigned long>(table.m_nChannels) * table.m_nEntryCount;
    if (!table.m_pData || values == 0 || table.m_nEntrySize != 2) return;
    unsigned long size = 0;
    std::unique_ptr<unsigned char[]> tag(reader.GetRequestedTag(kVcgtTag, size));
    if (!tag || size != kTableStart + 2 * values) return;
    table.m_pData[values - 1] = uint16_t(tag[size - 2] << 8 | tag[size - 1]);
}

SRamp RampOfProfile(CColorManager& manager, const std::string& argument) {
    SProfileSource source = LoadProfileSource(argument, &manager);
    CICCReadColorProfile reader;
    bool valid = false;
    if (!reader.CreateFromRawData(source.bytes.data(), static_cast<unsigned long>(source.bytes.size()), valid))
        throw CCliError(EExit::Corrupt, source.origin + ": not a readable ICC profile");
    if (!reader.DoesProfileTagExist(kVcgtTag))
        throw CCliError(EExit::WrongProfile, source.origin + ": the profile has no vcgt (video-card gamma) tag");
    SVCGTGamma gamma{};
    if (!reader.GetVCGTTable(gamma)) throw CCliError(EExit::Corrupt, source.origin + ": the vcgt tag is damaged");
    if (gamma.m_nGammaType == kVCGTFormula) return RampFromFormula(gamma.m_formula);
    std::unique_ptr<uint16_t[]> data(gamma.m_table.m_pData);
    RecoverFinalEntry(reader, gamma.m_table);
    return RampFromTable(gamma.m_table);
}

void PrintRamp(const SRamp& ramp, bool all) {
    const char* names[3] = {"red", "green", "blue"};
    if (all) {
        std::printf("entry    red  green   blue\n");
        for (size_t i = 0; i < kRampEntries; ++i)
            std::printf("%5zu %6u %6u %6u\n", i, ramp[i], ramp[kRampEntries + i], ramp[2 * kRampEntries + i]);
        return;
    }
    for (size_t channel = 0; channel < 3; ++channel) {
        const uint16_t* values = ramp.data() + channel * kRampEntries;
        bool identity = true;
        for (size_t i = 0; i < kRampEntries; ++i) identity &= std::abs(int(values[i]) - int(i * 257)) <= 1;
        std::printf("%-6s", names[channel]);
        for (size_t i : {size_t(0), size_t(64), size_t(128), size_t(192), size_t(255)})
            std::printf(" [%3zu] %5u", i, values[i]);
        std::printf("%s\n", identity ? "  (linear)" : "");
    }
}

constexpr const char* kGammaHelp =
    "usage: teskcolor gamma load PROFILE\n"
    "       teskcolor gamma restore\n"
    "       teskcolor gamma show [--all]\n"
    "The display's hardware gamma ramp (the X server's CRTC gamma when DISPLAY is set).\n"
    "  load PROFILE   set the ramp from the profile's vcgt (video-card gamma) tag; the\n"
    "                 ramp in place before the first load is kept for 'restore'\n"
    "  restore        put back the ramp kept by the first load\n"
    "  show           the current ramp: five samples a channel, or every entry with --all\n";

}  // namespace

int RunGamma(const Args& args) {
    CArguments arguments("gamma", args, {{"--all", false}});
    if (arguments.WantsHelp()) {
        std::fputs(kGammaHelp, stdout);
        return 0;
    }
    const auto& words = arguments.Positional();
    const std::string action = words.empty() ? "" : words[0];
    if (action == "show") {
        arguments.ExpectPositional(1, "gamma show [--all]");
        PrintRamp(ReadDisplayRamp("to show the gamma ramp of"), arguments.Has("--all"));
        const SSavedRamp saved = ReadSavedRamp();
        if (saved.ramp) std::printf("a ramp saved by 'gamma load' waits for 'gamma restore'\n");
        else if (saved.exists)
            std::printf("the saved ramp %s is damaged (%s); the next 'gamma load' replaces it\n", saved.path.c_str(),
                        saved.damage.c_str());
        return 0;
    }
    if (action == "load") {
        arguments.ExpectPositional(2, "gamma load PROFILE");
        // Read before the manager starts: it loads the monitor profile's own table.
        const SRamp before = ReadDisplayRamp("to load the gamma ramp into");
        CColorManager& manager = ColourManager();
        SRamp ramp = RampOfProfile(manager, words[1]);
        // The ramp from before the first load is kept; one that cannot be trusted is not.
        const SSavedRamp saved = ReadSavedRamp();
        if (saved.exists && !saved.ramp)
            std::fprintf(stderr, "teskcolor: the saved ramp %s is damaged (%s); the current ramp is saved instead\n",
                         saved.path.c_str(), saved.damage.c_str());
        if (!saved.ramp) SaveRamp(before);
        if (!manager.SetDeviceGammaRampFromVCGT(nullptr, ramp.data(), int(kRampValues), false))
            throw CCliError(EExit::Failed, "the display refused the gamma ramp");
        std::printf("loaded the vcgt of %s into the display's gamma ramp\n", words[1].c_str());
        return 0;
    }
    if (action == "restore") {
        arguments.ExpectPositional(1, "gamma restore");
        ::DeleteDC(OpenDisplay("to restore the gamma ramp of"));
        CColorManager& manager = ColourManager();
        SSavedRamp saved = ReadSavedRamp();
        if (!saved.exists) throw CCliError(EExit::NotFound, "no saved gamma ramp: 'gamma load' has not been used");
        if (!saved.ramp)
            throw CCliError(EExit::Corrupt, saved.path + " is damaged (" + saved.damage +
                                                "): there is no ramp to restore; the next 'gamma load' replaces it");
        if (!manager.SetDeviceGammaRampFromVCGT(nullptr, saved.ramp->data(), int(kRampValues), false))
            throw CCliError(EExit::Failed, "the display refused the saved gamma ramp");
        ForgetSavedRamp();
        std::printf("restored the display's gamma ramp\n");
        return 0;
    }
    throw CCliError(EExit::Usage, "gamma: 'load PROFILE', 'restore' or 'show' (see gamma --help)");
}

// ---- view and print ----------------------------------------------------------

namespace {

// The image in the working space at 8 or 16 bits without alpha: what a device
// context draws. CMYK images are not shown.
CRowIterator DrawableImage(CColorManager& manager, const std::string& path, bool eightBit) {
    SImage image = ReadImage(path);
    if (image.cmyk) throw CCliError(EExit::Unsupported, path + ": CMYK images are shown through 'combine' first");
    SImage working = ToWorkingSpace(manager, image, nullptr);
    CRowIterator pixels = working.pixels;
    EVPixelFormat format = pixels.GetPixelFormat();
    EVPixelFormat wanted = format;
    if (format == VPF_RGBA_8) wanted = VPF_RGB_8;
    if (format == VPF_RGBA_16) wanted = VPF_RGB_16;
    if (format == VPF_GREY_ALPHA_8) wanted = VPF_GREY_8;
    if (format == VPF_GREY_ALPHA_16) wanted = VPF_GREY_16;
    if (eightBit) wanted = CVPixelFormat::Get8bitFormat(wanted);
    if (wanted == format) return pixels;
    CRowIterator copy;
    if (!CRowIteratorBands::Create(copy, pixels.GetWidth(), pixels.GetHeight(), wanted) ||
        !RowIterator::CopyRect(copy, pixels))
        throw CCliError(EExit::Failed, path + ": the image could not be prepared for drawing");
    return copy;
}

// Releases the device-context object on every way out.
struct SDeviceReleaser {
    void operator()(CVDeviceContext* device) const { device->Release(); }
};
using DevicePtr = std::unique_ptr<CVDeviceContext, SDeviceReleaser>;

constexpr const char* kViewHelp =
    "usage: teskcolor view [--screenshot FILE] [--timeout S] IMAGE\n"
    "Shows an image in an X11 window, colour-managed: from its embedded profile (or\n"
    "the working space) through the display transform to the monitor profile. Needs\n"
    "an X display (DISPLAY). q or Escape closes the window.\n"
    "  --screenshot FILE   write what the window shows to FILE (TIFF, PNG or JPEG)\n"
    "  --timeout S         close the window S seconds after it is first drawn\n"
    "                      (0: at once, after the screenshot)\n";

}  // namespace

int RunView(const Args& args) {
    CArguments arguments("view", args, {{"--screenshot", true}, {"--timeout", true}});
    if (arguments.WantsHelp()) {
        std::fputs(kViewHelp, stdout);
        return 0;
    }
    arguments.ExpectPositional(1, "view [--screenshot FILE] [--timeout S] IMAGE");
    const double timeout = arguments.Number("--timeout", 0, 1e6).value_or(-1);
    const std::optional<std::string> screenshot = arguments.Value("--screenshot");
    const char* display = std::getenv("DISPLAY");
    if (!display || !*display) throw CCliError(EExit::Failed, "view needs an X display, and DISPLAY is not set");

    CColorManager& manager = ColourManager();
    const std::string& path = arguments.Positional()[0];
    const CRowIterator image = DrawableImage(manager, path, false);
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
        if (!screenshot) return;
        SImage shot;
        shot.pixels = window.Capture();
        WriteImage(*screenshot, shot);
        captured = true;
    };
    if (!window.Run(timeout, paint, afterFirstPaint))
        throw CCliError(EExit::Failed, "the window was never shown on the display");
    if (!drawn) throw CCliError(EExit::Failed, path + ": the image could not be drawn in the window");
    if (screenshot && !captured) throw CCliError(EExit::Failed, "no screenshot was taken");
    if (screenshot) std::printf("wrote %s\n", screenshot->c_str());
    return 0;
}

namespace {

constexpr const char* kPrintHelp =
    "usage: teskcolor print [--printer NAME] [--title TEXT] IMAGE\n"
    "Prints an image on one page, as large as fits, centred, through the printer's\n"
    "colour profile (its driver's or the one associated with it) when the colour\n"
    "settings use profiles.\n"
    "  --printer NAME   another printer than the default one\n"
    "  --title TEXT     the job's title (default: the image's file name)\n";

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

}  // namespace

int RunPrint(const Args& args) {
    CArguments arguments("print", args, {{"--printer", true}, {"--title", true}});
    if (arguments.WantsHelp()) {
        std::fputs(kPrintHelp, stdout);
        return 0;
    }
    arguments.ExpectPositional(1, "print [--printer NAME] [--title TEXT] IMAGE");
    const std::string& path = arguments.Positional()[0];
    CColorManager& manager = ColourManager();
    const CRowIterator image = DrawableImage(manager, path, true);

    std::wstring printer =
        arguments.Value("--printer") ? tesk::path::Wide(*arguments.Value("--printer")) : DefaultPrinter();
    manager.SetDefaultPrinterW(printer.c_str());  // its profile for SetupDC
    const LONG modeSize = ::DocumentPropertiesW(nullptr, nullptr, printer.data(), nullptr, nullptr, 0);
    if (modeSize <= 0) throw CCliError(EExit::NotFound, "no printer named " + tesk::path::ToNative(printer.c_str()));
    std::vector<BYTE> modeBytes(static_cast<size_t>(modeSize));
    auto* mode = reinterpret_cast<DEVMODEW*>(modeBytes.data());
    ::DocumentPropertiesW(nullptr, nullptr, printer.data(), mode, nullptr, DM_OUT_BUFFER);
    HDC dc = ::CreateDCW(nullptr, printer.c_str(), nullptr, mode);
    if (!dc) throw CCliError(EExit::Failed, "the printer's device context could not be made");

    const std::wstring title =
        tesk::path::Wide(arguments.Value("--title").value_or(std::filesystem::path(path).filename().string()));
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

// ---- setup ---------------------------------------------------------------------

namespace {

constexpr const char* kSetupHelp =
    "usage: teskcolor setup\n"
    "Opens the colour-matching dialog with the current settings (colour management\n"
    "on or off, proofing, monitor, printer and proof profiles, the two intents) and\n"
    "saves what is accepted as the colour settings; a new monitor profile also\n"
    "becomes the display's. Needs an X display (DISPLAY).\n";

std::wstring TextOf(const vell::TSharedArray<wchar_t>& text) { return text.IsNull() ? L"" : text.Get(); }

// The stored settings the manager keeps to itself, as the dialog's start.
struct SStoredChoices {
    int proof = 0;
    int proofIntent = 3;
    CString printerProfile, proofProfile;
};

SStoredChoices ReadStoredChoices() {
    constexpr int kColorGroup = 169;
    SStoredChoices stored;
    auto* store = static_cast<IVSettingsStore*>(CSingletonManager::Instance().GetInstanceVoid(kSettingsStoreGUID));
    if (!store) return stored;
    if (IVError* error = store->Prepare()) error->Release();
    IVSettingsGroup* group = nullptr;
    if (IVError* error = store->OpenGroup(kColorGroup, &group)) error->Release();
    if (!group) return stored;
    group->ReadInt(171, stored.proof);
    group->ReadInt(178, stored.proofIntent);
    group->ReadText(173, stored.printerProfile);
    group->ReadText(174, stored.proofProfile);
    group->Release();
    return stored;
}

vell::TSharedArray<wchar_t> Shared(const CString& text) {
    return text.IsEmpty() ? vell::TSharedArray<wchar_t>() : vell::TSharedArray<wchar_t>::FromText(text.GetString());
}

}  // namespace

int RunSetup(const Args& args) {
    CArguments arguments("setup", args, {});
    if (arguments.WantsHelp()) {
        std::fputs(kSetupHelp, stdout);
        return 0;
    }
    arguments.ExpectPositional(0, "setup");
    const char* display = std::getenv("DISPLAY");
    if (!display || !*display) throw CCliError(EExit::Failed, "setup needs an X display, and DISPLAY is not set");
    CColorManager& manager = ColourManager();

    const SStoredChoices stored = ReadStoredChoices();
    bool enable = manager.GetMode() == VCM_MODE_PROFILES, proofing = stored.proof != 0;
    CString monitor;
    manager.GetMonitorProfile(monitor);
    vell::TSharedArray<wchar_t> monitorName = Shared(monitor);
    vell::TSharedArray<wchar_t> printerName = Shared(stored.printerProfile), targetName = Shared(stored.proofProfile);
    uint32_t intent = manager.GetLCSIntent(), proofIntent = uint32_t(stored.proofIntent);

    // The dialog's owner: a window of ours, never shown.
    CX11Window owner(1, 1, "teskcolor setup");
    const auto chosen = [&] {
        return std::make_tuple(enable, proofing, TextOf(monitorName), TextOf(printerName), TextOf(targetName),
                               intent, proofIntent);
    };
    const auto before = chosen();
    if (!manager.ColorMatchUI(owner.Handle(), enable, proofing, monitorName, printerName, targetName, intent,
                              proofIntent))
        throw CCliError(EExit::Failed, "the colour-matching dialog could not be shown");
    if (chosen() == before) {  // cancelled, or accepted as it was
        std::printf("nothing changed\n");
        return 0;
    }

    std::wstring monitorText = TextOf(monitorName) == monitor.GetString() ? L"" : TextOf(monitorName);
    std::wstring printerText = TextOf(printerName), targetText = TextOf(targetName);
    manager.UpdateSettings(enable, proofing, monitorText.data(), printerText.data(), targetText.data(), intent,
                           proofIntent);
    std::printf("colour management %s, proofing %s, intent %u, proofing intent %u\n", enable ? "on" : "off",
                proofing ? "on" : "off", intent, proofIntent);
    return 0;
}

}  // namespace teskcolor
