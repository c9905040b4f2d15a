// Runs the built teskcolor program and collects what it says.
#pragma once
#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "support/programs.h"
#include "support/temp_env.h"

namespace teskcolor::test {

using tesk::test::FindTool;

struct SRun {
    int code = -1;
    std::string out;
    std::string err;
};

// Runs teskcolor with `args` in the current environment.
inline SRun RunTeskcolor(const std::vector<std::string>& args) {
    const std::string errFile =
        (std::filesystem::temp_directory_path() / ("teskcolor-err-" + std::to_string(getpid()))).string();
    std::string command = tesk::test::ShellQuote(TESKCOLOR_EXE);
    for (const std::string& arg : args) command += " " + tesk::test::ShellQuote(arg);
    const tesk::test::ProgramRun run = tesk::test::RunShell(command + " 2>" + tesk::test::ShellQuote(errFile));
    SRun result{run.code, run.out, tesk::test::ReadText(errFile)};
    std::filesystem::remove(errFile);
    return result;
}

}  // namespace teskcolor::test
