#include "cli/plots/PlotFile.h"

#include <cairo-pdf.h>
#include <cairo-svg.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <memory>

#include "cli/Errors.h"
#include "cli/imageio/OutputFile.h"

namespace teskcolor {

namespace {

enum class EPlotType { Png, Svg, Pdf, None };

EPlotType PlotTypeForPath(const std::string& path) {
    std::string lower = path;
    std::transform(lower.begin(), lower.end(), lower.begin(), [](unsigned char c) { return char(std::tolower(c)); });
    const auto endsWith = [&](const char* suffix) {
        const std::string s(suffix);
        return lower.size() > s.size() && lower.compare(lower.size() - s.size(), s.size(), s) == 0;
    };
    if (endsWith(".png")) return EPlotType::Png;
    if (endsWith(".svg")) return EPlotType::Svg;
    if (endsWith(".pdf")) return EPlotType::Pdf;
    return EPlotType::None;
}

cairo_status_t WriteToStream(void* closure, const unsigned char* data, unsigned int length) {
    return std::fwrite(data, 1, length, static_cast<std::FILE*>(closure)) == length ? CAIRO_STATUS_SUCCESS
                                                                                    : CAIRO_STATUS_WRITE_ERROR;
}

struct SSurfaceDeleter {
    void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
};
using SurfacePtr = std::unique_ptr<cairo_surface_t, SSurfaceDeleter>;

}  // namespace

void RequirePlotFileName(const std::string& path) {
    if (PlotTypeForPath(path) == EPlotType::None)
        throw CCliError(EExit::Usage, path + ": a picture is written as .png, .svg or .pdf");
}

CLI::Validator PlotFileName() {
    return CLI::Validator(
        [](std::string& path) {
            return PlotTypeForPath(path) == EPlotType::None ? "a picture is written as .png, .svg or .pdf" : std::string();
        },
        "PICTURE");
}

void WritePlot(const std::string& path, int width, int height, const std::function<void(cairo_t*)>& draw) {
    RequirePlotFileName(path);
    const EPlotType type = PlotTypeForPath(path);
    COutputFile output(path);
    SurfacePtr surface;
    // Vector surfaces write as they go; a PNG is drawn in memory first.
    if (type == EPlotType::Svg)
        surface.reset(cairo_svg_surface_create_for_stream(WriteToStream, output.Stream(), width, height));
    else if (type == EPlotType::Pdf)
        surface.reset(cairo_pdf_surface_create_for_stream(WriteToStream, output.Stream(), width, height));
    else
        surface.reset(cairo_image_surface_create(CAIRO_FORMAT_RGB24, width, height));
    cairo_t* cr = cairo_create(surface.get());
    cairo_set_source_rgb(cr, 1, 1, 1);
    cairo_paint(cr);
    draw(cr);
    const cairo_status_t drawn = cairo_status(cr);
    cairo_destroy(cr);
    cairo_surface_flush(surface.get());
    cairo_status_t status = drawn != CAIRO_STATUS_SUCCESS ? drawn : cairo_surface_status(surface.get());
    if (status == CAIRO_STATUS_SUCCESS && type == EPlotType::Png)
        status = cairo_surface_write_to_png_stream(surface.get(), WriteToStream, output.Stream());
    cairo_surface_finish(surface.get());
    if (status == CAIRO_STATUS_SUCCESS) status = cairo_surface_status(surface.get());
    if (status != CAIRO_STATUS_SUCCESS)
        throw CCliError(EExit::WriteFailed, path + ": cannot draw the picture: " + cairo_status_to_string(status));
    output.Commit();
}

}  // namespace teskcolor
