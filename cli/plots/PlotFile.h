// A picture drawn with cairo and written, complete or not at all, as PNG, or
// as SVG or PDF when the file name ends so.
#pragma once
#include <cairo.h>

#include <CLI/CLI.hpp>

#include <functional>
#include <string>

namespace teskcolor {

// Throws CCliError(Usage) unless the name ends in .png, .svg or .pdf.
void RequirePlotFileName(const std::string& path);
// The same check for an option, so that a bad name stops the command before it works.
CLI::Validator PlotFileName();

// Draws a `width` x `height` picture (pixels for PNG, points for SVG and PDF)
// on a white ground and writes it to `path`; throws CCliError(WriteFailed).
void WritePlot(const std::string& path, int width, int height, const std::function<void(cairo_t*)>& draw);

}  // namespace teskcolor
