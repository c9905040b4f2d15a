// Runs the built teskcolor program and collects what it says.
#pragma once
#include <string>
#include <vector>

namespace teskcolor::test {

struct SRun {
    int code = -1;
    std::string out;
    std::string err;
};

// Runs teskcolor with `args` in the current environment.
SRun RunTeskcolor(const std::vector<std::string>& args);
// Full path of a file the tests compare against, or "" when not installed.
std::string FindTool(const std::string& name);

}  // namespace teskcolor::test
