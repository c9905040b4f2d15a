// teskcolor: colour management from the command line, through TeskColorMgr.
#include <cstdio>
#include <exception>
#include <string>

#include "cli/Commands.h"
#include "cli/Errors.h"
#include "cli/ModuleHost.h"

namespace teskcolor {

const std::vector<SCommand>& AllCommands() {
    static const std::vector<SCommand> commands = {
        {"info", "check and analyse a profile or an image's embedded profile", RunInfo},
        {"convert", "convert an image into the working space or another RGB profile", RunConvert},
        {"separate", "split an RGB image into cyan, magenta, yellow and black plates", RunSeparate},
        {"combine", "recombine four plates, or a CMYK TIFF, into an RGB image", RunCombine},
        {"proof", "render an image for the display, optionally soft-proofed", RunProof},
        {"profiles", "list, install and uninstall profiles", RunProfiles},
        {"settings", "show or change the colour settings", RunSettings},
        {"make-profile", "write an RGB display profile", RunMakeProfile},
        {"chart", "make a colour test chart image", RunChart},
        {"demo", "chart, separation, recombination and proof in one folder", RunDemo},
        {"gamma", "load a profile's calibration into the display's gamma ramp, restore it", RunGamma},
        {"view", "show an image colour-managed in an X11 window", RunView},
        {"print", "print an image through the printer's profile", RunPrint},
        {"setup", "the colour-matching dialog; its choices become the settings", RunSetup},
    };
    return commands;
}

namespace {

void PrintUsage(std::FILE* out) {
    std::fprintf(out, "usage: teskcolor COMMAND [OPTIONS] ...\n\ncommands:\n");
    for (const SCommand& command : AllCommands()) std::fprintf(out, "  %-13s %s\n", command.name, command.summary);
    std::fprintf(out,
                 "\n'teskcolor COMMAND --help' describes a command.\n"
                 "exit codes: 0 done, 1 the colour system failed, 2 bad arguments, 3 missing file,\n"
                 "4 corrupt or truncated file, 5 unsupported image layout, 6 profile of the wrong class,\n"
                 "7 output could not be written.\n"
                 "Commands that read images refuse one of more than 2^30 pixels unless\n"
                 "--max-pixels N allows more.\n");
}

}  // namespace
}  // namespace teskcolor

int main(int argc, char** argv) {
    using namespace teskcolor;
    if (argc < 2) {
        PrintUsage(stderr);
        return int(EExit::Usage);
    }
    const std::string name = argv[1];
    if (name == "--help" || name == "-h" || name == "help") {
        PrintUsage(stdout);
        return 0;
    }
    try {
        UseDisplayFor(name);
        for (const SCommand& command : AllCommands())
            if (name == command.name) return command.run(Args(argv + 2, argv + argc));
        throw CCliError(EExit::Usage, "unknown command '" + name + "' (see teskcolor --help)");
    } catch (const CCliError& error) {
        std::fflush(stdout);
        std::fprintf(stderr, "teskcolor: %s\n", error.what());
        return int(error.Code());
    } catch (const std::bad_alloc&) {
        std::fprintf(stderr, "teskcolor: out of memory\n");
        return int(EExit::Failed);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "teskcolor: %s\n", error.what());
        return int(EExit::Failed);
    }
}
