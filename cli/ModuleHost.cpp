#include "cli/ModuleHost.h"

#include <tesk/own_profiles.h>
#include <tesk/path.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <set>

#include "cli/Errors.h"
#include "cli/ProfileHeader.h"
#include "cli/ProfileNames.h"
#include "cli/SessionSettings.h"
#include "cli/imageio/ImageFile.h"
#include "cli/imageio/OutputFile.h"
#include "cli/imageio/StandardStreams.h"
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

// The whole file unless it is an image, whose profile alone is wanted; one
// open for both the look at its start and the read.
bool ReadUnlessImage(const std::string& path, std::vector<uint8_t>& bytes) {
    std::ifstream in(path, std::ios::binary);
    if (!in) throw CCliError(EExit::NotFound, path + ": cannot open");
    uint8_t head[8] = {};
    in.read(reinterpret_cast<char*>(head), sizeof head);
    if (DetectImageType(head, size_t(in.gcount())).has_value()) return false;
    in.clear();
    in.seekg(0);
    bytes.assign(std::istreambuf_iterator<char>(in), {});
    return true;
}

}  // namespace

namespace {

// The file a profile argument names: the argument itself, else for a bare
// name an installed profile or one of the program's own, with the extensions
// the lists leave off.
std::string ProfileFile(const std::string& argument, CColorManager* manager) {
    std::error_code error;
    if (fs::is_regular_file(argument, error)) return argument;
    if (argument.empty() || argument.find('/') != std::string::npos) return "";
    std::vector<std::string> folders;
    if (manager) folders.push_back(ColourDirectory(*manager));
    folders.push_back(tesk::path::OwnProfileFolder());
    for (const std::string& folder : folders)
        for (const char* extension : {"", ".icc", ".icm", ".ICC", ".ICM"})
            if (fs::is_regular_file(folder + "/" + argument + extension, error)) return folder + "/" + argument + extension;
    return "";
}

// "-": a profile, or an image for its embedded profile, on standard input.
SProfileSource ReadStandardInputProfile() {
    const std::string name = kStandardInputName;
    const std::vector<uint8_t>& bytes = StandardInputBytes(SReadOptions{}.maxPixels);
    if (!DetectImageType(bytes.data(), bytes.size()))
        return {bytes, name, "", tesk::path::ToWindows(KeepForThisRun(bytes))};
    SImageHeader image = ReadImageHeader("-");
    if (image.iccProfile.empty()) throw CCliError(EExit::NotFound, name + ": the image carries no ICC profile");
    const std::string kept = KeepForThisRun(image.iccProfile);
    return {std::move(image.iccProfile), name + " (embedded)", "", tesk::path::ToWindows(kept)};
}

SProfileSource ReadProfileSource(const std::string& argument, CColorManager* manager) {
    if (IsStandardStream(argument)) return ReadStandardInputProfile();
    const std::string path = ProfileFile(argument, manager);
    if (path.empty()) throw CCliError(EExit::NotFound, argument + ": no such file or installed profile");
    std::vector<uint8_t> bytes;
    if (ReadUnlessImage(path, bytes)) return {std::move(bytes), argument, path, tesk::path::ToWindows(fs::absolute(path).string())};
    // Only the header: the profile is all that is wanted of the image.
    SImageHeader image = ReadImageHeader(path);
    if (image.iccProfile.empty()) throw CCliError(EExit::NotFound, argument + ": the image carries no ICC profile");
    const std::string kept = KeepForThisRun(image.iccProfile);
    return {std::move(image.iccProfile), argument + " (embedded)", "", tesk::path::ToWindows(kept)};
}

}  // namespace

const SProfileSource& ResolveProfile(const std::string& argument, CColorManager* manager) {
    static std::map<std::string, SProfileSource> resolved;
    auto found = resolved.find(argument);
    if (found == resolved.end()) found = resolved.emplace(argument, ReadProfileSource(argument, manager)).first;
    return found->second;
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
const SProfileSource& ProfileByModuleName(const CString& name, const std::string& role) {
    if (name.IsEmpty()) throw CCliError(EExit::NotFound, "no " + role + " profile is set");
    std::string text = name.Utf8();
    if (text.find('\\') != std::string::npos || text.find(':') != std::string::npos)
        text = tesk::path::ToNative(name.GetString());
    return ResolveProfile(text, &ColourManager());
}
}  // namespace

const SProfileSource& WorkingSpaceProfile(CColorManager& manager) {
    CString name;
    manager.GetDefaultRGBString(name);
    return ProfileByModuleName(name, "working-space");
}

const SProfileSource& DefaultCMYKProfile(CColorManager& manager) {
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

namespace {

// The profile's description as the module reads it, "" when it has none.
std::string DescriptionOf(const SProfileSource& profile) {
    std::vector<uint8_t> block = profile.bytes;  // the reader keeps and may touch it
    CICCReadColorProfile reader;
    bool valid = true;
    CString text;
    if (block.empty() || !reader.CreateFromRawData(block.data(), static_cast<unsigned long>(block.size()), valid) ||
        !reader.GetDescription(text))
        return "";
    return text.Utf8();
}

}  // namespace

std::wstring NameInColourDirectory(const SProfileSource& profile, CColorManager& manager, bool install) {
    const std::string directory = ColourDirectory(manager);
    const std::string fileName = profile.file.empty() ? "" : fs::path(profile.file).filename().string();
    std::error_code error;
    if (!fileName.empty() && fs::is_regular_file(directory + "/" + fileName, error) &&
        ReadFileBytes(directory + "/" + fileName) == profile.bytes)
        return tesk::path::Wide(fileName);
    fs::create_directories(directory, error);
    if (!install) return tesk::path::Wide(fs::path(KeepForThisRun(profile.bytes, directory)).filename().string());

    // Named after its file, or, for an embedded profile, after its description.
    const std::string wanted = fileName.empty()
                                   ? ProfileFileNameFrom(DescriptionOf(profile), ".icc")
                                   : ProfileFileNameFrom(fs::path(fileName).stem().string(), fs::path(fileName).extension().string());
    const std::string target = FreeProfilePath(directory, wanted, profile.bytes);
    if (!fs::exists(target, error)) {
        COutputFile file(target);
        if (std::fwrite(profile.bytes.data(), 1, profile.bytes.size(), file.Stream()) != profile.bytes.size())
            throw CCliError(EExit::WriteFailed, target + ": cannot write the profile");
        file.Commit();
    }
    if (!manager.InstallColorProfileW(tesk::path::ToWindows(target).c_str()))
        throw CCliError(EExit::Failed, profile.origin + ": the colour system refused to install it");
    const std::string name = fs::path(target).filename().string();
    std::printf("installed %s in the colour directory as \"%s\"\n", profile.origin.c_str(), name.c_str());
    return tesk::path::Wide(name);
}

}  // namespace teskcolor
