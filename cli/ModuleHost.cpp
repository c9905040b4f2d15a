#include "cli/ModuleHost.h"

#include <tesk/path.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <set>

#include "cli/Errors.h"
#include "cli/ProfileHeader.h"
#include "cli/SessionSettings.h"
#include "cli/imageio/ImageFile.h"
#include "cli/imageio/OutputFile.h"
#include "colormgr/ColorManager.h"
#include "icc/ICCReadColorProfile.h"

namespace teskcolor {

namespace fs = std::filesystem;

void UseDisplayFor(const std::string& command) {
    static const std::set<std::string> onScreen = {"gamma", "view", "setup"};
    static const std::set<std::string> readDisplayProfile = {"settings", "proof", "demo"};
    ::TeskSetDisplayAccess(onScreen.count(command)             ? TESK_DISPLAY_SERVER
                           : readDisplayProfile.count(command) ? TESK_DISPLAY_READ_ONLY
                                                               : TESK_DISPLAY_IN_MEMORY);
}

CColorManager& ColourManager() {
    RegisterSessionSettingsStore();
    CColorManager* manager = CColorManager::Instance();
    if (!manager || !manager->IsLoaded())
        throw CCliError(EExit::Failed, "the colour system (MSCMS) could not be loaded");
    return *manager;
}

std::wstring ModuleProfileName(const std::string& argument) {
    std::error_code error;
    if (fs::is_regular_file(argument, error)) return tesk::path::ToWindows(fs::absolute(argument).string());
    return tesk::path::Wide(argument);
}

std::string ColourDirectory(CColorManager& manager) {
    CString directory;
    manager.GetColorDirectoryW(directory, true);
    return tesk::path::ToNative(directory.GetString());
}

namespace {

std::vector<uint8_t> ReadFileBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) throw CCliError(EExit::NotFound, path + ": cannot open");
    return std::vector<uint8_t>(std::istreambuf_iterator<char>(in), {});
}

bool IsImageFile(const std::string& path) {
    uint8_t head[8] = {};
    std::ifstream in(path, std::ios::binary);
    in.read(reinterpret_cast<char*>(head), sizeof head);
    return DetectImageType(head, size_t(in.gcount())).has_value();
}

}  // namespace

SProfileSource LoadProfileSource(const std::string& argument, CColorManager* manager) {
    std::error_code error;
    std::string path = argument;
    if (!fs::is_regular_file(path, error) && argument.find('/') == std::string::npos) {
        // A bare name: an installed profile, or one of the program's own beside the executable.
        std::vector<std::string> places;
        if (manager) places.push_back(ColourDirectory(*manager) + "/" + argument);
        places.push_back(tesk::path::OwnProfileFolder() + "/" + argument);
        for (const std::string& place : places)
            if (fs::is_regular_file(place, error)) {
                path = place;
                break;
            }
    }
    if (!fs::is_regular_file(path, error)) throw CCliError(EExit::NotFound, argument + ": no such file or installed profile");

    if (!IsImageFile(path)) return {ReadFileBytes(path), argument, path};
    // Only the header: the profile is all that is wanted of the image.
    SImageHeader image = ReadImageHeader(path);
    if (image.iccProfile.empty()) throw CCliError(EExit::NotFound, argument + ": the image carries no ICC profile");
    return {std::move(image.iccProfile), argument + " (embedded)", ""};
}

void RequireAcceptedProfile(const SProfileSource& profile) {
    // The reader may touch the block while it checks it; it gets a copy.
    std::vector<uint8_t> block = profile.bytes;
    CICCReadColorProfile reader;
    bool valid = true;
    if (block.empty() || !reader.CreateFromRawData(block.data(), static_cast<unsigned long>(block.size()), valid))
        throw CCliError(EExit::Corrupt, profile.origin + ": the colour manager " +
                                            (valid ? "refuses this profile" : "finds this profile invalid") +
                                            " (see teskcolor info)");
}

void RequireColourSpace(const SProfileSource& profile, uint32_t space, const std::string& role) {
    auto header = ParseProfileHeader(profile.bytes.data(), profile.bytes.size());
    if (!header) throw CCliError(EExit::Corrupt, profile.origin + ": not an ICC profile (shorter than its header)");
    if (header->dataColorSpace != space)
        throw CCliError(EExit::WrongProfile, profile.origin + ": a " + SignatureText(header->dataColorSpace) +
                                                 " profile cannot serve as " + role + " (needs " +
                                                 SignatureText(space) + ")");
}

}  // namespace teskcolor

namespace teskcolor {

namespace {
SProfileSource ProfileByModuleName(const CString& name, const std::string& role) {
    if (name.IsEmpty()) throw CCliError(EExit::NotFound, "no " + role + " profile is set");
    std::string text = name.Utf8();
    if (text.find('\\') != std::string::npos || text.find(':') != std::string::npos)
        text = tesk::path::ToNative(name.GetString());
    return LoadProfileSource(text, &ColourManager());
}
}  // namespace

SProfileSource WorkingSpaceProfile(CColorManager& manager) {
    CString name;
    manager.GetDefaultRGBString(name);
    return ProfileByModuleName(name, "working-space");
}

SProfileSource DefaultCMYKProfile(CColorManager& manager) {
    CString name;
    manager.GetDefaultCMYKString(name);
    return ProfileByModuleName(name, "CMYK");
}

}  // namespace teskcolor

namespace teskcolor {

std::string KeepForThisRun(const std::vector<uint8_t>& bytes, const std::string& folder) {
    static std::vector<std::unique_ptr<COutputFile>> files;
    const std::string place = folder.empty() ? fs::temp_directory_path().string() : folder;
    files.push_back(std::make_unique<COutputFile>(place + "/teskcolor.icc"));
    if (std::fwrite(bytes.data(), 1, bytes.size(), files.back()->Stream()) != bytes.size() ||
        std::fflush(files.back()->Stream()) != 0)
        throw CCliError(EExit::WriteFailed, place + ": cannot write a profile there");
    return files.back()->TempPath();
}

std::wstring NameInColourDirectory(const SProfileSource& profile, CColorManager& manager, bool install) {
    const std::string directory = ColourDirectory(manager);
    const std::string fileName = profile.file.empty() ? "" : fs::path(profile.file).filename().string();
    std::error_code error;
    if (!fileName.empty() && fs::is_regular_file(directory + "/" + fileName, error) &&
        ReadFileBytes(directory + "/" + fileName) == profile.bytes)
        return tesk::path::Wide(fileName);
    if (install && !fileName.empty()) {
        const std::wstring source = tesk::path::ToWindows(fs::absolute(profile.file).string());
        if (!manager.InstallColorProfileW(source.c_str()))
            throw CCliError(EExit::Failed, profile.origin + ": the colour system refused to install it");
        return tesk::path::Wide(fileName);
    }
    fs::create_directories(directory, error);
    return tesk::path::Wide(fs::path(KeepForThisRun(profile.bytes, directory)).filename().string());
}

}  // namespace teskcolor
