// teskcolor: colour management from the command line, through TeskColorMgr.
#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <exception>
#include <string>

#include "cli/Commands.h"
#include "cli/Errors.h"
#include "cli/ModuleHost.h"
#include "cli/imageio/TiffWideSamples.h"

namespace teskcolor {

std::vector<SCommand> AddAllCommands(CLI::App& root) {
    return {AddInfoCommand(root),     AddConvertCommand(root), AddSeparateCommand(root), AddCombineCommand(root),
            AddProofCommand(root),    AddProfilesCommand(root), AddSettingsCommand(root),
            AddMakeProfileCommand(root), AddChartCommand(root), AddDemoCommand(root),     AddGammaCommand(root),
            AddViewCommand(root),     AddPrintCommand(root),   AddSetupCommand(root),
            AddColourCommand(root),   AddProfileCommand(root)};
}

namespace {

constexpr const char* kExitCodes =
    "exit codes: 0 done, 1 the colour system failed, 2 bad arguments, 3 missing file,\n"
    "4 corrupt or truncated file, 5 unsupported image layout, 6 profile of the wrong class,\n"
    "7 output could not be written, 8 no display to show on, 9 of several files some failed\n"
    "(each named on standard error; when all fail, the first one's code).\n"
    "'teskcolor help COMMAND' or 'teskcolor COMMAND --help' describes a command.";

// The module decides its trace switch once, as it loads, from this event when
// a host made it first: made signalled, it turns the trace on for this process
// only. The module loads before main, so the program's options before the
// command are read here, ahead of every library's start-up.
void TurnOnModuleTraceWhenVerbose(int argc, char** argv, char**) {
    for (int i = 1; i < argc && argv[i][0] == '-'; ++i)
        if (std::strcmp(argv[i], "--verbose") == 0) {
            static HANDLE traceSwitch = ::CreateEventW(nullptr, TRUE, TRUE, L"QFX_OUTPUT_DEBUG_ENABLE");
            (void)traceSwitch;
            return;
        }
}

__attribute__((section(".preinit_array"), used)) void (*const kBeforeLibraries)(int, char**, char**) =
    TurnOnModuleTraceWhenVerbose;

// Help that opens with its usage line, as the field's tools print it.
class CHelpFormatter : public CLI::Formatter {
public:
    std::string make_help(const CLI::App* app, std::string name, CLI::AppFormatMode mode) const override {
        if (mode == CLI::AppFormatMode::Sub) return make_expanded(app);
        std::string usage = make_usage(app, name);
        return usage + make_description(app) + make_positionals(app) + make_groups(app, mode) +
               make_subcommands(app, mode) + "\n" + make_footer(app) + "\n";
    }
};

int Fail(EExit code, std::string message) {
    std::replace(message.begin(), message.end(), '\n', ' ');
    std::fflush(stdout);
    std::fprintf(stderr, "teskcolor: %s\n", message.c_str());
    return int(code);
}

}  // namespace
}  // namespace teskcolor

int main(int argc, char** argv) {
    using namespace teskcolor;
    CLI::App root("Colour management from the command line: profiles, conversions, separations.", "teskcolor");
    auto formatter = std::make_shared<CHelpFormatter>();
    formatter->label("Usage", "usage");
    root.formatter(formatter);
    root.footer(kExitCodes);
    root.set_version_flag("--version", "teskcolor " TESKCOLOR_VERSION);
    root.require_subcommand(1);
    bool verbose = false;  // acted on before main
    root.add_flag("--verbose", verbose, "write the colour manager's trace to standard error (before the command)");
    const std::vector<SCommand> commands = AddAllCommands(root);

    CLI::App* help = root.add_subcommand("help", "describe a command: teskcolor help COMMAND");
    std::string topic;
    std::vector<std::string> names;
    for (const SCommand& command : commands) names.push_back(command.app->get_name());
    help->add_option("COMMAND", topic, "the command to describe")->check(CLI::IsMember(names));

    try {
        root.parse(argc, argv);
    } catch (const CLI::CallForHelp& request) {
        return root.exit(request);
    } catch (const CLI::CallForAllHelp& request) {
        return root.exit(request);
    } catch (const CLI::CallForVersion& request) {
        return root.exit(request);
    } catch (const CLI::ParseError& error) {
        const std::vector<CLI::App*> chosen = root.get_subcommands();
        const std::string where = chosen.empty() ? "" : chosen.front()->get_name() + ": ";
        const std::string see = chosen.empty() ? "teskcolor --help" : "teskcolor help " + chosen.front()->get_name();
        return Fail(EExit::Usage, where + error.what() + " (see " + see + ")");
    }
    if (help->parsed()) {
        std::fputs((topic.empty() ? root.help() : root.get_subcommand(topic)->help("teskcolor")).c_str(), stdout);
        return 0;
    }
    try {
        for (const SCommand& command : commands)
            if (command.app->parsed()) {
                UseDisplayFor(command.app->get_name());
                SetWideSampleTarget([] { return WorkingSpaceProfile(ColourManager()).bytes; });
                return command.run();
            }
        return Fail(EExit::Usage, "no command given (see teskcolor --help)");
    } catch (const CCliError& error) {
        return Fail(error.Code(), error.what());
    } catch (const std::bad_alloc&) {
        return Fail(EExit::Failed, "out of memory");
    } catch (const std::exception& error) {
        return Fail(EExit::Failed, error.what());
    }
}
