#include "installed_profiles.h"

#include <algorithm>
#include <filesystem>
#include <vector>

#include "color_directory.h"
#include "settings_file.h"

namespace fs = std::filesystem;
using nlohmann::json;

namespace tesk::mscms {

namespace {

std::vector<std::string> UninstalledNames(const json& document) {
    std::vector<std::string> names;
    if (auto it = document.find("uninstalled"); it != document.end() && it->is_array())
        for (const json& entry : *it)
            if (entry.is_string()) names.push_back(entry.get<std::string>());
    return names;
}

}  // namespace

bool SetUninstalled(const std::string& fileName, bool uninstalled) {
    std::lock_guard lock(SettingsMutex());
    json document = LoadSettings(kProfilesFile);
    std::vector<std::string> names = UninstalledNames(document);
    const auto it = std::find(names.begin(), names.end(), fileName);
    if (uninstalled == (it != names.end())) return true;
    if (uninstalled)
        names.push_back(fileName);
    else
        names.erase(it);
    document["uninstalled"] = names;
    return SaveSettings(kProfilesFile, document);
}

bool IsInstalled(const std::string& fileName) {
    const std::string directory = ColorDirectory();
    std::error_code error;
    if (directory.empty() || !fs::is_regular_file(directory + "/" + fileName, error)) return false;
    std::lock_guard lock(SettingsMutex());
    const std::vector<std::string> uninstalled = UninstalledNames(LoadSettings(kProfilesFile));
    return std::find(uninstalled.begin(), uninstalled.end(), fileName) == uninstalled.end();
}

}  // namespace tesk::mscms

