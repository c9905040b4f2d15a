#include <algorithm>
#include <cmath>
#include <cstring>

#include "cli/Errors.h"
#include "cli/Operations.h"

namespace teskcolor {

namespace {

struct SRgb {
    double r, g, b;
};

// The 24 patches of the classic colour checker, as sRGB values.
constexpr unsigned char kPatches[24][3] = {
    {115, 82, 68},   {194, 150, 130}, {98, 122, 157},  {87, 108, 67},   {133, 128, 177}, {103, 189, 170},
    {214, 126, 44},  {80, 91, 166},   {193, 90, 99},   {94, 60, 108},   {157, 188, 64},  {224, 163, 46},
    {56, 61, 150},   {70, 148, 73},   {175, 54, 60},   {231, 199, 31},  {187, 86, 149},  {8, 133, 161},
    {243, 243, 242}, {200, 200, 200}, {160, 160, 160}, {122, 122, 121}, {85, 85, 85},    {52, 52, 52},
};

SRgb Hue(double h) {
    const double x = h * 6.0;
    auto channel = [&](double offset) { return std::clamp(std::fabs(std::fmod(x + offset, 6.0) - 3.0) - 1.0, 0.0, 1.0); };
    return {channel(0.0), channel(4.0), channel(2.0)};
}

SRgb ChartColour(int x, int y, int width, int height) {
    const double u = width > 1 ? double(x) / (width - 1) : 0.0;
    const double v = double(y) / height;
    // Bands from the top: grey ramp, six single-colour ramps, patches, gradient.
    if (v < 0.12) return {u, u, u};
    if (v < 0.48) {
        const int ramp = std::min(5, int((v - 0.12) / 0.06));
        static constexpr SRgb kEnds[6] = {{1, 0, 0}, {0, 1, 0}, {0, 0, 1}, {0, 1, 1}, {1, 0, 1}, {1, 1, 0}};
        return {kEnds[ramp].r * u, kEnds[ramp].g * u, kEnds[ramp].b * u};
    }
    if (v < 0.72) {
        const int row = v < 0.60 ? 0 : 1;
        const int column = std::min(11, int(u * 12));
        const double inRow = (v - 0.48 - row * 0.12) / 0.12;
        const double inColumn = u * 12 - column;
        // A thin white border between patches keeps them apart.
        if (inRow < 0.06 || inRow > 0.94 || inColumn < 0.04 || inColumn > 0.96) return {1, 1, 1};
        const unsigned char* p = kPatches[row * 12 + column];
        return {p[0] / 255.0, p[1] / 255.0, p[2] / 255.0};
    }
    // Hue across, from black through the full colour to white down.
    const double t = (v - 0.72) / 0.28;
    const SRgb hue = Hue(u);
    if (t < 0.5) return {hue.r * t * 2, hue.g * t * 2, hue.b * t * 2};
    const double w = (t - 0.5) * 2;
    return {hue.r + (1 - hue.r) * w, hue.g + (1 - hue.g) * w, hue.b + (1 - hue.b) * w};
}

}  // namespace

SImage MakeChart(int width, int height, bool sixteenBit) {
    if (width < 24 || height < 24 || width > 30000 || height > 30000)
        throw CCliError(EExit::Usage, "chart: width and height are 24 to 30000 pixels");
    SImage chart;
    if (!chart.pixels.Create(width, height, sixteenBit ? VPF_RGB_16 : VPF_RGB_8))
        throw CCliError(EExit::Failed, "chart: not enough memory");
    for (int y = 0; y < height; ++y) {
        BYTE* row = chart.pixels.GetRow(y);
        for (int x = 0; x < width; ++x) {
            const SRgb c = ChartColour(x, y, width, height);
            const double bgr[3] = {c.b, c.g, c.r};  // the imaging library's order
            for (int i = 0; i < 3; ++i) {
                if (sixteenBit) {
                    const uint16_t value = uint16_t(std::lround(std::clamp(bgr[i], 0.0, 1.0) * 65535.0));
                    std::memcpy(row + (size_t(x) * 3 + i) * 2, &value, 2);
                } else {
                    row[size_t(x) * 3 + i] = BYTE(std::lround(std::clamp(bgr[i], 0.0, 1.0) * 255.0));
                }
            }
        }
    }
    return chart;
}

}  // namespace teskcolor
