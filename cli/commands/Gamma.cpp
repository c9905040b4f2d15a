// teskcolor gamma: the display's gamma ramp from a profile's vcgt tag, and back.
#include <tesk/path.h>
#include <windows.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <vector>

#include "cli/Commands.h"
#include "cli/Errors.h"
#include "cli/ModuleHost.h"
#include "cli/SavedGammaRamp.h"
#include "cli/plots/GammaRampPlot.h"
#include "cli/plots/PlotFile.h"
#include "colormgr/ColorManager.h"
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
    throw CCliError(EExit::NoDisplay, "there is no display " + purpose + ": " +
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
    const SProfileSource& source = ResolveProfile(argument, &manager);
    std::vector<uint8_t> block = source.bytes;  // the reader keeps and may touch it
    CICCReadColorProfile reader;
    bool valid = false;
    if (!reader.CreateFromRawData(block.data(), static_cast<unsigned long>(block.size()), valid))
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

struct SGammaOptions {
    bool all = false;
    std::string plot;
    std::vector<std::string> words;
};

void ExpectWords(const std::vector<std::string>& words, size_t count, const std::string& usage) {
    if (words.size() != count) throw CCliError(EExit::Usage, "usage: teskcolor " + usage);
}

int Run(const SGammaOptions& options) {
    const auto& words = options.words;
    const std::string action = words.empty() ? "" : words[0];
    if (action != "show" && (options.all || !options.plot.empty()))
        throw CCliError(EExit::Usage, "gamma: --all and --plot belong to 'gamma show'");
    if (action == "show") {
        ExpectWords(words, 1, "gamma show [--all] [--plot OUT]");
        const SRamp current = ReadDisplayRamp("to show the gamma ramp of");
        PrintRamp(current, options.all);
        const SSavedRamp saved = ReadSavedRamp();
        if (!options.plot.empty()) WriteGammaRampPlot(options.plot, current, saved.ramp);
        if (saved.ramp) std::printf("a ramp saved by 'gamma load' waits for 'gamma restore'\n");
        else if (saved.exists)
            std::printf("the saved ramp %s is damaged (%s); the next 'gamma load' replaces it\n", saved.path.c_str(),
                        saved.damage.c_str());
        return 0;
    }
    if (action == "load") {
        ExpectWords(words, 2, "gamma load PROFILE");
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
        ExpectWords(words, 1, "gamma restore");
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
    throw CCliError(EExit::Usage, "gamma: 'load PROFILE', 'restore' or 'show' (see teskcolor help gamma)");
}

}  // namespace

SCommand AddGammaCommand(CLI::App& root) {
    auto options = std::make_shared<SGammaOptions>();
    CLI::App* command = AddSubcommand(
        root, "gamma", "load a profile's calibration into the display's gamma ramp, restore it",
        "  teskcolor gamma load PROFILE\n"
        "  teskcolor gamma restore\n"
        "  teskcolor gamma show [--all] [--plot OUT]\n"
        "The display's hardware gamma ramp (the X server's CRTC gamma when DISPLAY is set).\n"
        "  load PROFILE   set the ramp from the profile's vcgt (video-card gamma) tag; the\n"
        "                 ramp in place before the first load is kept for 'restore'\n"
        "  restore        put back the ramp kept by the first load\n"
        "  show           the current ramp: five samples a channel, or every entry with --all;\n"
        "                 --plot draws it beside the ramp kept by load\n"
        "reads: PROFILE, the display's ramp. writes: the display's ramp; load keeps the ramp\n"
        "before it in the configuration folder, restore removes it.",
        "teskcolor gamma load calibrated.icc");
    command->add_flag("--all", options->all, "show every entry of the ramp");
    command->add_option("--plot", options->plot, "show: draw the current and the saved ramp (.png, .svg or .pdf)")
        ->check(PlotFileName());
    command->add_option("ACTION", options->words, "load PROFILE | restore | show");
    return {command, [options] { return Run(*options); }};
}

}  // namespace teskcolor
