#include "cli/plots/ContactSheet.h"

#include <algorithm>
#include <cstring>
#include <memory>

#include "cli/Errors.h"
#include "cli/plots/PlotAxes.h"
#include "cli/plots/PlotFile.h"

namespace teskcolor {

namespace {

constexpr int kThumbWidth = 320, kMargin = 16, kLabelHeight = 24;

struct SSurfaceDeleter {
    void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
};
using SurfacePtr = std::unique_ptr<cairo_surface_t, SSurfaceDeleter>;

// The sample's top 8 bits.
int Sample(const BYTE* row, int index, bool sixteenBit) {
    if (!sixteenBit) return row[index];
    uint16_t value;
    std::memcpy(&value, row + 2 * index, sizeof value);
    return value >> 8;
}

// Alpha is left out: the sheet shows what the pixels hold.
SurfacePtr SurfaceOf(const SImage& image, const std::string& label) {
    const CRowIterator& pixels = image.pixels;
    const EVPixelFormat format = pixels.GetPixelFormat();
    if (image.cmyk) throw CCliError(EExit::Unsupported, label + ": a CMYK image cannot be shown as it is");
    const bool grey = CVPixelFormat::IsGreyscale(format), sixteenBit = CVPixelFormat::Is16bit(format);
    const int channels = CVPixelFormat::GetChannelCount(format);
    SurfacePtr surface(cairo_image_surface_create(CAIRO_FORMAT_RGB24, pixels.GetWidth(), pixels.GetHeight()));
    if (cairo_surface_status(surface.get()) != CAIRO_STATUS_SUCCESS)
        throw CCliError(EExit::Failed, label + ": not enough memory to draw it");
    cairo_surface_flush(surface.get());
    unsigned char* data = cairo_image_surface_get_data(surface.get());
    const int stride = cairo_image_surface_get_stride(surface.get());
    for (int y = 0; y < pixels.GetHeight(); ++y) {
        const BYTE* row = pixels.GetRow(y);
        auto* out = reinterpret_cast<uint32_t*>(data + size_t(y) * size_t(stride));
        for (int x = 0; x < pixels.GetWidth(); ++x) {
            const int first = x * channels;
            const uint32_t b = uint32_t(Sample(row, first, sixteenBit));
            const uint32_t g = grey ? b : uint32_t(Sample(row, first + 1, sixteenBit));
            const uint32_t r = grey ? b : uint32_t(Sample(row, first + 2, sixteenBit));
            out[x] = (r << 16) | (g << 8) | b;
        }
    }
    cairo_surface_mark_dirty(surface.get());
    return surface;
}

double ScaleOf(const SImage& image) { return double(kThumbWidth) / std::max(image.pixels.GetWidth(), 1); }

}  // namespace

void WriteContactSheet(const std::string& path, const std::vector<SContactTile>& tiles, int columns) {
    int thumbHeight = 1;
    for (const SContactTile& tile : tiles)
        thumbHeight = std::max(thumbHeight, int(tile.image->pixels.GetHeight() * ScaleOf(*tile.image) + 0.5));
    const int rows = (int(tiles.size()) + columns - 1) / columns;
    const int cellWidth = kThumbWidth + kMargin, cellHeight = thumbHeight + kLabelHeight + kMargin;
    std::vector<SurfacePtr> images;
    for (const SContactTile& tile : tiles) images.push_back(SurfaceOf(*tile.image, tile.label));
    WritePlot(path, kMargin + columns * cellWidth, kMargin + rows * cellHeight, [&](cairo_t* cr) {
        for (size_t i = 0; i < tiles.size(); ++i) {
            const double left = kMargin + double(i % size_t(columns)) * cellWidth;
            const double top = kMargin + double(i / size_t(columns)) * cellHeight;
            const SurfacePtr& image = images[i];
            const double scale = ScaleOf(*tiles[i].image);
            cairo_save(cr);
            cairo_translate(cr, left, top);
            cairo_scale(cr, scale, scale);
            cairo_set_source_surface(cr, image.get(), 0, 0);
            cairo_pattern_set_filter(cairo_get_source(cr), CAIRO_FILTER_GOOD);
            cairo_paint(cr);
            cairo_restore(cr);
            SetColour(cr, {0.6, 0.6, 0.6});
            cairo_set_line_width(cr, 1);
            cairo_rectangle(cr, left - 0.5, top - 0.5, kThumbWidth + 1,
                            tiles[i].image->pixels.GetHeight() * scale + 1);
            cairo_stroke(cr);
            SetColour(cr, {0, 0, 0});
            DrawText(cr, left, top + thumbHeight + kLabelHeight - 7, tiles[i].label, 14);
        }
    });
}

}  // namespace teskcolor
