// teskcolor demo: the main job on built-in defaults, leaving its files in one folder.
#include <cstdio>
#include <filesystem>

#include "cli/Arguments.h"
#include "cli/Commands.h"
#include "cli/Errors.h"
#include "cli/ModuleHost.h"
#include "cli/Operations.h"
#include "cli/PlateFiles.h"
#include "cli/ProgressBar.h"
#include "cli/imageio/ImageFile.h"
#include "cli/imageio/OutputFile.h"
#include "colormgr/ColorManager.h"

namespace teskcolor {

int RunDemo(const Args& args) {
    CArguments arguments("demo", args, {{"--cmyk", true}});
    if (arguments.WantsHelp()) {
        std::fputs("usage: teskcolor demo [--cmyk PROFILE] [FOLDER]\n"
                   "Makes a colour test chart, separates it into four plates with the CMYK profile,\n"
                   "recombines the plates into RGB and soft-proofs the result for the display\n"
                   "through the CMYK profile. The files go into FOLDER (default ./teskcolor-demo):\n"
                   "chart.tif, chart-{cyan,magenta,yellow,black}.tif, chart-cmyk.tif,\n"
                   "recombined.tif and proof.tif.\n",
                   stdout);
        return 0;
    }
    if (arguments.Positional().size() > 1) throw CCliError(EExit::Usage, "usage: teskcolor demo [--cmyk PROFILE] [FOLDER]");
    const std::filesystem::path folder =
        std::filesystem::absolute(arguments.Positional().empty() ? "teskcolor-demo" : arguments.Positional()[0]);
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error) throw CCliError(EExit::WriteFailed, folder.string() + ": cannot create the folder: " + error.message());

    CColorManager& manager = ColourManager();
    if (auto cmyk = arguments.Value("--cmyk")) UseCMYKProfileForThisRun(manager, *cmyk);
    const SProfileSource cmykProfile = DefaultCMYKProfile(manager);
    const SProfileSource workingSpace = WorkingSpaceProfile(manager);
    std::printf("working space: %s\nCMYK profile:  %s\n", workingSpace.origin.c_str(), cmykProfile.origin.c_str());

    const auto path = [&](const char* name) { return (folder / name).string(); };
    // The demo's files replace those of an earlier run all together, or not at all.
    COutputTransaction files;
    SWriteOptions options;
    options.transaction = &files;
    CProgressBar progress("demo");
    SImage chart = MakeChart(1200, 800, false);
    chart.iccProfile = workingSpace.bytes;
    WriteImage(path("chart.tif"), chart, progress.Status(), options);
    progress.Finish();
    std::printf("1. chart            %s\n", path("chart.tif").c_str());

    auto plates = SeparateToPlates(manager, chart, true, progress.Status());
    WritePlates(path("chart.tif"), plates, files, progress.Status());
    progress.Finish();
    std::printf("2. plates           %s\n", PlatePaths(path("chart.tif"))[0].c_str());
    for (int i = 1; i < 4; ++i) std::printf("                    %s\n", PlatePaths(path("chart.tif"))[size_t(i)].c_str());
    WriteImage(path("chart-cmyk.tif"), SeparateToPacked(manager, chart, progress.Status()), progress.Status(),
               options);
    progress.Finish();
    std::printf("   packed CMYK      %s\n", path("chart-cmyk.tif").c_str());

    const SImage recombined = CombinePlates(manager, plates, progress.Status());
    WriteImage(path("recombined.tif"), recombined, progress.Status(), options);
    progress.Finish();
    std::printf("3. recombined RGB   %s\n", path("recombined.tif").c_str());

    const std::string proofProfile = cmykProfile.file.empty() ? std::string() : cmykProfile.file;
    const SImage proof = ProofImage(manager, recombined, proofProfile, int(manager.GetLCSIntent()), 1, progress.Status());
    WriteImage(path("proof.tif"), proof, progress.Status(), options);
    progress.Finish();
    std::printf("4. soft proof       %s\n", path("proof.tif").c_str());
    files.Commit();
    std::printf("done: the files are in %s\n", folder.c_str());
    return 0;
}

}  // namespace teskcolor
