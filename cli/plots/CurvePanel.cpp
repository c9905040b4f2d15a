#include "cli/plots/CurvePanel.h"

namespace teskcolor {

SAxes UnitAxes(double left, double top, double size) { return {left, top, size, size, 0.0, 1.0, 0.0, 1.0}; }

void DrawCurvePanel(cairo_t* cr, const SAxes& axes, const std::string& title, const std::vector<SCurve>& curves,
                    const std::string& empty) {
    DrawFrame(cr, axes, 0.25, 0.25, title);
    if (curves.empty()) {
        cairo_set_source_rgb(cr, 0.3, 0.3, 0.3);
        DrawText(cr, axes.left + 10, axes.top + axes.height / 2, empty, 12);
        return;
    }
    for (const SCurve& curve : curves) DrawPolyline(cr, axes, curve.points, curve.colour, 2, curve.dashed);
    double x = axes.left, y = axes.top + axes.height + 34;
    for (const SCurve& curve : curves) {
        DrawPolyline(cr, {x, y - 8, 20, 8, 0, 1, 0, 1}, {{0, 0.5}, {1, 0.5}}, curve.colour, 2, curve.dashed);
        cairo_set_source_rgb(cr, 0, 0, 0);
        DrawText(cr, x + 24, y, curve.label, 11);
        x += 110;
        if (x + 100 > axes.left + axes.width) x = axes.left, y += 16;
    }
}

}  // namespace teskcolor
