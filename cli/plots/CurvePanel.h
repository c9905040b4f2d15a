// Curves from 0..1 to 0..1 in one panel, with a legend below it.
#pragma once
#include <cairo.h>

#include <string>
#include <vector>

#include "cli/plots/PlotAxes.h"
#include "cli/plots/ProfileCurves.h"

namespace teskcolor {

// A square panel of `size` pixels from (left, top).
SAxes UnitAxes(double left, double top, double size);

// Draws the curves in order (the last on top); `empty` is written in the
// panel when there are none.
void DrawCurvePanel(cairo_t* cr, const SAxes& axes, const std::string& title, const std::vector<SCurve>& curves,
                    const std::string& empty);

}  // namespace teskcolor
