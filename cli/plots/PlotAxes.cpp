#include "cli/plots/PlotAxes.h"

#include <cmath>
#include <cstdio>

namespace teskcolor {

void SetColour(cairo_t* cr, const SColour& colour) { cairo_set_source_rgb(cr, colour.r, colour.g, colour.b); }

void DrawText(cairo_t* cr, double x, double y, const std::string& text, double size) {
    cairo_select_font_face(cr, "sans-serif", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_NORMAL);
    cairo_set_font_size(cr, size);
    cairo_move_to(cr, x, y);
    cairo_show_text(cr, text.c_str());
}

void DrawFrame(cairo_t* cr, const SAxes& axes, double xStep, double yStep, const std::string& title) {
    char label[32];
    cairo_set_line_width(cr, 1);
    // Ticks are counted, not accumulated, so that no rounding drops the last.
    const int xTicks = int(std::lround((axes.xMax - axes.xMin) / xStep));
    for (int i = 0; i <= xTicks; ++i) {
        const double value = axes.xMin + i * xStep, px = std::round(axes.X(value)) + 0.5;
        cairo_set_source_rgb(cr, 0.9, 0.9, 0.9);
        cairo_move_to(cr, px, axes.top);
        cairo_line_to(cr, px, axes.top + axes.height);
        cairo_stroke(cr);
        std::snprintf(label, sizeof label, "%g", value);
        cairo_set_source_rgb(cr, 0.3, 0.3, 0.3);
        DrawText(cr, px - 8, axes.top + axes.height + 14, label, 10);
    }
    const int yTicks = int(std::lround((axes.yMax - axes.yMin) / yStep));
    for (int i = 0; i <= yTicks; ++i) {
        const double value = axes.yMin + i * yStep, py = std::round(axes.Y(value)) + 0.5;
        cairo_set_source_rgb(cr, 0.9, 0.9, 0.9);
        cairo_move_to(cr, axes.left, py);
        cairo_line_to(cr, axes.left + axes.width, py);
        cairo_stroke(cr);
        std::snprintf(label, sizeof label, "%g", value);
        cairo_set_source_rgb(cr, 0.3, 0.3, 0.3);
        DrawText(cr, axes.left - 30, py + 4, label, 10);
    }
    cairo_set_source_rgb(cr, 0.3, 0.3, 0.3);
    cairo_rectangle(cr, axes.left + 0.5, axes.top + 0.5, axes.width, axes.height);
    cairo_stroke(cr);
    cairo_set_source_rgb(cr, 0, 0, 0);
    DrawText(cr, axes.left, axes.top - 10, title, 14);
}

void DrawPolyline(cairo_t* cr, const SAxes& axes, const SPoints& points, const SColour& colour, double width,
                  bool dashed, bool closed) {
    if (points.empty()) return;
    cairo_save(cr);
    cairo_rectangle(cr, axes.left, axes.top, axes.width, axes.height);
    cairo_clip(cr);
    SetColour(cr, colour);
    cairo_set_line_width(cr, width);
    cairo_set_line_join(cr, CAIRO_LINE_JOIN_ROUND);
    if (dashed) {
        const double pattern[] = {6, 4};
        cairo_set_dash(cr, pattern, 2, 0);
    }
    cairo_move_to(cr, axes.X(points[0].first), axes.Y(points[0].second));
    for (size_t i = 1; i < points.size(); ++i) cairo_line_to(cr, axes.X(points[i].first), axes.Y(points[i].second));
    if (closed) cairo_close_path(cr);
    cairo_stroke(cr);
    cairo_restore(cr);
}

void DrawDot(cairo_t* cr, const SAxes& axes, double x, double y, const SColour& colour, double radius) {
    SetColour(cr, colour);
    cairo_new_sub_path(cr);
    cairo_arc(cr, axes.X(x), axes.Y(y), radius, 0, 2 * M_PI);
    cairo_fill(cr);
}

}  // namespace teskcolor
