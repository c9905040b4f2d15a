#include "cli/plots/InkCoverageCheck.h"

#include <lcms2.h>

#include <cstdio>
#include <memory>

#include "cli/Errors.h"
#include "cli/plots/InkCoverage.h"
#include "cli/plots/InkCoveragePlot.h"
#include "cli/plots/PlotFile.h"

namespace teskcolor {

namespace {

// What the profile itself puts down at most, as lcms2 estimates it.
double ProfileInkLimit(const std::vector<uint8_t>& bytes) {
    std::unique_ptr<void, decltype(&cmsCloseProfile)> profile(
        cmsOpenProfileFromMem(bytes.data(), cmsUInt32Number(bytes.size())), cmsCloseProfile);
    return profile ? cmsDetectTAC(profile.get()) : 0.0;
}

}  // namespace

void AddInkCoverageOptions(CLI::App& command, SInkCheckOptions& options) {
    command.add_option("--report", options.report, "a picture of the ink coverage (.png, .svg or .pdf)")
        ->check(PlotFileName());
    command.add_option("--max-ink", options.maxInk, "total ink limit in % (default: the CMYK profile's own)")
        ->check(CLI::Range(1.0, 400.0));
    command.add_flag("--fail-over-limit", options.failOverLimit, "exit with 1 when any pixel exceeds the ink limit");
}

int CheckInkCoverage(const SInkCheckOptions& options, const std::vector<std::string>& written, bool inverted,
                     const std::vector<uint8_t>& cmykProfile) {
    if (!options.Wanted()) return 0;
    std::string source = "--max-ink";
    double limit = options.maxInk.value_or(0.0);
    if (!options.maxInk) {
        limit = ProfileInkLimit(cmykProfile);
        source = "the CMYK profile's";
        if (limit <= 0)
            throw CCliError(EExit::WrongProfile, "ink coverage: the CMYK profile's ink limit cannot be found; give --max-ink");
    }
    const SInkCoverage coverage = MeasureInkCoverage(written, inverted, limit);
    PrintInkCoverage(coverage, source);
    if (!options.report.empty()) {
        WriteInkCoveragePlot(options.report, coverage);
        std::printf("wrote %s\n", options.report.c_str());
    }
    if (options.failOverLimit && coverage.overLimit > 0) {
        std::fprintf(stderr, "teskcolor: ink coverage %.1f%% exceeds the limit of %.0f%%\n", coverage.maximum, limit);
        return int(EExit::Failed);
    }
    return 0;
}

}  // namespace teskcolor
