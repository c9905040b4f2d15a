// teskcolor profiles: the lists the settings dialogs show; install, uninstall.
#include <tesk/path.h>

#include <cstdio>
#include <filesystem>

#include "cli/Commands.h"
#include "cli/Errors.h"
#include "cli/ModuleHost.h"
#include "colormgr/ColorManager.h"

namespace teskcolor {

namespace {

int List(CColorManager& manager, bool cmyk) {
    std::printf("# colour directory: %s\n", ColourDirectory(manager).c_str());
    // The call that hands out the last entry already answers false.
    bool more = cmyk ? (manager.GetSetupCMYKProfileList(), manager.GetFirstCMYKProfile())
                     : (manager.GetSetupProfileList(true), manager.GetFirstProfile());
    while (more) {
        std::string name;
        more = cmyk ? manager.GetCMYKNextProfile(name) : manager.GetNextProfile(name);
        if (!name.empty()) std::printf("%s\n", name.c_str());
    }
    // The program's own profiles are found beside it, outside the colour directory's lists.
    std::error_code error;
    const auto own = std::filesystem::read_symlink("/proc/self/exe", error).parent_path() / "ColorProfile";
    if (cmyk && std::filesystem::is_directory(own, error)) {
        std::printf("# the program's own, in %s:\n", own.c_str());
        for (const auto& entry : std::filesystem::directory_iterator(own, error))
            if (entry.is_regular_file()) std::printf("%s\n", entry.path().stem().c_str());
    }
    return 0;
}

struct SProfilesOptions {
    bool cmyk = false;
    std::vector<std::string> words;
};

int Run(const SProfilesOptions& options) {
    const auto& words = options.words;
    CColorManager& manager = ColourManager();
    if (words.empty() || words[0] == "list") return List(manager, options.cmyk);
    if (words.size() != 2) throw CCliError(EExit::Usage, "usage: teskcolor profiles install FILE | uninstall NAME");
    if (words[0] == "install") {
        std::error_code error;
        if (!std::filesystem::is_regular_file(words[1], error)) throw CCliError(EExit::NotFound, words[1] + ": no such file");
        const std::wstring path = tesk::path::ToWindows(std::filesystem::absolute(words[1]).string());
        if (!manager.InstallColorProfileW(path.c_str()))
            throw CCliError(EExit::Failed, words[1] + ": the colour system refused to install it");
        std::printf("installed %s\n", std::filesystem::path(words[1]).filename().c_str());
        return 0;
    }
    if (words[0] == "uninstall") {
        const std::wstring name = ResolveProfile(words[1], &manager).moduleName;
        if (!manager.UninstallColorProfileW(name.c_str()))
            throw CCliError(EExit::NotFound, words[1] + ": not installed, or it could not be removed");
        std::printf("uninstalled %s\n", words[1].c_str());
        return 0;
    }
    throw CCliError(EExit::Usage, "profiles: list, install or uninstall (see teskcolor help profiles)");
}

}  // namespace

SCommand AddProfilesCommand(CLI::App& root) {
    auto options = std::make_shared<SProfilesOptions>();
    CLI::App* command = AddSubcommand(
        root, "profiles", "list, install and uninstall profiles",
        "  teskcolor profiles [list] [--cmyk]\n"
        "  teskcolor profiles install FILE\n"
        "  teskcolor profiles uninstall NAME\n"
        "Lists the installed RGB working-space profiles (or, with --cmyk, the CMYK printer\n"
        "profiles) found in the colour directory, or installs and uninstalls a profile there.\n"
        "reads: the colour directory. writes: install copies FILE into the colour directory;\n"
        "uninstall removes NAME from it.",
        "teskcolor profiles install AdobeRGB1998.icc");
    command->add_flag("--cmyk", options->cmyk, "list the CMYK printer profiles");
    command->add_option("ACTION", options->words, "list | install FILE | uninstall NAME");
    return {command, [options] { return Run(*options); }};
}

}  // namespace teskcolor
