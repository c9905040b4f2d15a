#include "cli/plots/InkCoveragePlot.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "cli/plots/PlotFile.h"

namespace teskcolor {

namespace {

double Share(const SInkCoverage& coverage, uint64_t count) {
    return coverage.pixels ? 100.0 * double(count) / double(coverage.pixels) : 0.0;
}

// White for no ink through yellow to red at the limit; dark red above it.
SColour HeatColour(double total, double limit) {
    if (total > limit + 1e-6) return {0.45, 0.0, 0.0};
    const double t = std::clamp(total / std::max(limit, 1.0), 0.0, 1.0);
    return t < 0.5 ? SColour{1.0, 1.0, 1.0 - 2 * t} : SColour{1.0, 1.0 - 2 * (t - 0.5), 0.0};
}

void DrawHistogram(cairo_t* cr, const SInkCoverage& coverage) {
    const SAxes axes = InkHistogramAxes(coverage);
    DrawFrame(cr, axes, 50, axes.yMax / 5, "total ink coverage (% of pixels by C+M+Y+K %)");
    for (int bin = 0; bin < SInkCoverage::kBins; ++bin) {
        const double from = bin * SInkCoverage::kBinPercent, to = from + SInkCoverage::kBinPercent;
        const double share = Share(coverage, coverage.bins[size_t(bin)]);
        if (share <= 0) continue;
        SetColour(cr, to > coverage.limit + 1e-6 ? kLimitColour : kProfileColour);
        cairo_rectangle(cr, axes.X(from) + 1, axes.Y(share), axes.X(to) - axes.X(from) - 2, axes.Y(0) - axes.Y(share));
        cairo_fill(cr);
    }
    DrawPolyline(cr, axes, {{coverage.limit, 0}, {coverage.limit, axes.yMax}}, kLimitColour, 1.5, true);
    char text[160];
    std::snprintf(text, sizeof text, "maximum %.1f%% at x %d, y %d; limit %.0f%%; %.2f%% of pixels over it",
                  coverage.maximum, coverage.maximumX, coverage.maximumY, coverage.limit,
                  Share(coverage, coverage.overLimit));
    cairo_set_source_rgb(cr, 0, 0, 0);
    DrawText(cr, axes.left, axes.top + axes.height + 36, text, 12);
}

void DrawHeatMap(cairo_t* cr, const SInkCoverage& coverage) {
    const double left = 620, top = 40, side = 360;
    const double cell = side / std::max(coverage.mapColumns, coverage.mapRows);
    for (int row = 0; row < coverage.mapRows; ++row)
        for (int column = 0; column < coverage.mapColumns; ++column) {
            SetColour(cr, HeatColour(coverage.heatMap[size_t(row * coverage.mapColumns + column)], coverage.limit));
            cairo_rectangle(cr, left + column * cell, top + row * cell, cell, cell);
            cairo_fill(cr);
        }
    cairo_set_source_rgb(cr, 0.3, 0.3, 0.3);
    cairo_set_line_width(cr, 1);
    cairo_rectangle(cr, left, top, coverage.mapColumns * cell, coverage.mapRows * cell);
    cairo_stroke(cr);
    cairo_set_source_rgb(cr, 0, 0, 0);
    DrawText(cr, left, top - 10, "heaviest ink by area", 14);
    // The maximum's place, ringed.
    const double x = left + (coverage.maximumX + 0.5) / coverage.width * coverage.mapColumns * cell;
    const double y = top + (coverage.maximumY + 0.5) / coverage.height * coverage.mapRows * cell;
    cairo_set_source_rgb(cr, 0, 0.3, 1);
    cairo_set_line_width(cr, 2);
    cairo_new_sub_path(cr);
    cairo_arc(cr, x, y, std::max(cell, 6.0), 0, 2 * M_PI);
    cairo_stroke(cr);
}

}  // namespace

SAxes InkHistogramAxes(const SInkCoverage& coverage) {
    double largest = 0;
    for (uint64_t count : coverage.bins) largest = std::max(largest, Share(coverage, count));
    const double yMax = std::max(10.0, std::ceil(largest / 10.0) * 10.0);
    return {60, 40, 500, 360, 0, 400, 0, yMax};
}

void WriteInkCoveragePlot(const std::string& path, const SInkCoverage& coverage) {
    WritePlot(path, 1000, 460, [&](cairo_t* cr) {
        DrawHistogram(cr, coverage);
        DrawHeatMap(cr, coverage);
    });
}

}  // namespace teskcolor
