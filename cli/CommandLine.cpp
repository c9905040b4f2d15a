#include "cli/CommandLine.h"

#include "cli/Errors.h"
#include "cli/imageio/DeclaredSize.h"

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

CLI::Option* AddCmykOption(CLI::App& command, std::string& profile) {
    return command.add_option("--cmyk", profile, "the CMYK profile for this run (default: the settings')")
        ->type_name("PROFILE");
}

}  // namespace teskcolor
