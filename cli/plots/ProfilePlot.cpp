#include "cli/plots/ProfilePlot.h"

#include "cli/plots/ChromaticityDiagram.h"
#include "cli/plots/CurvePanel.h"
#include "cli/plots/PlotFile.h"
#include "cli/plots/ProfileCurves.h"
#include "cli/plots/ProfileGamut.h"

namespace teskcolor {

namespace {

constexpr int kPlotHeight = 640;

}  // namespace

SAxes ProfilePlotChromaticityAxes() { return ChromaticityAxes(50, 40, 480); }
SAxes ProfilePlotCurveAxes() { return UnitAxes(620, 40, 420); }

void WriteProfilePlot(const std::string& path, const SProfileBytes& profile, const std::optional<SProfileBytes>& reference) {
    RequirePlotFileName(path);
    std::vector<SGamut> gamuts;
    gamuts.push_back(reference ? GamutOfProfile(reference->bytes, reference->label, kReferenceColour)
                               : SRGBReferenceGamut());
    gamuts.push_back(GamutOfProfile(profile.bytes, profile.label, kProfileColour));
    const std::vector<SCurve> curves = ToneCurvesOfProfile(profile.bytes, profile.label);
    WritePlot(path, 1100, kPlotHeight, [&](cairo_t* cr) {
        DrawChromaticityDiagram(cr, ProfilePlotChromaticityAxes(), gamuts);
        DrawCurvePanel(cr, ProfilePlotCurveAxes(), "tone curves (device value to linear)", curves,
                       "no per-channel tone curves: a table-based profile");
    });
}

void WriteGamutPlot(const std::string& path, const std::vector<SProfileBytes>& profiles) {
    RequirePlotFileName(path);
    std::vector<SGamut> gamuts;
    const SColour colours[] = {kProfileColour, kChannelColours[0], kChannelColours[1], kReferenceColour};
    for (size_t i = 0; i < profiles.size(); ++i)
        gamuts.push_back(GamutOfProfile(profiles[i].bytes, profiles[i].label, colours[i % 4]));
    WritePlot(path, 580, kPlotHeight, [&](cairo_t* cr) { DrawChromaticityDiagram(cr, ChromaticityAxes(50, 40, 480), gamuts); });
}

}  // namespace teskcolor
