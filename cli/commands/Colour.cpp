// teskcolor colour: single colours through the module's own one-colour
// conversions, one line out for each colour in, as a calculator would.
#include <cstdio>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

#include "cli/Commands.h"
#include "cli/Errors.h"
#include "cli/ModuleHost.h"
#include "cli/Operations.h"
#include "cli/SessionSettings.h"
#include "colormgr/ColorManager.h"

namespace teskcolor {

namespace {

constexpr uint32_t kRGBSpace = 0x52474220;

struct SColourOptions {
    std::string from, to, cmyk;
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

int Run(const SColourOptions& options) {
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

    if (!options.colours.empty()) {
        for (const std::string& text : options.colours) std::printf("%s\n", Convert(manager, ParseColour(text), toCMYK).c_str());
        return 0;
    }
    for (std::string text; std::getline(std::cin, text);) {
        if (!text.empty() && text.back() == '\r') text.pop_back();
        if (text.empty()) continue;
        std::printf("%s\n", Convert(manager, ParseColour(text), toCMYK).c_str());
        std::fflush(stdout);
    }
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
        "reads: the colours, or standard input when none are given; the profiles.\n"
        "writes: standard output.",
        "teskcolor colour --from sRGB.icc --cmyk FOGRA39.icc 255,0,0 '#00ff00'");
    command->alias("color");
    command->add_option("--from", options->from, "the colours' RGB profile")->type_name("PROFILE");
    CLI::Option* to = command->add_option("--to", options->to, "the target RGB profile")->type_name("PROFILE");
    AddCmykOption(*command, options->cmyk)->excludes(to)->description("convert into this CMYK profile's ink instead");
    command->add_option("COLOUR", options->colours, "R,G,B or #RRGGBB; none: read standard input");
    return {command, [options] { return Run(*options); }};
}

}  // namespace teskcolor
