// teskcolor profiles: the lists the settings dialogs show; install, uninstall.
#include <tesk/path.h>

#include <cstdio>
#include <filesystem>

#include "cli/Arguments.h"
#include "cli/Commands.h"
#include "cli/Errors.h"
#include "cli/ModuleHost.h"
#include "colormgr/ColorManager.h"

namespace teskcolor {

namespace {

constexpr const char* kHelp =
    "usage: teskcolor profiles [list] [--cmyk]\n"
    "       teskcolor profiles install FILE\n"
    "       teskcolor profiles uninstall NAME\n"
    "Lists the installed RGB working-space profiles (or, with --cmyk, the CMYK printer\n"
    "profiles) found in the colour directory, or installs and uninstalls a profile there.\n";

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
    // The program's own profiles, beside it or where they were installed, outside the colour directory's lists.
    std::error_code error;
    const std::filesystem::path own = tesk::path::OwnProfileFolder();
    if (cmyk && std::filesystem::is_directory(own, error)) {
        std::printf("# the program's own, in %s:\n", own.c_str());
        for (const auto& entry : std::filesystem::directory_iterator(own, error))
            if (entry.is_regular_file()) std::printf("%s\n", entry.path().stem().c_str());
    }
    return 0;
}

}  // namespace

int RunProfiles(const Args& args) {
    CArguments arguments("profiles", args, {{"--cmyk", false}});
    if (arguments.WantsHelp()) {
        std::fputs(kHelp, stdout);
        return 0;
    }
    const auto& words = arguments.Positional();
    CColorManager& manager = ColourManager();
    if (words.empty() || words[0] == "list") return List(manager, arguments.Has("--cmyk"));
    if (words.size() != 2) throw CCliError(EExit::Usage, "usage: teskcolor profiles install FILE | uninstall NAME");
    if (words[0] == "install") {
        std::error_code error;
        if (!std::filesystem::is_regular_file(words[1], error)) throw CCliError(EExit::NotFound, words[1] + ": no such file");
        RequireAcceptedProfile(LoadProfileSource(words[1], &manager));
        const std::wstring path = tesk::path::ToWindows(std::filesystem::absolute(words[1]).string());
        if (!manager.InstallColorProfileW(path.c_str()))
            throw CCliError(EExit::Failed, words[1] + ": the colour system refused to install it");
        std::printf("installed %s\n", std::filesystem::path(words[1]).filename().c_str());
        return 0;
    }
    if (words[0] == "uninstall") {
        const std::wstring name = ModuleProfileName(words[1]);
        if (!manager.UninstallColorProfileW(name.c_str()))
            throw CCliError(EExit::NotFound, words[1] + ": not installed, or it could not be removed");
        std::printf("uninstalled %s\n", words[1].c_str());
        return 0;
    }
    throw CCliError(EExit::Usage, "profiles: list, install or uninstall (see profiles --help)");
}

}  // namespace teskcolor
