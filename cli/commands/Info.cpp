// teskcolor info: what the module makes of a profile.
#include <tesk/path.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "cli/Commands.h"
#include "cli/Errors.h"
#include "cli/GamutWarning.h"
#include "cli/ModuleHost.h"
#include "cli/ProfileFileValues.h"
#include "cli/ProfileHeader.h"
#include "cli/imageio/ImageFile.h"
#include "cli/imageio/OutputFile.h"
#include "cli/plots/PlotFile.h"
#include "cli/plots/ProfilePlot.h"
#include "colormgr/ColorManager.h"
#include "icc/ICCReadColorProfile.h"

namespace teskcolor {

namespace {

using Json = nlohmann::ordered_json;

Json Xyz(const SMyXYZNumber& xyz) { return Json::array({xyz.X, xyz.Y, xyz.Z}); }

Json HeaderJson(const SProfileHeader& h) {
    char date[48];
    std::snprintf(date, sizeof date, "%04u-%02u-%02uT%02u:%02u:%02u", h.dateTime[0], h.dateTime[1], h.dateTime[2],
                  h.dateTime[3], h.dateTime[4], h.dateTime[5]);
    static const char* kIntents[] = {"perceptual", "relative colorimetric", "saturation", "absolute colorimetric"};
    return Json{{"size", h.size},
                {"cmm", SignatureText(h.cmmType)},
                {"version", VersionText(h.version)},
                {"class", SignatureText(h.deviceClass)},
                {"colour_space", SignatureText(h.dataColorSpace)},
                {"connection_space", SignatureText(h.connectionSpace)},
                {"created", date},
                {"signature", SignatureText(h.signature)},
                {"platform", SignatureText(h.platform)},
                {"flags", h.flags},
                {"manufacturer", SignatureText(h.manufacturer)},
                {"model", SignatureText(h.model)},
                {"attributes", h.attributes},
                {"rendering_intent", h.renderingIntent < 4 ? kIntents[h.renderingIntent] : "unknown"},
                {"illuminant", Json::array({h.illuminant[0], h.illuminant[1], h.illuminant[2]})},
                {"creator", SignatureText(h.creator)}};
}

Json CurveJson(CICCReadColorProfile& reader, unsigned long tag) {
    TRCCURVE curve{};
    if (!reader.GetTRC(tag, curve)) {
        // A short curv tag comes back refused with its entries filled.
        if (curve.m_nSignature == kCurveTypeSignature) delete[] curve.m_curve.m_pEntries;
        return Json{{"readable", false}};
    }
    Json out{{"readable", true}, {"type", SignatureText(curve.m_nSignature)}};
    if (curve.m_nSignature == kCurveTypeSignature) {
        const uint32_t count = curve.m_curve.m_nCount;
        out["entries"] = count;
        if (count == 0) out["shape"] = "identity";
        if (count == 1) {
            out["shape"] = "gamma";
            out["gamma"] = curve.m_curve.m_fGamma;
        }
        if (count >= 2) {
            out["shape"] = "sampled";
            out["first"] = curve.m_curve.m_pEntries[0];
            out["middle"] = curve.m_curve.m_pEntries[count / 2];
            out["last"] = curve.m_curve.m_pEntries[count - 1];
            delete[] curve.m_curve.m_pEntries;
        }
    } else if (curve.m_nSignature == kParametricCurveTypeSignature) {
        const SICCParametricCurveType& p = curve.m_para;
        out["shape"] = "parametric";
        out["function_type"] = p.m_nFunctionType;
        out["parameters"] = Json::array({p.m_dG, p.m_dA, p.m_dB, p.m_dC, p.m_dD, p.m_dE});
    }
    return out;
}

Json Describe(const SProfileSource& profile, CColorManager& manager) {
    Json out{{"source", profile.origin}, {"bytes", profile.bytes.size()}};
    auto header = ParseProfileHeader(profile.bytes.data(), profile.bytes.size());
    if (header && header->signature == 0x61637370) out["header"] = HeaderJson(*header);  // 'acsp': a header to show
    // A device link's "connection space" is the device space it gives.
    const bool link = header && header->deviceClass == 0x6C696E6B;  // 'link'
    if (link)
        out["device_link"] = Json{{"input", SignatureText(header->dataColorSpace)},
                                  {"output", SignatureText(header->connectionSpace)}};

    // The module may touch the block while it checks it; it gets a copy.
    std::vector<uint8_t> block = profile.bytes;
    CICCReadColorProfile reader;
    bool valid = true;
    const bool opened = !block.empty() && reader.CreateFromRawData(block.data(), static_cast<unsigned long>(block.size()), valid);
    if (!opened) {
        // Valid for what it is, though no image transform can use it.
        if (const std::string kind = NonImageProfileKind(profile.bytes); !kind.empty()) {
            out["verdict"] = "valid";
            out["use"] = kind;
            out["file_values"] = ProfileFileValues(profile.bytes);
            return out;
        }
        const std::string reason = ProfileRefusalReason(profile.bytes);
        out["verdict"] = valid ? "refused" : "invalid";
        out["reason"] = !reason.empty() ? reason
                        : !valid        ? "the colour manager's check found it damaged (see --verbose)"
                                        : "the colour manager's reader could not decode it (see --verbose)";
        return out;
    }
    out["verdict"] = "valid";

    CString text;
    if (reader.GetDescription(text)) out["description"] = text.Utf8();
    if (reader.GetCopyright(text)) out["copyright"] = text.Utf8();

    Json curves = Json::object();
    for (unsigned long tag : {0x72545243ul, 0x67545243ul, 0x62545243ul, 0x6B545243ul})
        if (reader.DoesProfileTagExist(tag)) curves[SignatureText(uint32_t(tag))] = CurveJson(reader, tag);
    Json analysis = Json::object();
    analysis["curves"] = curves;

    Json colorimetry = Json::object();
    SMyXYZNumber xyz{};
    for (unsigned long tag : {0x7258595Aul, 0x6758595Aul, 0x6258595Aul})
        if (reader.GetXYZColorant(xyz, tag)) colorimetry[SignatureText(uint32_t(tag))] = Xyz(xyz);
    if (reader.GetMediaWhitePoint(xyz)) colorimetry["white_point"] = Xyz(xyz);
    if (reader.GetMediaBlackPoint(xyz)) colorimetry["black_point"] = Xyz(xyz);
    double adaptation[9];
    if (reader.GetChromaticAdaptationTag(adaptation)) colorimetry["chromatic_adaptation"] = adaptation;
    analysis["colorimetry"] = colorimetry;

    Json classification = Json::object();
    SColorSpecRGB colorSpec{};
    if (header && header->dataColorSpace == 0x52474220 && !link) {
        void* handle = reader.GetProfile();
        classification["logical_colour_space"] = reader.GetLCSCSType(handle) == 0x73524742 ? "sRGB" : "calibrated RGB";
        if (reader.BuildColorSpecRGB(colorSpec)) {
            classification["srgb_curve"] = colorSpec.m_bsRGB != 0;
            classification["gamma"] = colorSpec.m_dGamma;
        }
    }
    CString path(profile.moduleName);
    CICCReadColorProfile byName;
    classification["working_space"] = byName.IsProfileWorkingSpace(path);
    classification["cmyk_printer"] = byName.IsProfileCMYK(path);
    classification["same_as_working_space"] = manager.CompareProfileVersusWorkingSpace(reader);
    classification["same_as_cmyk_profile"] = manager.CompareProfileVersusCMYKProfile(reader);
    analysis["classification"] = classification;
    out["module_analysis"] = analysis;
    out["file_values"] = ProfileFileValues(profile.bytes);
    return out;
}

void PrintText(const Json& j, const std::string& indent = "") {
    for (auto it = j.begin(); it != j.end(); ++it) {
        if (it->is_object()) {
            if (it->empty()) continue;
            std::printf("%s%s:\n", indent.c_str(), it.key().c_str());
            PrintText(*it, indent + "  ");
            continue;
        }
        std::string value = it->is_string() ? it->get<std::string>() : it->dump();
        std::printf("%s%-24s %s\n", indent.c_str(), (it.key() + ":").c_str(), value.c_str());
    }
}

}  // namespace

namespace {

struct SInfoOptions {
    bool json = false, gamut = false;
    std::string profile, plot, compare, cmyk;
};

// How much of an image the CMYK profile cannot print.
int ReportGamut(const SInfoOptions& options, CColorManager& manager) {
    const SImage image = ReadImage(options.profile);
    const SProfileSource& printer =
        options.cmyk.empty() ? DefaultCMYKProfile(manager) : ResolveProfile(options.cmyk, &manager);
    const std::vector<uint8_t> marks = OutOfGamutPixels(manager, image, printer.bytes, INTENT_PERCEPTUAL);
    size_t outside = 0;
    for (uint8_t mark : marks) outside += mark != 0;
    const double percent = marks.empty() ? 0.0 : 100.0 * double(outside) / double(marks.size());
    if (options.json) {
        const Json report{{"image", options.profile}, {"profile", printer.origin}, {"pixels", marks.size()},
                          {"out_of_gamut", outside}, {"percent", percent}};
        std::printf("%s\n", report.dump(2).c_str());
    } else {
        std::printf("%.2f %% of the pixels (%zu of %zu) are out of the gamut of %s\n", percent, outside,
                    marks.size(), printer.origin.c_str());
    }
    return 0;
}

int Run(const SInfoOptions& options) {
    CColorManager& manager = ColourManager();
    if (options.gamut) return ReportGamut(options, manager);
    const SProfileSource& profile = ResolveProfile(options.profile, &manager);
    const Json description = Describe(profile, manager);
    if (options.json)
        std::printf("%s\n", description.dump(2).c_str());
    else
        PrintText(description);
    if (!options.plot.empty()) {
        const SProfileSource* other = options.compare.empty() ? nullptr : &ResolveProfile(options.compare, &manager);
        WriteProfilePlot(options.plot, {profile.bytes, profile.origin},
                         other ? std::optional<SProfileBytes>({other->bytes, other->origin}) : std::nullopt);
    }
    return description["verdict"] == "valid" ? 0 : int(EExit::Corrupt);
}

}  // namespace

SCommand AddInfoCommand(CLI::App& root) {
    auto options = std::make_shared<SInfoOptions>();
    CLI::App* command = AddSubcommand(
        root, "info", "check and analyse a profile or an image's embedded profile",
        "Checks a profile (a file, an installed profile's name, or the profile embedded in a\n"
        "TIFF, PNG or JPEG image; '-' reads either from standard input) the way the colour\n"
        "manager does and describes it: the raw check's verdict (and why a file is refused),\n"
        "header fields, description and copyright;\n"
        "the module's analysis (its readings of the tone curves, colorants and white point, and\n"
        "how it classifies the profile) beside the values the file holds, as Little CMS reads them.\n"
        "With --gamut, instead: how many of an image's pixels the CMYK profile cannot print.\n"
        "reads: PROFILE or IMAGE. writes: nothing (text, or JSON with --json, on standard output);\n"
        "with --plot, a picture of the gamut on the xy diagram beside sRGB (or --compare) and the\n"
        "tone curves.",
        "teskcolor info --json AdobeRGB1998.icc");
    command->add_flag("--json", options->json, "one JSON object on standard output, for scripts");
    CLI::Option* plot = command->add_option("--plot", options->plot, "draw the gamut and tone curves (.png, .svg or .pdf)")
                                ->check(PlotFileName());
    command->add_option("--compare", options->compare, "the profile the gamut is drawn beside (default sRGB)")->needs(plot);
    CLI::Option* gamut = command->add_flag(
        "--gamut", options->gamut, "instead: the share of the image's pixels the CMYK profile cannot print");
    AddCmykOption(*command, options->cmyk)->needs(gamut);
    command->add_option("PROFILE", options->profile, "a profile file, an installed name, an image, or - for standard input")->required();
    return {command, [options] { return Run(*options); }};
}

}  // namespace teskcolor
