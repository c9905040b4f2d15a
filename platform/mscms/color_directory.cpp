#include "color_directory.h"

#include <tesk/own_profiles.h>
#include <tesk/path.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <mutex>

#include "builtin_srgb.h"
#include "profile_access.h"

namespace tesk::mscms {

namespace fs = std::filesystem;

namespace {

std::string EnvironmentValue(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

std::string ChooseColorDirectory() {
    if (std::string dir = EnvironmentValue("TESK_COLOR_DIR"); !dir.empty()) return dir;
    if (std::string data = EnvironmentValue("XDG_DATA_HOME"); !data.empty()) return data + "/icc";
    return EnvironmentValue("HOME") + "/.local/share/icc";
}

void SeedBuiltInProfile(const std::string& directory) {
    const std::string path = directory + "/" + kBuiltInSrgbFileName;
    std::error_code error;
    if (fs::exists(path, error)) return;
    const Bytes& bytes = BuiltInSrgbProfileBytes();
    tesk::path::WriteFileAtomically(path, std::string(bytes.begin(), bytes.end()));
}

}  // namespace

std::string ColorDirectory() {
    // The environment is read on every call: tests and hosts may move it.
    std::string directory = ChooseColorDirectory();
    while (directory.size() > 1 && directory.back() == '/') directory.pop_back();
    std::error_code error;
    fs::create_directories(directory, error);
    if (!fs::is_directory(directory, error)) return {};
    static std::mutex seeding;
    std::lock_guard lock(seeding);
    SeedBuiltInProfile(directory);
    return directory;
}

std::string ProfilePath(const std::wstring& name) {
    const bool bare = name.find_first_of(L"\\/:") == std::wstring::npos;
    if (!bare) return tesk::path::WithInstalledProfileFallback(tesk::path::ToNative(name.c_str()));
    const std::string directory = ColorDirectory();
    return directory.empty() ? std::string() : directory + "/" + tesk::path::Utf8(name);
}

std::string FileName(const std::string& nativePath) { return fs::path(nativePath).filename().string(); }

bool TextArgument(PCWSTR text, std::wstring& out) {
    if (!text || !*text) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return false;
    }
    out = text;
    return true;
}

bool IsLocalMachine(PCWSTR machineName) {
    if (machineName && *machineName) {
        SetLastError(ERROR_NOT_SUPPORTED);
        return false;
    }
    return true;
}

BOOL CopyTextOut(const std::wstring& text, PWSTR buffer, PDWORD byteSize) {
    if (!byteSize) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    // Bytes of this platform's WCHAR: a caller that passes sizeof its buffer is never written past.
    const DWORD needed = static_cast<DWORD>(sizeof(WCHAR) * (text.size() + 1));
    if (!buffer || *byteSize < needed) {
        *byteSize = needed;
        SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return FALSE;
    }
    std::copy(text.begin(), text.end(), buffer);
    buffer[text.size()] = L'\0';
    *byteSize = needed;
    return TRUE;
}

bool ReadWholeFile(const std::string& nativePath, Bytes& bytes) {
    std::error_code error;
    if (nativePath.empty() || !fs::is_regular_file(nativePath, error)) {
        SetLastError(ERROR_FILE_NOT_FOUND);
        return false;
    }
    std::ifstream in(nativePath, std::ios::binary);
    if (!in) {
        SetLastError(ERROR_ACCESS_DENIED);
        return false;
    }
    bytes.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    if (in.bad()) {
        SetLastError(ERROR_READ_FAULT);
        return false;
    }
    return true;
}

}  // namespace tesk::mscms
