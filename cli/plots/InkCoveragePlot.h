// `separate --report`: the coverage histogram against the limit, and a heat
// map of where in the image the ink is heaviest.
#pragma once
#include <string>

#include "cli/plots/InkCoverage.h"
#include "cli/plots/PlotAxes.h"

namespace teskcolor {

// The histogram's panel: x in % coverage, y in % of the image's pixels.
SAxes InkHistogramAxes(const SInkCoverage& coverage);

// Throws CCliError.
void WriteInkCoveragePlot(const std::string& path, const SInkCoverage& coverage);

}  // namespace teskcolor
