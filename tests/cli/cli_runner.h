// Runs the built teskcolor program and collects what it says.
#pragma once
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
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

// Peak resident memory in MiB of one teskcolor run, -1 when it failed.
inline long PeakMemoryMiB(const std::vector<std::string>& args) {
    std::vector<std::string> words = {TESKCOLOR_EXE};
    words.insert(words.end(), args.begin(), args.end());
    std::vector<char*> argv;
    for (std::string& word : words) argv.push_back(word.data());
    argv.push_back(nullptr);
    const pid_t child = fork();
    if (child == 0) {
        const int quiet = open("/dev/null", O_WRONLY);
        dup2(quiet, STDOUT_FILENO);
        execv(argv[0], argv.data());
        _exit(127);
    }
    int status = 0;
    rusage usage{};
    if (child < 0 || wait4(child, &status, 0, &usage) != child || !WIFEXITED(status) || WEXITSTATUS(status) != 0)
        return -1;
    return usage.ru_maxrss / 1024;
}

}  // namespace teskcolor::test
