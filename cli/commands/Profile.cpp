// teskcolor profile extract|assign|strip: an image's embedded profile taken
// out, replaced without touching the pixels, or removed.
#include <cstdio>
#include <memory>
#include <string>

#include "cli/Commands.h"
#include "cli/Errors.h"
#include "cli/ModuleHost.h"
#include "cli/imageio/ImageFile.h"
#include "cli/imageio/OutputFile.h"

namespace teskcolor {

namespace {

constexpr uint32_t kRGBSpace = 0x52474220, kCMYKSpace = 0x434D594B, kGraySpace = 0x47524159;

struct SProfileOptions {
    std::string image, profile, output;
};

uint32_t SpaceOfPixels(const SImage& image) {
    if (image.cmyk) return kCMYKSpace;
    return CVPixelFormat::IsGreyscale(image.pixels.GetPixelFormat()) ? kGraySpace : kRGBSpace;
}

int Extract(const SProfileOptions& options) {
    const SImage image = ReadImage(options.image);
    if (image.iccProfile.empty()) throw CCliError(EExit::NotFound, options.image + " carries no profile");
    COutputFile output(options.output);
    if (std::fwrite(image.iccProfile.data(), 1, image.iccProfile.size(), output.Stream()) != image.iccProfile.size())
        throw CCliError(EExit::WriteFailed, "could not write " + options.output);
    output.Commit();
    std::printf("wrote %s (%zu bytes)\n", options.output.c_str(), image.iccProfile.size());
    return 0;
}

int Assign(const SProfileOptions& options) {
    SImage image = ReadImage(options.image);
    const SProfileSource& profile = ResolveProfile(options.profile, &ColourManager());
    RequireColourSpace(profile, SpaceOfPixels(image), "the profile of " + DescribeLayout(image) + " pixels");
    image.iccProfile = profile.bytes;
    WriteImage(options.output, image);
    std::printf("wrote %s\n", options.output.c_str());
    return 0;
}

int Strip(const SProfileOptions& options) {
    SImage image = ReadImage(options.image);
    image.iccProfile.clear();
    WriteImage(options.output, image);
    std::printf("wrote %s\n", options.output.c_str());
    return 0;
}

}  // namespace

SCommand AddProfileCommand(CLI::App& root) {
    auto options = std::make_shared<SProfileOptions>();
    auto chosen = std::make_shared<int (*)(const SProfileOptions&)>(nullptr);
    CLI::App* command = AddSubcommand(
        root, "profile", "take an image's embedded profile out, assign another, or strip it",
        "extract IMAGE OUT.icc  writes the embedded profile as it is stored.\n"
        "assign IMAGE PROFILE OUTPUT  writes the pixels unchanged, tagged with PROFILE.\n"
        "strip IMAGE OUTPUT  writes the pixels unchanged, without a profile.\n"
        "OUTPUT's extension chooses its format; a JPEG is encoded again.\n"
        "reads: IMAGE (and PROFILE). writes: OUTPUT.",
        "teskcolor profile assign scan.tif AdobeRGB1998.icc scan-adobe.tif");
    command->require_subcommand(1);
    CLI::App* extract = command->add_subcommand("extract", "write an image's embedded profile to a file");
    extract->add_option("IMAGE", options->image, "the image")->required();
    extract->add_option("OUTPUT", options->output, "the .icc file to write")->required();
    extract->callback([chosen] { *chosen = Extract; });
    CLI::App* assign = command->add_subcommand("assign", "tag an image with another profile, pixels unchanged");
    assign->add_option("IMAGE", options->image, "the image")->required();
    assign->add_option("PROFILE", options->profile, "a profile file, installed name, or image")->required();
    assign->add_option("OUTPUT", options->output, "the image to write")->required();
    AddEncodingOptions(*assign);
    assign->callback([chosen] { *chosen = Assign; });
    CLI::App* strip = command->add_subcommand("strip", "write an image without its embedded profile");
    strip->add_option("IMAGE", options->image, "the image")->required();
    strip->add_option("OUTPUT", options->output, "the image to write")->required();
    AddEncodingOptions(*strip);
    strip->callback([chosen] { *chosen = Strip; });
    return {command, [options, chosen] { return (*chosen)(*options); }};
}

}  // namespace teskcolor
