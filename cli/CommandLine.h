// The pieces every subcommand's command line is built from: how a command is
// declared, and the option groups several commands share, so that adding one
// of them to a command is a single line.
#pragma once
#include <CLI/CLI.hpp>
#include <functional>
#include <optional>
#include <string>

namespace teskcolor {

// What a command does once its command line has been parsed: its exit code.
using CommandAction = std::function<int()>;

// A subcommand of `teskcolor`: its parser, and what runs when it was chosen.
struct SCommand {
    CLI::App* app = nullptr;
    CommandAction run;
};

// A new subcommand with its summary, what it reads and writes, and one
// example, as `teskcolor help COMMAND` and `COMMAND --help` print them.
CLI::App* AddSubcommand(CLI::App& root, const std::string& name, const std::string& summary,
                        const std::string& readsWrites, const std::string& example);

// The four rendering intents, by name or by their ICC number.
inline constexpr const char* kIntentNames[4] = {"perceptual", "relative", "saturation", "absolute"};
// "relative (1)"; "unknown (N)" outside 0..3.
std::string IntentText(int intent);
// An intent given by name or number; throws CCliError(Usage) naming `what` otherwise.
int ParseIntent(const std::string& text, const std::string& what);

// --intent NAME|N (or another option name): a rendering intent for this run.
CLI::Option* AddIntentOption(CLI::App& command, std::optional<int>& intent, const std::string& name = "--intent",
                             const std::string& help = "rendering intent for this run: perceptual, relative, "
                                                       "saturation, absolute (or 0..3)");
// --bpc: black-point compensation on every transform of this run (the
// colour system's extension; off unless given).
void AddBlackPointOption(CLI::App& command);
// --cmyk PROFILE: the CMYK profile for this run.
CLI::Option* AddCmykOption(CLI::App& command, std::string& profile);
// --compression, --quality, --no-embed and --format (for '-'): how the files this run writes are encoded.
void AddEncodingOptions(CLI::App& command);

}  // namespace teskcolor
