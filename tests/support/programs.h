// Other programs run as a script would run them: the built teskcolor, and the
// reference tools the tests compare against.
#pragma once
#include <string>

namespace tesk::test {

struct ProgramRun {
    int code = -1;  // exit status; -1 when it did not run or did not exit
    std::string out;
};

// `text` as one shell word.
std::string ShellQuote(const std::string& text);
// Runs a shell command line and collects its standard output.
ProgramRun RunShell(const std::string& command);
// Full path of an installed tool, or "" when it is not installed.
std::string FindTool(const std::string& name);

}  // namespace tesk::test
