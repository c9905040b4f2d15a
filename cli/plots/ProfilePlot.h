// Pictures of profiles: `info --plot` (gamut beside a reference, and tone
// curves) and the gamut comparison `demo` leaves in its folder.
#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "cli/plots/PlotAxes.h"

namespace teskcolor {

struct SProfileBytes {
    std::vector<uint8_t> bytes;
    std::string label;
};

// Where the two panels of a profile picture lie, in its pixels.
SAxes ProfilePlotChromaticityAxes();
SAxes ProfilePlotCurveAxes();

// The profile's gamut over the reference's (sRGB when `reference` is
// empty) and its tone curves. Throws CCliError.
void WriteProfilePlot(const std::string& path, const SProfileBytes& profile, const std::optional<SProfileBytes>& reference);
// Several profiles' gamuts on one diagram, the first drawn underneath.
void WriteGamutPlot(const std::string& path, const std::vector<SProfileBytes>& profiles);

}  // namespace teskcolor
