#include "cli/CommandLine.h"

#include <windows.h>

#include <icm.h>
#include <map>

#include "cli/Errors.h"
#include "cli/imageio/DeclaredSize.h"
#include "cli/imageio/Encoding.h"
#include "cli/imageio/StandardStreams.h"

namespace teskcolor {

CLI::App* AddSubcommand(CLI::App& root, const std::string& name, const std::string& summary,
                        const std::string& readsWrites, const std::string& example) {
    CLI::App* command = root.add_subcommand(name, summary);
    command->footer(readsWrites + "\n\nexample:\n  " + example);
    // Holds for the whole run, for every image the command reads.
    command
        ->add_option_function<long long>(
            "--max-pixels", [](const long long& pixels) { SetDefaultPixelBudget(pixels); },
            "refuse an image of more pixels than this (default 2^30)")
        ->check(CLI::PositiveNumber);
    return command;
}

std::string IntentText(int intent) {
    const std::string name = intent >= 0 && intent < 4 ? kIntentNames[intent] : "unknown";
    return name + " (" + std::to_string(intent) + ")";
}

namespace {

std::optional<int> IntentOf(const std::string& text) {
    for (int i = 0; i < 4; ++i)
        if (text == kIntentNames[i] || text == std::to_string(i)) return i;
    return std::nullopt;
}

}  // namespace

int ParseIntent(const std::string& text, const std::string& what) {
    if (auto intent = IntentOf(text)) return *intent;
    throw CCliError(EExit::Usage, what + " is perceptual, relative, saturation or absolute (or 0..3), not '" + text + "'");
}

CLI::Option* AddIntentOption(CLI::App& command, std::optional<int>& intent, const std::string& name,
                             const std::string& help) {
    const CLI::Validator known(
        [](std::string& text) {
            return IntentOf(text) ? std::string()
                                  : "an intent is perceptual, relative, saturation or absolute (or 0..3), not '" +
                                        text + "'";
        },
        "INTENT");
    return command
        .add_option_function<std::string>(
            name, [&intent](const std::string& text) { intent = IntentOf(text); }, help)
        ->check(known)
        ->type_name("INTENT");
}

void AddBlackPointOption(CLI::App& command) {
    // Asked for while parsing: before the colour manager builds any transform.
    command.add_flag_callback(
        "--bpc",
        [] {
            if (!::TeskSetTransformExtensions(TESK_BLACK_POINT_COMPENSATION))
                throw CLI::ValidationError("--bpc", "the colour system offers no black-point compensation");
        },
        "black-point compensation: the source's black maps to the destination's");
}

CLI::Option* AddCmykOption(CLI::App& command, std::string& profile) {
    return command.add_option("--cmyk", profile, "the CMYK profile for this run (default: the settings')")
        ->type_name("PROFILE");
}

void AddEncodingOptions(CLI::App& command) {
    const CLI::Validator writable(
        [](std::string& text) -> std::string {
            const std::optional<ETiffCompression> compression = TiffCompressionNamed(text);
            if (!compression) return "TIFF compression is none, lzw, deflate or zstd, not '" + text + "'";
            if (!CanWriteTiffCompression(*compression)) return "this libtiff cannot write " + text + " compression";
            return {};
        },
        "none|lzw|deflate|zstd");
    command
        .add_option_function<std::string>(
            "--compression",
            [](const std::string& text) { ChangeRunEncoding().tiffCompression = *TiffCompressionNamed(text); },
            "TIFF compression: none, lzw, deflate (default) or zstd")
        ->check(writable)
        ->type_name("METHOD");
    command
        .add_option_function<int>(
            "--quality", [](const int& quality) { ChangeRunEncoding().jpegQuality = quality; },
            "JPEG quality, 1..100 (default 92)")
        ->check(CLI::Range(1, 100))
        ->type_name("N");
    static const std::map<std::string, EImageType> kFormats{
        {"tiff", EImageType::Tiff}, {"png", EImageType::Png}, {"jpeg", EImageType::Jpeg}};
    const CLI::Validator known(
        [](std::string& text) { return kFormats.count(text) ? std::string() : "a format is tiff, png or jpeg, not '" + text + "'"; },
        "tiff|png|jpeg");
    command
        .add_option_function<std::string>(
            "--format", [](const std::string& text) { SetStandardOutputFormat(kFormats.at(text)); },
            "format of an image written to '-' (standard output), or of those --output-dir writes")
        ->check(known)
        ->type_name("FORMAT");
    command.add_flag_callback(
        "--no-embed", [] { ChangeRunEncoding().embedProfile = false; }, "write no ICC profile into the output");
}

}  // namespace teskcolor
