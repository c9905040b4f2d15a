// Total area coverage of a separation (C+M+Y+K in %, 0..400): how much of
// the image lies at each coverage, the maximum and where it occurs, and a
// coarse map of the highest coverage over the image.
#pragma once
#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace teskcolor {

struct SInkCoverage {
    static constexpr int kBinPercent = 10;
    static constexpr int kBins = 400 / kBinPercent;  // 400% itself counts in the last bin

    int width, height;                   // of the image
    double limit = 400;                  // in %
    std::array<uint64_t, kBins> bins{};  // pixels a bin
    uint64_t pixels = 0, overLimit = 0;
    double maximum = 0;
    int maximumX = 0, maximumY = 0;
    int mapColumns = 0, mapRows = 0;
    std::vector<double> heatMap;  // the highest coverage in each cell, row by row

    SInkCoverage(int width, int height, double limit);
    void Add(int x, int y, double total);
};

// Reads the separation back from its files: the four plates (cyan, magenta,
// yellow, black; `inverted` when 0 stands for full ink) or one CMYK file.
// Throws CCliError as reading an image does.
SInkCoverage MeasureInkCoverage(const std::vector<std::string>& files, bool inverted, double limit);

// The numbers the picture shows, as lines of text.
void PrintInkCoverage(const SInkCoverage& coverage, const std::string& limitSource);

}  // namespace teskcolor
