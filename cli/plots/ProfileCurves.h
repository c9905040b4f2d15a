// A profile's tone curves, and its video-card gamma where it has one, as
// points in 0..1 read through lcms2.
#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "cli/plots/PlotAxes.h"

namespace teskcolor {

struct SCurve {
    std::string label;
    SColour colour;
    SPoints points;
    bool dashed = false;
};

// The red, green, blue (or grey) TRC curves, then the vcgt's; none for a
// table-based profile. Throws CCliError(Corrupt) when lcms2 cannot open it.
std::vector<SCurve> ToneCurvesOfProfile(const std::vector<uint8_t>& bytes, const std::string& label);

}  // namespace teskcolor
