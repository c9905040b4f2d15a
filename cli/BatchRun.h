// The files a converting command works on: INPUT OUTPUT, or with --output-dir
// any number of inputs, each written into that folder under its own name
// (plus --suffix). Several files run side by side, a file to a worker; a file
// that fails is reported on its own line and the others go on.
#pragma once
#include <CLI/CLI.hpp>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

class CStatusControl;

namespace teskcolor {

struct SFileArguments {
    std::vector<std::string> files;
    std::string outputDir, suffix;
    unsigned jobs = 0;  // 0: one worker a core
};

// FILES, --output-dir, --suffix and --jobs.
void AddFileArguments(CLI::App& command, SFileArguments& files);

// One file's work: read `input`, write `output`. `status` may be null.
using FileWork = std::function<void(const std::string& input, const std::string& output, CStatusControl* status)>;

// Runs `work` on every file and prints what was written. Returns the exit
// code: 0 when all were written; when some failed, EExit::SomeFailed, or the
// first failure's code when none was written. Throws CCliError(Usage) before
// any work for outputs that would overwrite an input or each other.
int RunOnFiles(const SFileArguments& files, const std::string& label, const FileWork& work);

// The colour manager is one per process and takes one call at a time: file
// work holds this while it uses it.
std::mutex& ColourManagerTurn();

}  // namespace teskcolor
