// teskcolor profiles: the lists the settings dialogs show; install, uninstall.
#include <tesk/own_profiles.h>
#include <tesk/path.h>

#include <cstdio>
#include <filesystem>
#include <windows.h>

#include <icm.h>

#include "cli/Commands.h"
#include "cli/Errors.h"
#include "cli/ModuleHost.h"
#include "cli/ProfileNames.h"
#include "colormgr/ColorManager.h"

namespace teskcolor {

namespace {

namespace fs = std::filesystem;

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

// Installing never replaces a different profile of the same name.
int Install(CColorManager& manager, const std::string& file) {
    std::error_code error;
    if (!fs::is_regular_file(file, error)) throw CCliError(EExit::NotFound, file + ": no such file");
    const std::string fileName = fs::path(file).filename().string();
    RequireSafeProfileName(fileName);
    RequireAcceptedProfile(ResolveProfile(file, &manager));
    const std::string target = ColourDirectory(manager) + "/" + fileName;
    if (fs::exists(fs::symlink_status(target, error)) && !fs::equivalent(file, target, error) &&
        FreeProfilePath(ColourDirectory(manager), fileName, ResolveProfile(file, &manager).bytes) != target)
        throw CCliError(EExit::WriteFailed, fileName + ": another profile of that name is installed; uninstall it first");
    const std::wstring path = tesk::path::ToWindows(fs::absolute(file).string());
    if (!manager.InstallColorProfileW(path.c_str()))
        throw CCliError(EExit::Failed, file + ": the colour system refused to install it");
    std::printf("installed %s\n", fileName.c_str());
    return 0;
}

// The installed file a name stands for, with or without its extension.
std::string InstalledFileName(const std::string& directory, const std::string& name) {
    std::error_code error;
    for (const char* extension : {"", ".icc", ".icm", ".ICC", ".ICM"})
        if (fs::is_regular_file(fs::symlink_status(directory + "/" + name + extension, error))) return name + extension;
    throw CCliError(EExit::NotFound, name + ": no such profile in the colour directory " + directory);
}

// Off the lists and out of the colour directory; with `keepFile` the file is
// first copied into the current folder.
int Uninstall(CColorManager& manager, const std::string& name, bool keepFile) {
    RequireSafeProfileName(name);
    const std::string directory = ColourDirectory(manager);
    const std::string fileName = InstalledFileName(directory, name);
    const std::string installed = directory + "/" + fileName;
    std::string kept;
    std::error_code error;
    if (keepFile) {
        const std::vector<uint8_t> bytes = ResolveProfile(installed, &manager).bytes;
        kept = FreeProfilePath(fs::current_path(error).string(), fileName, bytes);
        if (!fs::exists(kept, error) && !fs::copy_file(installed, kept, error))
            throw CCliError(EExit::WriteFailed, kept + ": cannot keep the file there: " + error.message());
    }
    // The platform's own call: the module's never deletes, and a file left in
    // the colour directory would stay on every list.
    if (!::UninstallColorProfileW(nullptr, tesk::path::Wide(fileName).c_str(), TRUE)) {
        // Left behind by an uninstall that kept it: only the file remains to go.
        if (::GetLastError() != ERROR_PROFILE_NOT_FOUND || !fs::remove(installed, error))
            throw CCliError(EExit::Failed, fileName + ": the colour system could not remove it");
    }
    if (keepFile)
        std::printf("uninstalled %s; the file is kept as %s\n", fileName.c_str(), kept.c_str());
    else
        std::printf("uninstalled %s and deleted it from %s\n", fileName.c_str(), directory.c_str());
    return 0;
}

struct SProfilesOptions {
    bool keepFile = false;
    bool cmyk = false;
    std::vector<std::string> words;
};

int Run(const SProfilesOptions& options) {
    const auto& words = options.words;
    CColorManager& manager = ColourManager();
    if (words.empty() || words[0] == "list") return List(manager, options.cmyk);
    if (words.size() != 2) throw CCliError(EExit::Usage, "usage: teskcolor profiles install FILE | uninstall NAME");
    if (words[0] == "install") return Install(manager, words[1]);
    if (words[0] == "uninstall") return Uninstall(manager, words[1], options.keepFile);
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
        "uninstall deletes NAME from it (--keep-file: a copy goes to the current folder first).",
        "teskcolor profiles install AdobeRGB1998.icc");
    command->add_flag("--cmyk", options->cmyk, "list the CMYK printer profiles");
    command->add_flag("--keep-file", options->keepFile,
                      "uninstall: keep a copy of the file in the current folder before it is deleted");
    command->add_option("ACTION", options->words, "list | install FILE | uninstall NAME");
    return {command, [options] { return Run(*options); }};
}

}  // namespace teskcolor
