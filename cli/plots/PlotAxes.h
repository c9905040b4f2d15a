// A panel of a picture with its data ranges: where a value lands in pixels,
// the frame with its ticks and labels, and lines drawn through data points.
#pragma once
#include <cairo.h>

#include <string>
#include <utility>
#include <vector>

namespace teskcolor {

struct SColour {
    double r, g, b;
};

// The colours a reader learns once: what is measured, what it is compared with.
inline constexpr SColour kProfileColour{0.0, 0.35, 0.85};
inline constexpr SColour kReferenceColour{0.55, 0.55, 0.55};
inline constexpr SColour kWhitePointColour{0.9, 0.45, 0.0};
inline constexpr SColour kLimitColour{0.85, 0.0, 0.0};
inline constexpr SColour kChannelColours[4] = {{0.85, 0.1, 0.1}, {0.1, 0.6, 0.1}, {0.1, 0.2, 0.9}, {0.1, 0.1, 0.1}};

struct SAxes {
    double left, top, width, height;  // the plotting area in pixels
    double xMin, xMax, yMin, yMax;

    double X(double x) const { return left + (x - xMin) / (xMax - xMin) * width; }
    double Y(double y) const { return top + height - (y - yMin) / (yMax - yMin) * height; }
};

using SPoints = std::vector<std::pair<double, double>>;

void SetColour(cairo_t* cr, const SColour& colour);
// Frame, grid lines every `xStep` / `yStep` with their values, a title above.
void DrawFrame(cairo_t* cr, const SAxes& axes, double xStep, double yStep, const std::string& title);
void DrawText(cairo_t* cr, double x, double y, const std::string& text, double size = 12);
void DrawPolyline(cairo_t* cr, const SAxes& axes, const SPoints& points, const SColour& colour, double width,
                  bool dashed = false, bool closed = false);
void DrawDot(cairo_t* cr, const SAxes& axes, double x, double y, const SColour& colour, double radius);

}  // namespace teskcolor
