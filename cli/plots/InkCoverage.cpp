#include "cli/plots/InkCoverage.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>

#include "cli/Errors.h"
#include "cli/imageio/ImageBands.h"

namespace teskcolor {

namespace {

constexpr int kMapCells = 64;  // along the longer side
constexpr int kBandRows = 256;

// Ink of channel `channel` of pixel `x` in a row, as a fraction of full ink.
double Ink(const CRowIterator& band, int row, int x, int channel, int channels, bool inverted) {
    const BYTE* pixels = band.GetRow(row);
    const bool wide = band.GetPixelFormat() == VPF_GREY_16 || band.GetPixelFormat() == VPF_RGBA_16;
    const size_t index = size_t(x) * size_t(channels) + size_t(channel);
    const double value = wide ? reinterpret_cast<const uint16_t*>(pixels)[index] / 65535.0 : pixels[index] / 255.0;
    return inverted ? 1.0 - value : value;
}

void RequireLayout(const std::string& file, const SImageHeader& header, bool plate) {
    const bool fits = plate ? !header.cmyk && (header.format == VPF_GREY_8 || header.format == VPF_GREY_16)
                            : header.cmyk && (header.format == VPF_RGBA_8 || header.format == VPF_RGBA_16);
    if (!fits) throw CCliError(EExit::Unsupported, file + ": not a " + (plate ? "plate" : "CMYK image") + " to measure ink on");
}

}  // namespace

SInkCoverage::SInkCoverage(int imageWidth, int imageHeight, double limitPercent)
    : width(std::max(imageWidth, 1)), height(std::max(imageHeight, 1)), limit(limitPercent) {
    const double scale = std::min(1.0, double(kMapCells) / double(std::max(width, height)));
    mapColumns = std::clamp(int(std::lround(width * scale)), 1, width);
    mapRows = std::clamp(int(std::lround(height * scale)), 1, height);
    heatMap.assign(size_t(mapColumns) * size_t(mapRows), 0.0);
}

void SInkCoverage::Add(int x, int y, double total) {
    bins[size_t(std::clamp(int(total / kBinPercent), 0, kBins - 1))]++;
    ++pixels;
    // Rounding noise of the plates' depth must not make 300.0001% fail a 300% limit.
    if (total > limit + 1e-6) ++overLimit;
    if (total > maximum || pixels == 1) maximum = total, maximumX = x, maximumY = y;
    double& cell = heatMap[size_t(y * mapRows / height) * size_t(mapColumns) + size_t(x * mapColumns / width)];
    cell = std::max(cell, total);
}

SInkCoverage MeasureInkCoverage(const std::vector<std::string>& files, bool inverted, double limit) {
    if (files.size() != 4 && files.size() != 1) throw CCliError(EExit::Failed, "ink coverage: no separation to measure");
    const bool plates = files.size() == 4;
    std::vector<std::unique_ptr<CImageBandReader>> readers;
    for (const std::string& file : files) {
        readers.push_back(std::make_unique<CImageBandReader>(file));
        RequireLayout(file, readers.back()->Header(), plates);
    }
    const SImageHeader& header = readers[0]->Header();
    for (const auto& reader : readers)
        if (reader->Header().width != header.width || reader->Header().height != header.height)
            throw CCliError(EExit::Corrupt, "ink coverage: the plates differ in size");
    SInkCoverage coverage(header.width, header.height, limit);
    std::vector<SImage> bands(readers.size());
    while (readers[0]->RowsLeft() > 0) {
        const int first = header.height - readers[0]->RowsLeft();
        for (size_t i = 0; i < readers.size(); ++i) bands[i] = readers[i]->NextBand(kBandRows);
        for (int row = 0; row < bands[0].pixels.GetHeight(); ++row)
            for (int x = 0; x < header.width; ++x) {
                double total = 0;
                for (int ink = 0; ink < 4; ++ink)
                    total += plates ? Ink(bands[size_t(ink)].pixels, row, x, 0, 1, inverted)
                                    : Ink(bands[0].pixels, row, x, ink, 4, false);
                coverage.Add(x, first + row, total * 100.0);
            }
    }
    return coverage;
}

void PrintInkCoverage(const SInkCoverage& coverage, const std::string& limitSource) {
    const double share = coverage.pixels ? 100.0 * double(coverage.overLimit) / double(coverage.pixels) : 0.0;
    std::printf("ink coverage: maximum %.1f%% at x %d, y %d; limit %.0f%% (%s)\n", coverage.maximum,
                coverage.maximumX, coverage.maximumY, coverage.limit, limitSource.c_str());
    std::printf("over the limit: %llu of %llu pixels (%.2f%%)\n", static_cast<unsigned long long>(coverage.overLimit),
                static_cast<unsigned long long>(coverage.pixels), share);
    for (int bin = 0; bin < SInkCoverage::kBins; ++bin) {
        const uint64_t count = coverage.bins[size_t(bin)];
        if (count == 0) continue;
        std::printf("  %3d-%3d%%  %12llu pixels  %6.2f%%\n", bin * SInkCoverage::kBinPercent,
                    (bin + 1) * SInkCoverage::kBinPercent, static_cast<unsigned long long>(count),
                    100.0 * double(count) / double(coverage.pixels));
    }
}

}  // namespace teskcolor
