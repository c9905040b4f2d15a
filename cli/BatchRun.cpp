#include "cli/BatchRun.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <filesystem>
#include <map>
#include <thread>

#include "cli/Errors.h"
#include "cli/ProgressBar.h"
#include "cli/imageio/ImageFile.h"
#include "cli/imageio/StandardStreams.h"

namespace teskcolor {

namespace fs = std::filesystem;

void AddFileArguments(CLI::App& command, SFileArguments& files) {
    command.add_option("--output-dir", files.outputDir, "write every INPUT into this folder, under its own name")
        ->type_name("FOLDER");
    command.add_option("--suffix", files.suffix, "with --output-dir: added to each name (photo.jpg -> photo_srgb.jpg)")
        ->type_name("TEXT");
    command.add_option("--jobs", files.jobs, "with --output-dir: files worked on at once (default: one a core)")
        ->check(CLI::PositiveNumber)
        ->type_name("N");
    command.add_option("FILES", files.files, "INPUT OUTPUT, or INPUT... with --output-dir")->required();
}

std::mutex& ColourManagerTurn() {
    static std::mutex turn;
    return turn;
}

namespace {

struct SFileJob {
    std::string input, output;
    EExit failure = EExit::Ok;
    std::string message;
};

const char* ExtensionOf(EImageType type) {
    switch (type) {
        case EImageType::Tiff: return ".tif";
        case EImageType::Png: return ".png";
        case EImageType::Jpeg: return ".jpg";
    }
    return "";
}

// Every output named before any work, so that a clash stops the run while
// nothing has been written.
std::vector<SFileJob> PlanOutputs(const SFileArguments& files) {
    std::vector<SFileJob> jobs;
    std::map<fs::path, std::string> claimed;  // output -> the input it comes from
    std::error_code error;
    for (const std::string& input : files.files) {
        if (IsStandardStream(input)) throw CCliError(EExit::Usage, "'-' cannot be one of several inputs");
        const fs::path source(input);
        const std::optional<EImageType> chosen = ChosenOutputFormat();
        const std::string extension = chosen ? ExtensionOf(*chosen) : source.extension().string();
        const fs::path output = fs::path(files.outputDir) / (source.stem().string() + files.suffix + extension);
        if (!ImageTypeForPath(output.string()))
            throw CCliError(EExit::Usage, input + ": not named as a TIFF, PNG or JPEG; give --format for its output");
        const fs::path key = fs::weakly_canonical(output, error);
        if (auto [previous, added] = claimed.emplace(key, input); !added)
            throw CCliError(EExit::Usage, previous->second + " and " + input + " would both be written to " +
                                              output.string() + " (use --suffix or separate runs)");
        jobs.push_back({input, output.string(), EExit::Ok, {}});
    }
    for (const SFileJob& job : jobs)
        for (const std::string& input : files.files)
            if (fs::exists(job.output, error) && fs::equivalent(job.output, input, error))
                throw CCliError(EExit::Usage, job.output + " is an input: it would be overwritten (use --suffix)");
    return jobs;
}

void RunJob(SFileJob& job, const FileWork& work) {
    try {
        work(job.input, job.output, nullptr);
        return;
    } catch (const CCliError& failure) {
        job.failure = failure.Code();
        job.message = failure.what();
    } catch (const std::bad_alloc&) {
        job.failure = EExit::Failed;
        job.message = "out of memory";
    } catch (const std::exception& failure) {
        job.failure = EExit::Failed;
        job.message = failure.what();
    }
    // Most messages name their file already.
    if (job.message.compare(0, job.input.size(), job.input) != 0) job.message = job.input + ": " + job.message;
}

int RunSeveral(const SFileArguments& files, const std::string& label, const FileWork& work) {
    std::vector<SFileJob> jobs = PlanOutputs(files);
    std::error_code error;
    fs::create_directories(files.outputDir, error);
    if (error) throw CCliError(EExit::WriteFailed, files.outputDir + ": cannot create the folder: " + error.message());

    CProgressBar progress(label);
    progress.Status()->SetProgressRange(static_cast<long long>(jobs.size()));
    std::mutex reporting;
    std::atomic<size_t> next{0};
    size_t done = 0;
    const auto worker = [&] {
        for (size_t i = next++; i < jobs.size(); i = next++) {
            RunJob(jobs[i], work);
            std::lock_guard lock(reporting);
            progress.Finish();
            if (jobs[i].failure == EExit::Ok)
                std::printf("wrote %s\n", jobs[i].output.c_str());
            else
                std::fprintf(stderr, "teskcolor: %s\n", jobs[i].message.c_str());
            std::fflush(stdout);
            progress.Status()->SetProgress(static_cast<long long>(++done));
        }
    };
    const unsigned cores = std::max(1u, std::thread::hardware_concurrency());
    const size_t workers = std::min<size_t>(jobs.size(), files.jobs ? files.jobs : cores);
    std::vector<std::thread> pool;
    for (size_t i = 1; i < workers; ++i) pool.emplace_back(worker);
    worker();
    for (std::thread& thread : pool) thread.join();
    progress.Finish();

    const auto failed = std::count_if(jobs.begin(), jobs.end(), [](const SFileJob& job) { return job.failure != EExit::Ok; });
    if (failed == 0) return 0;
    std::fprintf(stderr, "teskcolor: %zu of %zu files failed\n", size_t(failed), jobs.size());
    if (size_t(failed) < jobs.size()) return int(EExit::SomeFailed);
    return int(jobs.front().failure);
}

}  // namespace

int RunOnFiles(const SFileArguments& files, const std::string& label, const FileWork& work) {
    if (!files.outputDir.empty()) return RunSeveral(files, label, work);
    if (!files.suffix.empty()) throw CCliError(EExit::Usage, "--suffix names files in --output-dir; give that too");
    if (files.files.size() != 2)
        throw CCliError(EExit::Usage, "give INPUT OUTPUT, or any number of inputs with --output-dir FOLDER");
    if (IsStandardStream(files.files[1])) {
        // Refused before the work rather than after it.
        StandardOutputFormat();
        ClaimStandardOutput();
    }
    CProgressBar progress(label);
    work(files.files[0], files.files[1], progress.Status());
    progress.Finish();
    std::printf("wrote %s\n", files.files[1].c_str());
    return 0;
}

}  // namespace teskcolor
