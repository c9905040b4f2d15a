// The subcommands of teskcolor. Each takes its arguments (after the command
// name), prints its own help for --help, and returns the exit code; failures
// are thrown as CCliError.
#pragma once
#include <string>
#include <vector>

namespace teskcolor {

using Args = std::vector<std::string>;

int RunInfo(const Args& args);
int RunConvert(const Args& args);
int RunSeparate(const Args& args);
int RunCombine(const Args& args);
int RunProof(const Args& args);
int RunProfiles(const Args& args);
int RunSettings(const Args& args);
int RunMakeProfile(const Args& args);
int RunChart(const Args& args);
int RunDemo(const Args& args);
int RunGamma(const Args& args);
int RunView(const Args& args);
int RunPrint(const Args& args);
int RunSetup(const Args& args);

struct SCommand {
    const char* name;
    const char* summary;
    int (*run)(const Args& args);
};

const std::vector<SCommand>& AllCommands();

}  // namespace teskcolor
