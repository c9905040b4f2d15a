// `gamma show --plot`: the display's ramp beside the one saved before the
// first `gamma load`, a panel a channel.
#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "cli/plots/PlotAxes.h"

namespace teskcolor {

// Panel of channel 0 (red), 1 (green) or 2 (blue).
SAxes GammaRampPlotAxes(int channel);

// Ramps hold red, green and blue entries one channel after the other, of
// equal length. Throws CCliError.
void WriteGammaRampPlot(const std::string& path, const std::vector<uint16_t>& current,
                        const std::optional<std::vector<uint16_t>>& saved);

}  // namespace teskcolor
