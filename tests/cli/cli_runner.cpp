#include "cli_runner.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace teskcolor::test {

namespace {
std::string Quote(const std::string& text) {
    std::string quoted = "'";
    for (char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}
}  // namespace

SRun RunTeskcolor(const std::vector<std::string>& args) {
    const std::string errFile =
        (std::filesystem::temp_directory_path() / ("teskcolor-err-" + std::to_string(getpid()))).string();
    std::string command = Quote(TESKCOLOR_EXE);
    for (const std::string& arg : args) command += " " + Quote(arg);
    command += " 2>" + Quote(errFile);
    SRun run;
    FILE* pipe = popen(command.c_str(), "r");
    if (!pipe) return run;
    char chunk[4096];
    size_t got;
    while ((got = fread(chunk, 1, sizeof chunk, pipe)) > 0) run.out.append(chunk, got);
    const int status = pclose(pipe);
    run.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    std::ifstream err(errFile);
    std::stringstream text;
    text << err.rdbuf();
    run.err = text.str();
    std::filesystem::remove(errFile);
    return run;
}

std::string FindTool(const std::string& name) {
    for (const char* folder : {"/usr/bin/", "/usr/local/bin/"})
        if (std::filesystem::exists(folder + name)) return folder + name;
    return "";
}

}  // namespace teskcolor::test
