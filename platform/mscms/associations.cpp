#include "associations.h"

#include <icm.h>
#include <tesk/path.h>
#include <windows.h>
#include <tesk/export_guard.h>

#include <algorithm>

#include "color_directory.h"
#include "installed_profiles.h"
#include "settings_file.h"

using namespace tesk::mscms;
using nlohmann::json;

namespace {

std::vector<std::string> ListOf(const json& document, const std::string& device) {
    std::vector<std::string> names;
    auto it = document.find(device);
    if (it == document.end() || !it->is_array()) return names;
    for (const json& entry : *it)
        if (entry.is_string()) names.push_back(entry.get<std::string>());
    return names;
}

struct AssociationArguments {
    std::string profile;  // bare file name
    std::string device;
};

bool ReadArguments(PCWSTR machine, PCWSTR profileName, PCWSTR deviceName, AssociationArguments& out) {
    std::wstring profile, device;
    // Missing arguments are reported before the machine, as Windows does.
    if (!TextArgument(profileName, profile) || !TextArgument(deviceName, device) || !IsLocalMachine(machine))
        return false;
    out.profile = FileName(ProfilePath(profile));
    out.device = tesk::path::Utf8(device);
    return !out.profile.empty();
}

}  // namespace

namespace tesk::mscms {

std::vector<std::string> AssociatedProfiles(const std::string& device) {
    std::lock_guard lock(SettingsMutex());
    return ListOf(LoadSettings(kAssociationsFile), device);
}

bool ForgetProfileInAssociations(const std::string& fileName) {
    std::lock_guard lock(SettingsMutex());
    json document = LoadSettings(kAssociationsFile);
    bool changed = false;
    for (auto& [device, list] : document.items()) {
        if (!list.is_array()) continue;
        const size_t before = list.size();
        list.erase(std::remove(list.begin(), list.end(), json(fileName)), list.end());
        changed |= list.size() != before;
    }
    return !changed || SaveSettings(kAssociationsFile, document);
}

}  // namespace tesk::mscms

// Appends the profile to the device's list; only installed profiles may be associated.
BOOL WINAPI AssociateColorProfileWithDeviceW(PCWSTR pMachineName, PCWSTR pProfileName, PCWSTR pDeviceName) try {
    AssociationArguments args;
    if (!ReadArguments(pMachineName, pProfileName, pDeviceName, args)) return FALSE;
    if (!IsInstalled(args.profile)) {
        SetLastError(ERROR_PROFILE_NOT_FOUND);
        return FALSE;
    }
    std::lock_guard lock(SettingsMutex());
    json document = LoadSettings(kAssociationsFile);
    std::vector<std::string> names = ListOf(document, args.device);
    if (std::find(names.begin(), names.end(), args.profile) != names.end()) return TRUE;
    names.push_back(args.profile);
    document[args.device] = names;
    if (!SaveSettings(kAssociationsFile, document)) {
        SetLastError(ERROR_WRITE_FAULT);
        return FALSE;
    }
    return TRUE;
} catch (...) {
    return tesk::FailAtBoundary(BOOL{FALSE});
}

BOOL WINAPI DisassociateColorProfileFromDeviceW(PCWSTR pMachineName, PCWSTR pProfileName, PCWSTR pDeviceName) try {
    AssociationArguments args;
    if (!ReadArguments(pMachineName, pProfileName, pDeviceName, args)) return FALSE;
    std::lock_guard lock(SettingsMutex());
    json document = LoadSettings(kAssociationsFile);
    std::vector<std::string> names = ListOf(document, args.device);
    auto it = std::find(names.begin(), names.end(), args.profile);
    if (it == names.end()) {
        SetLastError(ERROR_PROFILE_NOT_ASSOCIATED_WITH_DEVICE);
        return FALSE;
    }
    names.erase(it);
    if (names.empty())
        document.erase(args.device);
    else
        document[args.device] = names;
    if (!SaveSettings(kAssociationsFile, document)) {
        SetLastError(ERROR_WRITE_FAULT);
        return FALSE;
    }
    return TRUE;
} catch (...) {
    return tesk::FailAtBoundary(BOOL{FALSE});
}
