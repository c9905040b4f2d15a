// The ink-coverage check of `separate`: its options and what runs after the
// separation is written.
#pragma once
#include <CLI/CLI.hpp>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace teskcolor {

struct SInkCheckOptions {
    std::string report;           // a picture of the coverage
    std::optional<double> maxInk;  // in %; the CMYK profile's own limit otherwise
    bool failOverLimit = false;

    bool Wanted() const { return !report.empty() || maxInk || failOverLimit; }
};

// --report OUT, --max-ink N, --fail-over-limit.
void AddInkCoverageOptions(CLI::App& command, SInkCheckOptions& options);

// When the options ask for it: measures the written separation (four
// plates, or one CMYK file), prints the figures, draws the report. Returns
// the exit code: 1 over the limit with --fail-over-limit, else 0.
int CheckInkCoverage(const SInkCheckOptions& options, const std::vector<std::string>& written, bool inverted,
                     const std::vector<uint8_t>& cmykProfile);

}  // namespace teskcolor
