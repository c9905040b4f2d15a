// teskcolor make-profile: an RGB display profile through the module's writer.
#include <tesk/path.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <list>
#include <vector>

#include "cli/Commands.h"
#include "cli/Errors.h"
#include "cli/ModuleHost.h"
#include "cli/ProfileDescription.h"
#include "cli/imageio/OutputFile.h"
#include "icc/ICCWriteColorProfile.h"

namespace teskcolor {

namespace {

struct SPrimaries {
    const char* name;
    SMyXYZNumber red, green, blue;  // adapted to the D50 connection space
};

// Colorants of the two common RGB spaces, Bradford-adapted from D65 to D50.
constexpr SPrimaries kPrimaries[] = {
    {"srgb", {0.4360, 0.2225, 0.0139}, {0.3851, 0.7169, 0.0971}, {0.1431, 0.0606, 0.7141}},
    {"adobe", {0.6097, 0.3111, 0.0195}, {0.2053, 0.6257, 0.0609}, {0.1492, 0.0632, 0.7446}},
};

constexpr size_t kSrgbCurveEntries = 1024;

std::vector<uint8_t> ReadProfileFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::vector<uint8_t>(std::istreambuf_iterator<char>(in), {});
}

struct SMakeProfileOptions {
    std::string primaries = "srgb";
    std::optional<double> gamma;
    std::optional<std::string> description;
    std::string copyright = "No copyright, use freely";
    std::string output;
};

int Run(const SMakeProfileOptions& options) {
    const std::string output = options.output;
    const std::string primariesName = options.primaries;
    const SPrimaries* primaries = nullptr;
    for (const SPrimaries& p : kPrimaries)
        if (primariesName == p.name) primaries = &p;
    const std::optional<double> gamma = options.gamma;

    char defaultDescription[96];
    if (gamma)
        std::snprintf(defaultDescription, sizeof defaultDescription, "%s primaries, gamma %.2f",
                      primariesName == "srgb" ? "sRGB" : "Adobe RGB", *gamma);
    else
        std::snprintf(defaultDescription, sizeof defaultDescription, "%s primaries, sRGB curve",
                      primariesName == "srgb" ? "sRGB" : "Adobe RGB");
    std::list<std::string> description{options.description.value_or(defaultDescription)};
    std::list<std::string> copyright{options.copyright};

    ColourManager();  // the platform's colour system, loaded as the host does
    COutputFile file(output);
    file.CloseStream();
    CICCWriteColorProfile writer;
    if (!writer.OpenICCProfileForWrite(tesk::path::ToWindows(std::filesystem::absolute(file.TempPath()).string()).c_str()))
        throw CCliError(EExit::WriteFailed, output + ": the profile writer cannot create it");

    bool ok = writer.SetCopyrightTag(0x63707274, copyright) && writer.SetStringTag(0x64657363, description);
    SMyXYZNumber red = primaries->red, green = primaries->green, blue = primaries->blue;
    SMyXYZNumber white{0.9642, 1.0, 0.8249};
    SMyXYZNumber black{0.0, 0.0, 0.0};
    ok = ok && writer.SetXYZColorant(red, 0x7258595A) && writer.SetXYZColorant(green, 0x6758595A) &&
         writer.SetXYZColorant(blue, 0x6258595A) && writer.SetMediaWhitePoint(white) && writer.SetMediaBlackPoint(black);
    // The sRGB curve of IEC 61966-2-1 as a sampled curve: the writer's own
    // parametric layout is one that other readers do not take.
    std::vector<uint16_t> srgbCurve(kSrgbCurveEntries);
    for (size_t i = 0; i < srgbCurve.size(); ++i) {
        const double v = double(i) / double(srgbCurve.size() - 1);
        const double linear = v <= 0.04045 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4);
        srgbCurve[i] = uint16_t(std::lround(linear * 65535.0));
    }
    for (unsigned long tag : {0x72545243ul, 0x67545243ul, 0x62545243ul}) {
        SICCCurveType curve = gamma ? SICCCurveType{1, nullptr, float(*gamma)}
                                    : SICCCurveType{uint32_t(srgbCurve.size()), srgbCurve.data(), 0.0f};
        ok = ok && writer.SetTRCCurveType(tag, curve);
    }
    writer.SetHeaderClass(0x6D6E7472);
    writer.SetHeaderDataColorSpace(0x52474220);
    writer.SetHeaderConnectionColorSpace(0x58595A20);
    ok = ok && writer.SetDefaultProfileHeader();
    const CM_PROFILE result = writer.FinalizeProfileWrite();
    if (!ok || result != CM_PROFILE_VALID)
        throw CCliError(EExit::WriteFailed, output + ": the profile writer " +
                                                (ok ? "produced a profile the colour system rejects" : "failed"));
    // The writer stores 7-bit text alone; the texts are put where every reader finds them exactly.
    const std::vector<uint8_t> described =
        WithTexts(ReadProfileFile(file.TempPath()), description.front(), copyright.front());
    std::ofstream rewritten(file.TempPath(), std::ios::binary | std::ios::trunc);
    if (!rewritten.write(reinterpret_cast<const char*>(described.data()), std::streamsize(described.size())).flush())
        throw CCliError(EExit::WriteFailed, output + ": cannot write the profile");
    rewritten.close();
    file.Commit();
    std::printf("wrote %s (%s)\n", output.c_str(), description.front().c_str());
    return 0;
}

}  // namespace

SCommand AddMakeProfileCommand(CLI::App& root) {
    auto options = std::make_shared<SMakeProfileOptions>();
    CLI::App* command = AddSubcommand(
        root, "make-profile", "write an RGB display profile",
        "Writes a matrix/TRC RGB display profile with the module's profile writer.\n"
        "reads: nothing. writes: OUTPUT.icc.",
        "teskcolor make-profile --primaries adobe --gamma 2.2 --description \"My display\" my.icc");
    command->add_option("--primaries", options->primaries, "colorants: srgb (ITU-R BT.709, the default) or adobe")
        ->check(CLI::IsMember({"srgb", "adobe"}));
    command->add_option("--gamma", options->gamma, "one gamma for all three curves (default: the sRGB curve)")
        ->check(CLI::Range(0.1, 10.0));
    command->add_option("--description", options->description,
                        "the profile's description (default from the choices); text beyond ASCII,\n"
                        "here or in --copyright, makes a version-4 profile, whose texts lcms2 reads exactly")
        ->type_name("TEXT");
    command->add_option("--copyright", options->copyright, "the copyright text")->type_name("TEXT");
    command->add_option("OUTPUT", options->output, "the .icc file to write")->required();
    return {command, [options] { return Run(*options); }};
}

}  // namespace teskcolor
