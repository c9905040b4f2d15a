#include "cli/plots/ChromaticityDiagram.h"

#include <cstdio>
#include <filesystem>
#include <string>

#include "cli/plots/SpectralLocus.h"

namespace teskcolor {

SAxes ChromaticityAxes(double left, double top, double width) {
    return {left, top, width, width * 0.9 / 0.8, 0.0, 0.8, 0.0, 0.9};
}

void DrawChromaticityDiagram(cairo_t* cr, const SAxes& axes, const std::vector<SGamut>& gamuts) {
    DrawFrame(cr, axes, 0.1, 0.1, "CIE 1931 xy chromaticity");
    SPoints locus;
    for (const SSpectralPoint& point : kSpectralLocus) locus.emplace_back(point.x, point.y);
    DrawPolyline(cr, axes, locus, {0, 0, 0}, 1.5, false, true);
    cairo_set_source_rgb(cr, 0.4, 0.4, 0.4);
    for (const SSpectralPoint& point : kSpectralLocus)
        if (point.nanometres >= 460 && point.nanometres <= 620 && point.nanometres % 20 == 0)
            DrawText(cr, axes.X(point.x) + (point.x < 0.2 ? -30 : 6), axes.Y(point.y), std::to_string(point.nanometres), 9);

    for (const SGamut& gamut : gamuts) {
        DrawPolyline(cr, axes, gamut.outline, gamut.colour, 2, false, true);
        for (const auto& [x, y] : gamut.primaries) DrawDot(cr, axes, x, y, gamut.colour, 5);
    }
    for (const SGamut& gamut : gamuts)
        if (gamut.whitePoint) DrawDot(cr, axes, gamut.whitePoint->first, gamut.whitePoint->second, kWhitePointColour, 4);

    // The legend sits in the empty upper right of the diagram.
    double y = axes.Y(0.85);
    char text[160];
    for (const SGamut& gamut : gamuts) {
        SetColour(cr, gamut.colour);
        cairo_rectangle(cr, axes.X(0.38), y - 8, 14, 8);
        cairo_fill(cr);
        cairo_set_source_rgb(cr, 0, 0, 0);
        std::snprintf(text, sizeof text, "%s%s", std::filesystem::path(gamut.label).filename().c_str(),
                      gamut.outline.empty() ? " (no area)" : gamut.primaries.empty() ? " (sampled)" : "");
        DrawText(cr, axes.X(0.38) + 20, y, text, 11);
        y += 16;
        if (gamut.whitePoint) {
            std::snprintf(text, sizeof text, "white x %.4f y %.4f", gamut.whitePoint->first, gamut.whitePoint->second);
            DrawText(cr, axes.X(0.38) + 20, y, text, 10);
            y += 16;
        }
    }
}

}  // namespace teskcolor
