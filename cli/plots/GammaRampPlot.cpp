#include "cli/plots/GammaRampPlot.h"

#include "cli/Errors.h"
#include "cli/plots/CurvePanel.h"
#include "cli/plots/PlotFile.h"

namespace teskcolor {

namespace {

SPoints ChannelPoints(const std::vector<uint16_t>& ramp, int channel) {
    const size_t entries = ramp.size() / 3;
    SPoints points;
    for (size_t i = 0; i < entries; ++i)
        points.emplace_back(double(i) / double(entries - 1), ramp[size_t(channel) * entries + i] / 65535.0);
    return points;
}

}  // namespace

SAxes GammaRampPlotAxes(int channel) { return UnitAxes(50 + channel * 360.0, 40, 300); }

void WriteGammaRampPlot(const std::string& path, const std::vector<uint16_t>& current,
                        const std::optional<std::vector<uint16_t>>& saved) {
    RequirePlotFileName(path);
    if (current.size() < 6 || current.size() % 3 != 0 || (saved && saved->size() != current.size()))
        throw CCliError(EExit::Failed, "the gamma ramps cannot be drawn: their sizes do not match");
    const char* names[3] = {"red", "green", "blue"};
    WritePlot(path, 1110, 420, [&](cairo_t* cr) {
        for (int channel = 0; channel < 3; ++channel) {
            std::vector<SCurve> curves;
            if (saved) curves.push_back({"saved", kReferenceColour, ChannelPoints(*saved, channel), true});
            curves.push_back({"current", kChannelColours[channel], ChannelPoints(current, channel)});
            DrawCurvePanel(cr, GammaRampPlotAxes(channel), std::string(names[channel]) + " ramp", curves, "");
        }
        if (!saved) {
            cairo_set_source_rgb(cr, 0.3, 0.3, 0.3);
            DrawText(cr, 50, 405, "no saved ramp: 'gamma load' has not been used", 11);
        }
    });
}

}  // namespace teskcolor
