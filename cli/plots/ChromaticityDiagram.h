// The CIE 1931 xy diagram: the spectral locus closed by the line of purples,
// and on it gamuts in the order given (the first is drawn underneath), each
// with its primaries and white point, and a legend.
#pragma once
#include <cairo.h>

#include <vector>

#include "cli/plots/PlotAxes.h"
#include "cli/plots/ProfileGamut.h"

namespace teskcolor {

// x from 0 to 0.8 and y from 0 to 0.9 in square units, from (left, top).
SAxes ChromaticityAxes(double left, double top, double width);

void DrawChromaticityDiagram(cairo_t* cr, const SAxes& axes, const std::vector<SGamut>& gamuts);

}  // namespace teskcolor
