// Runs the built teskcolor program and collects what it says.
#pragma once
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace teskcolor::test {

struct SRun {
    int code = -1;
    std::string out;
    std::string err;
};

inline std::string Quote(const std::string& text) {
    std::string quoted = "'";
    for (char c : text) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return quoted + "'";
}

// Runs teskcolor with `args` in the current environment.
inline SRun RunTeskcolor(const std::vector<std::string>& args) {
    const std::filesystem::path errFile =
        std::filesystem::temp_directory_path() / ("teskcolor-err-" + std::to_string(getpid()));
    std::string command = Quote(TESKCOLOR_EXE);
    for (const std::string& arg : args) command += " " + Quote(arg);
    SRun run;
    FILE* pipe = popen((command + " 2>" + Quote(errFile.string())).c_str(), "r");
    if (!pipe) return run;
    char chunk[4096];
    while (size_t got = fread(chunk, 1, sizeof chunk, pipe)) run.out.append(chunk, got);
    const int status = pclose(pipe);
    run.code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    std::stringstream text;
    text << std::ifstream(errFile).rdbuf();
    run.err = text.str();
    std::filesystem::remove(errFile);
    return run;
}

// What a shell command prints on standard output.
inline std::string ShellOutput(const std::string& command) {
    std::string out;
    if (FILE* pipe = popen(command.c_str(), "r")) {
        char chunk[4096];
        while (size_t got = fread(chunk, 1, sizeof chunk, pipe)) out.append(chunk, got);
        pclose(pipe);
    }
    return out;
}

// Full path of a tool the tests compare against, or "" when not installed.
inline std::string FindTool(const std::string& name) {
    for (const char* folder : {"/usr/bin/", "/usr/local/bin/"})
        if (std::filesystem::exists(folder + name)) return folder + name;
    return "";
}

}  // namespace teskcolor::test
