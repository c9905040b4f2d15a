// The colour directory, standard colour-space profiles, install and uninstall.
#include <windows.h>

#include <icm.h>
#include <tesk/device_associations.h>
#include <tesk/path.h>
#include <tesk/export_guard.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>

#include "builtin_srgb.h"
#include "color_directory.h"
#include "installed_profiles.h"
#include "profile_validity.h"
#include "settings_file.h"

namespace fs = std::filesystem;
using namespace tesk::mscms;
using nlohmann::json;

namespace {

// 'sRGB' is kept as "sRGB"; identifiers that are not four printable
// characters as their number.
std::string IdentifierKey(DWORD id) {
    char text[5] = {static_cast<char>(id >> 24), static_cast<char>(id >> 16), static_cast<char>(id >> 8),
                    static_cast<char>(id), 0};
    if (std::all_of(text, text + 4, [](char c) { return c >= 0x20 && c < 0x7F; })) return text;
    return std::to_string(id);
}

BOOL Fail(DWORD error) {
    SetLastError(error);
    return FALSE;
}

bool SameFile(const std::string& a, const std::string& b) {
    std::error_code error;
    return fs::equivalent(a, b, error);
}

}  // namespace

// *pdwSize counts bytes of this platform's WCHAR.
BOOL WINAPI GetColorDirectoryW(PCWSTR pMachineName, PWSTR pBuffer, PDWORD pdwSize) try {
    if (!IsLocalMachine(pMachineName)) return FALSE;
    if (!pdwSize) return Fail(ERROR_INVALID_PARAMETER);
    const std::string directory = ColorDirectory();
    if (directory.empty()) return Fail(ERROR_PATH_NOT_FOUND);
    return CopyTextOut(tesk::path::ToWindows(directory), pBuffer, pdwSize);
} catch (...) {
    return tesk::FailAtBoundary(BOOL{FALSE});
}

// The full path of the profile standing for a colour space: the one chosen
// with SetStandardColorSpaceProfileW, else the built-in sRGB profile for
// 'sRGB' and 'Win '.
BOOL WINAPI GetStandardColorSpaceProfileW(PCWSTR pMachineName, DWORD dwProfileID, PWSTR pProfileName,
                                          PDWORD pdwSize) try {
    if (!IsLocalMachine(pMachineName)) return FALSE;
    if (!pdwSize) return Fail(ERROR_INVALID_PARAMETER);
    std::string path;
    {
        std::lock_guard lock(SettingsMutex());
        const json document = LoadSettings(kProfilesFile);
        if (auto standard = document.find("standard"); standard != document.end() && standard->is_object()) {
            if (auto it = standard->find(IdentifierKey(dwProfileID)); it != standard->end() && it->is_string())
                path = it->get<std::string>();
        }
    }
    if (path.empty() && (dwProfileID == LCS_sRGB || dwProfileID == LCS_WINDOWS_COLOR_SPACE)) {
        const std::string directory = ColorDirectory();
        if (directory.empty()) return Fail(ERROR_PATH_NOT_FOUND);
        path = directory + "/" + kBuiltInSrgbFileName;
    }
    if (path.empty()) return Fail(ERROR_FILE_NOT_FOUND);
    return CopyTextOut(tesk::path::ToWindows(path), pProfileName, pdwSize);
} catch (...) {
    return tesk::FailAtBoundary(BOOL{FALSE});
}

BOOL WINAPI SetStandardColorSpaceProfileW(PCWSTR pMachineName, DWORD dwProfileID, PCWSTR pProfileName) try {
    std::wstring name;
    if (!IsLocalMachine(pMachineName) || !TextArgument(pProfileName, name)) return FALSE;
    const std::string path = ProfilePath(name);
    std::error_code error;
    if (path.empty() || !fs::is_regular_file(path, error)) return Fail(ERROR_FILE_NOT_FOUND);
    std::lock_guard lock(SettingsMutex());
    json document = LoadSettings(kProfilesFile);
    if (!document["standard"].is_object()) document["standard"] = json::object();
    document["standard"][IdentifierKey(dwProfileID)] = fs::absolute(path, error).string();
    if (!SaveSettings(kProfilesFile, document)) return Fail(ERROR_WRITE_FAULT);
    return TRUE;
} catch (...) {
    return tesk::FailAtBoundary(BOOL{FALSE});
}

// Copies a profile file into the colour directory under its own file name.
// Installing is a file operation: a profile whose tags were rewritten still
// installs, as long as it is an ICC profile at all.
BOOL WINAPI InstallColorProfileW(PCWSTR pMachineName, PCWSTR pProfileName) try {
    std::wstring name;
    if (!IsLocalMachine(pMachineName) || !TextArgument(pProfileName, name)) return FALSE;
    const std::string source = ProfilePath(name);
    const std::string directory = ColorDirectory();
    if (directory.empty()) return Fail(ERROR_PATH_NOT_FOUND);
    Bytes bytes;
    if (!ReadWholeFile(source, bytes)) return FALSE;
    const std::optional<IccContainer> container = ParseIccContainer(bytes);
    if (!container || !IsProfileFile(*container)) return Fail(ERROR_INVALID_PROFILE);
    const std::string fileName = FileName(source);
    const std::string target = directory + "/" + fileName;
    if (!SameFile(source, target) && !tesk::path::WriteFileAtomically(target, std::string(bytes.begin(), bytes.end())))
        return Fail(ERROR_WRITE_FAULT);
    if (!SetUninstalled(fileName, false)) return Fail(ERROR_WRITE_FAULT);
    return TRUE;
} catch (...) {
    return tesk::FailAtBoundary(BOOL{FALSE});
}

// Takes the profile off the installed list and out of every device
// association; the file goes only when bDelete asks for it.
BOOL WINAPI UninstallColorProfileW(PCWSTR pMachineName, PCWSTR pProfileName, BOOL bDelete) try {
    std::wstring name;
    if (!IsLocalMachine(pMachineName) || !TextArgument(pProfileName, name)) return FALSE;
    const std::string fileName = FileName(ProfilePath(name));
    if (fileName.empty() || !IsInstalled(fileName)) return Fail(ERROR_PROFILE_NOT_FOUND);
    if (!tesk::associations::Forget(fileName) || !SetUninstalled(fileName, true)) return Fail(ERROR_WRITE_FAULT);
    if (bDelete) {
        std::error_code error;
        if (!fs::remove(ColorDirectory() + "/" + fileName, error)) return Fail(ERROR_ACCESS_DENIED);
        // A deleted file is simply gone; nothing to remember about it.
        SetUninstalled(fileName, false);
    }
    return TRUE;
} catch (...) {
    return tesk::FailAtBoundary(BOOL{FALSE});
}
