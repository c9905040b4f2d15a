// teskcolor colour: single colours through the module's own one-colour
// conversions, one line out for each colour in, as a calculator would.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "cli/ColourTranslation.h"
#include "cli/Commands.h"
#include "cli/Errors.h"
#include "cli/ModuleHost.h"
#include "cli/Operations.h"
#include "cli/SessionSettings.h"
#include "colormgr/ColorManager.h"

namespace teskcolor {

namespace {

constexpr uint32_t kRGBSpace = 0x52474220;
constexpr uint32_t kCMYKSpace = 0x434D594B;

struct SColourOptions {
    std::string from, to, cmyk;
    bool wide = false, fromLab = false, toLab = false;
    std::vector<std::string> colours;
};

int HexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// "255,0,0" or "#ff0000" as a COLORREF (0x00BBGGRR).
DWORD ParseColour(const std::string& text) {
    const auto refuse = [&text] {
        return CCliError(EExit::Usage, "colour: '" + text + "' is not R,G,B (0..255 each) or #RRGGBB");
    };
    int channels[3] = {};
    if (!text.empty() && text[0] == '#') {
        if (text.size() != 7) throw refuse();
        for (int i = 0; i < 3; ++i) {
            const int high = HexDigit(text[1 + 2 * i]), low = HexDigit(text[2 + 2 * i]);
            if (high < 0 || low < 0) throw refuse();
            channels[i] = high * 16 + low;
        }
    } else {
        size_t at = 0;
        for (int i = 0; i < 3; ++i) {
            size_t digits = 0;
            int value = 0;
            while (at < text.size() && text[at] >= '0' && text[at] <= '9' && digits < 4) {
                value = value * 10 + (text[at++] - '0');
                ++digits;
            }
            if (digits == 0 || value > 255) throw refuse();
            channels[i] = value;
            if (i < 2 && (at >= text.size() || text[at++] != ',')) throw refuse();
        }
        if (at != text.size()) throw refuse();
    }
    return static_cast<DWORD>(channels[0] | channels[1] << 8 | channels[2] << 16);
}

std::string Convert(CColorManager& manager, DWORD colour, bool toCMYK) {
    char line[64];
    if (toCMYK) {
        BYTE c = 0, m = 0, y = 0, k = 0;
        if (manager.ColorTransformRGBtoCMYK(colour, c, m, y, k, false) != VELL_OK)
            throw CCliError(EExit::Failed, "colour: the colour system could not convert to CMYK");
        // Ink in percent, as transicc prints CMYK.
        std::snprintf(line, sizeof line, "%.2f %.2f %.2f %.2f", c * 100.0 / 255, m * 100.0 / 255, y * 100.0 / 255,
                      k * 100.0 / 255);
    } else {
        manager.TransformColor(colour);
        std::snprintf(line, sizeof line, "%u %u %u", static_cast<unsigned>(colour & 0xFF),
                      static_cast<unsigned>(colour >> 8 & 0xFF), static_cast<unsigned>(colour >> 16 & 0xFF));
    }
    return line;
}

// "R,G,B" in 0..max or "L,a,b" (L 0..100, a and b -128..127) as numbers.
std::array<double, 3> ParseTriple(const std::string& text, bool lab, double max) {
    const auto refuse = [&] {
        return CCliError(EExit::Usage, "colour: '" + text + "' is not " +
                                           (lab ? std::string("L,a,b (L 0..100, a and b -128..127)")
                                                : "R,G,B (0.." + std::to_string(int(max)) + " each)"));
    };
    std::array<double, 3> values{};
    const char* at = text.c_str();
    for (int i = 0; i < 3; ++i) {
        char* end = nullptr;
        values[i] = lab ? std::strtod(at, &end) : double(std::strtoul(at, &end, 10));
        const bool digitFirst = (*at >= '0' && *at <= '9') || (lab && (*at == '-' || *at == '+' || *at == '.'));
        if (end == at || !digitFirst || !std::isfinite(values[i])) throw refuse();
        const double low = lab && i > 0 ? -128 : 0, high = !lab ? max : i == 0 ? 100 : 127;
        if (values[i] < low || values[i] > high) throw refuse();
        at = end;
        if (i < 2 && *at++ != ',') throw refuse();
    }
    if (*at != '\0') throw refuse();
    return values;
}

uint16_t Word(double value) { return static_cast<uint16_t>(std::lround(std::clamp(value, 0.0, 65535.0))); }

std::array<uint16_t, 4> ParseWideColour(const std::string& text, const SColourOptions& options) {
    if (options.fromLab) {
        const std::array<double, 3> lab = ParseTriple(text, true, 0);
        return {Word(lab[0] * 65535 / 100), Word((lab[1] + 128) * 257), Word((lab[2] + 128) * 257), 0};
    }
    if (options.wide) {
        const std::array<double, 3> rgb = ParseTriple(text, false, 65535);
        return {Word(rgb[0]), Word(rgb[1]), Word(rgb[2]), 0};
    }
    const DWORD colour = ParseColour(text);
    const auto channel = [colour](int shift) { return uint16_t((colour >> shift & 0xFF) * 257); };
    return {channel(0), channel(8), channel(16), 0};
}

// As transicc prints: RGB as integers (0..255, or 0..65535 with --16bit),
// Lab to four decimals, CMYK ink in percent.
std::string FormatWideColour(const std::array<uint16_t, 4>& colour, EColourSpace space, bool wide) {
    char line[96];
    switch (space) {
    case EColourSpace::Lab:
        std::snprintf(line, sizeof line, "%.4f %.4f %.4f", colour[0] * 100.0 / 65535, colour[1] / 257.0 - 128,
                      colour[2] / 257.0 - 128);
        break;
    case EColourSpace::CMYK:
        std::snprintf(line, sizeof line, wide ? "%.4f %.4f %.4f %.4f" : "%.2f %.2f %.2f %.2f",
                      colour[0] * 100.0 / 65535, colour[1] * 100.0 / 65535, colour[2] * 100.0 / 65535,
                      colour[3] * 100.0 / 65535);
        break;
    case EColourSpace::RGB:
        if (wide)
            std::snprintf(line, sizeof line, "%u %u %u", unsigned(colour[0]), unsigned(colour[1]), unsigned(colour[2]));
        else
            std::snprintf(line, sizeof line, "%u %u %u", (colour[0] + 128u) / 257u, (colour[1] + 128u) / 257u,
                          (colour[2] + 128u) / 257u);
        break;
    }
    return line;
}

template <typename FConvert>
void ConvertEach(const std::vector<std::string>& colours, const FConvert& convert) {
    if (!colours.empty()) {
        for (const std::string& text : colours) std::printf("%s\n", convert(text).c_str());
        return;
    }
    for (std::string text; std::getline(std::cin, text);) {
        if (!text.empty() && text.back() == '\r') text.pop_back();
        if (text.empty()) continue;
        std::printf("%s\n", convert(text).c_str());
        std::fflush(stdout);
    }
}

// 16-bit and Lab colours go through the colour system's own API, as a host
// would ask it; the colour manager's calls carry 8-bit colours only.
int RunWide(const SColourOptions& options) {
    CColorManager& manager = ColourManager();
    std::vector<std::vector<uint8_t>> chain;
    if (options.fromLab) {
        chain.push_back(LabProfileBytes());
    } else {
        const SProfileSource& from =
            options.from.empty() ? WorkingSpaceProfile(manager) : ResolveProfile(options.from, &manager);
        RequireColourSpace(from, kRGBSpace, "the source");
        chain.push_back(from.bytes);
    }
    EColourSpace out = EColourSpace::RGB;
    if (options.toLab) {
        chain.push_back(LabProfileBytes());
        out = EColourSpace::Lab;
    } else if (!options.cmyk.empty()) {
        const SProfileSource& cmyk = ResolveProfile(options.cmyk, &manager);
        RequireColourSpace(cmyk, kCMYKSpace, "the CMYK profile");
        chain.push_back(cmyk.bytes);
        out = EColourSpace::CMYK;
    } else {
        const SProfileSource& to =
            options.to.empty() ? WorkingSpaceProfile(manager) : ResolveProfile(options.to, &manager);
        RequireColourSpace(to, kRGBSpace, "the target");
        chain.push_back(to.bytes);
    }
    const CColourTranslation translation(chain, options.fromLab ? EColourSpace::Lab : EColourSpace::RGB, out);
    ConvertEach(options.colours, [&](const std::string& text) {
        return FormatWideColour(translation.Translate(ParseWideColour(text, options)), out, options.wide);
    });
    return 0;
}

int Run(const SColourOptions& options) {
    if (options.wide || options.fromLab || options.toLab) return RunWide(options);
    CColorManager& manager = ColourManager();
    const SProfileSource& working = WorkingSpaceProfile(manager);
    const SProfileSource& from = options.from.empty() ? working : ResolveProfile(options.from, &manager);
    RequireColourSpace(from, kRGBSpace, "the source");
    const bool toCMYK = !options.cmyk.empty();
    if (toCMYK) {
        // The CMYK conversion starts from the working space, so the source becomes it for this run.
        if (!options.from.empty()) {
            KeepWritesForThisRun();
            CString name(from.moduleName);
            manager.SetColorWorkingSpace(name);
        }
        UseCMYKProfileForThisRun(manager, options.cmyk);
    } else {
        if (!options.to.empty()) {
            const SProfileSource& to = ResolveProfile(options.to, &manager);
            RequireColourSpace(to, kRGBSpace, "the target");
            KeepWritesForThisRun();
            CString name(to.moduleName);
            manager.SetColorWorkingSpace(name);
        }
        std::vector<uint8_t> bytes = from.bytes;
        int size = static_cast<int>(bytes.size());
        manager.SetQFXColorProfile(bytes.data(), size);
    }

    ConvertEach(options.colours, [&](const std::string& text) { return Convert(manager, ParseColour(text), toCMYK); });
    return 0;
}

}  // namespace

SCommand AddColourCommand(CLI::App& root) {
    auto options = std::make_shared<SColourOptions>();
    CLI::App* command = AddSubcommand(
        root, "colour", "convert single colours, given as arguments or one a line on standard input",
        "Converts each colour (R,G,B of 0..255, or #RRGGBB) from --from (default: the working\n"
        "space) into --to (default: the working space), or with --cmyk into ink percentages,\n"
        "relative colorimetric, and prints one line for each: 'R G B' or 'C M Y K'.\n"
        "--16bit takes and prints R,G,B of 0..65535; --from-lab takes L,a,b (D50) instead of\n"
        "RGB; --to-lab prints 'L a b'. The output is laid out as transicc prints it.\n"
        "reads: the colours, or standard input when none are given; the profiles.\n"
        "writes: standard output.",
        "teskcolor colour --from sRGB.icc --cmyk FOGRA39.icc 255,0,0 '#00ff00'");
    command->alias("color");
    command->add_option("--from", options->from, "the colours' RGB profile")->type_name("PROFILE");
    CLI::Option* to = command->add_option("--to", options->to, "the target RGB profile")->type_name("PROFILE");
    AddCmykOption(*command, options->cmyk)->excludes(to)->description("convert into this CMYK profile's ink instead");
    command->add_flag("--16bit", options->wide, "R,G,B of 0..65535 in and out");
    CLI::Option* fromLab = command->add_flag("--from-lab", options->fromLab, "the colours are L,a,b (D50)");
    fromLab->excludes("--from");
    command->add_flag("--to-lab", options->toLab, "print L a b (D50) instead")->excludes(to)->excludes("--cmyk");
    command->add_option("COLOUR", options->colours, "R,G,B, #RRGGBB or L,a,b; none: read standard input");
    return {command, [options] { return Run(*options); }};
}

}  // namespace teskcolor
