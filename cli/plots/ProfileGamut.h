// What a profile covers on the xy chromaticity diagram, read through lcms2:
// the primaries' triangle of a matrix profile, or for a table-based profile
// the outline of its colours found by sampling its device space.
#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "cli/plots/PlotAxes.h"

namespace teskcolor {

struct SGamut {
    std::string label;
    SColour colour;
    SPoints outline;    // closed polygon in xy; empty when the profile spans no area (grey)
    SPoints primaries;  // red, green, blue of a matrix profile; empty otherwise
    std::optional<std::pair<double, double>> whitePoint;  // the media white point tag
};

// Throws CCliError(Corrupt) when lcms2 cannot open the profile.
SGamut GamutOfProfile(const std::vector<uint8_t>& bytes, const std::string& label, const SColour& colour);
// The sRGB space the diagram compares with unless told otherwise.
SGamut SRGBReferenceGamut();

}  // namespace teskcolor
