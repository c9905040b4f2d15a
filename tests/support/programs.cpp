#include "support/programs.h"

#include <sys/wait.h>

#include <cstdio>
#include <filesystem>

namespace tesk::test {

std::string ShellQuote(const std::string& text) {
    std::string quoted = "'";
    for (char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

ProgramRun RunShell(const std::string& command) {
    ProgramRun run;
    FILE* pipe = popen(command.c_str(), "r");
    if (!pipe) return run;
    char chunk[4096];
    while (size_t got = fread(chunk, 1, sizeof chunk, pipe)) run.out.append(chunk, got);
    const int status = pclose(pipe);
    run.code = status != -1 && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return run;
}

std::string FindTool(const std::string& name) {
    for (const char* folder : {"/usr/bin/", "/usr/local/bin/"})
        if (std::filesystem::exists(folder + name)) return folder + name;
    return "";
}

}  // namespace tesk::test
