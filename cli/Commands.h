// The subcommands of teskcolor. Each declares its command line on the root
// parser and returns what runs when it is chosen; failures are thrown as
// CCliError.
#pragma once
#include <vector>

#include "cli/CommandLine.h"

namespace teskcolor {

SCommand AddInfoCommand(CLI::App& root);
SCommand AddConvertCommand(CLI::App& root);
SCommand AddSeparateCommand(CLI::App& root);
SCommand AddCombineCommand(CLI::App& root);
SCommand AddProofCommand(CLI::App& root);
SCommand AddProfilesCommand(CLI::App& root);
SCommand AddSettingsCommand(CLI::App& root);
SCommand AddMakeProfileCommand(CLI::App& root);
SCommand AddChartCommand(CLI::App& root);
SCommand AddDemoCommand(CLI::App& root);
SCommand AddGammaCommand(CLI::App& root);
SCommand AddViewCommand(CLI::App& root);
SCommand AddPrintCommand(CLI::App& root);
SCommand AddSetupCommand(CLI::App& root);
SCommand AddColourCommand(CLI::App& root);
SCommand AddProfileCommand(CLI::App& root);

// Every subcommand, in the order `teskcolor --help` lists them.
std::vector<SCommand> AddAllCommands(CLI::App& root);

}  // namespace teskcolor
