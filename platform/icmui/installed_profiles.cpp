#include "installed_profiles.h"

#include <windows.h>

#include <icm.h>
#include <lcms2.h>
#include <tesk/path.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>

namespace tesk::icmui {
namespace {

// The colour directory as MSCMS names it.
std::string ColorDirectory() {
    std::string folder;
    if (HMODULE mscms = LoadLibraryW(L"MSCMS.DLL")) {
        auto get = reinterpret_cast<decltype(&GetColorDirectoryW)>(GetProcAddress(mscms, "GetColorDirectoryW"));
        WCHAR buffer[1024] = {};
        DWORD size = sizeof buffer;
        if (get && get(nullptr, buffer, &size)) folder = path::ToNative(buffer);
        FreeLibrary(mscms);
    }
    if (!folder.empty()) return folder;
    if (const char* dir = std::getenv("TESK_COLOR_DIR"); dir && *dir) return dir;
    if (const char* data = std::getenv("XDG_DATA_HOME"); data && *data) return std::string(data) + "/icc";
    const char* home = std::getenv("HOME");
    return std::string(home ? home : "") + "/.local/share/icc";
}

}  // namespace

std::vector<InstalledProfile> InstalledProfiles() {
    std::vector<InstalledProfile> profiles;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(ColorDirectory(), error)) {
        if (!entry.is_regular_file(error)) continue;
        cmsHPROFILE profile = cmsOpenProfileFromFile(entry.path().c_str(), "r");
        if (!profile) continue;  // not a profile lcms2 can read: not offered
        InstalledProfile item;
        item.fileName = path::Wide(entry.path().filename().string());
        item.deviceClass = unsigned(cmsGetDeviceClass(profile));
        wchar_t description[256] = {};
        if (cmsGetProfileInfo(profile, cmsInfoDescription, "en", "US", description, 256) && description[0])
            item.description = description;
        else
            item.description = item.fileName;
        cmsCloseProfile(profile);
        profiles.push_back(item);
    }
    std::sort(profiles.begin(), profiles.end(),
              [](const InstalledProfile& a, const InstalledProfile& b) { return a.fileName < b.fileName; });
    return profiles;
}

}  // namespace tesk::icmui
