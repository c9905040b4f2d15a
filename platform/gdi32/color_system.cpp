#include "color_system.h"

#include <windows.h>
#include <icm.h>
#include <tesk/device_associations.h>
#include <tesk/path.h>

#include <cstdlib>
#include <cwchar>
#include <fstream>
#include <functional>

namespace tesk::gdi {
namespace {

// A function of MSCMS.DLL, with the module held for the call's duration.
template <typename Function>
class MscmsFunction {
public:
    explicit MscmsFunction(const char* name) : module_(LoadLibraryW(L"MSCMS.DLL")) {
        if (module_) function_ = reinterpret_cast<Function>(GetProcAddress(module_, name));
    }
    ~MscmsFunction() {
        if (module_) FreeLibrary(module_);
    }
    MscmsFunction(const MscmsFunction&) = delete;
    MscmsFunction& operator=(const MscmsFunction&) = delete;
    Function get() const { return function_; }

private:
    HMODULE module_;
    Function function_ = nullptr;
};

// Sizes of MSCMS text count bytes of WCHAR.
std::wstring AskText(const std::function<BOOL(PWSTR, PDWORD)>& call) {
    DWORD bytes = 0;
    call(nullptr, &bytes);
    if (bytes == 0 || bytes > 1u << 20) return L"";
    std::wstring text(bytes / sizeof(WCHAR) + 1, L'\0');
    if (!call(text.data(), &bytes)) return L"";
    text.resize(std::wcslen(text.c_str()));
    return text;
}

bool HasFolder(const wchar_t* name) {
    for (const wchar_t* c = name; *c; ++c)
        if (*c == L'\\' || *c == L'/' || *c == L':') return true;
    return false;
}

}  // namespace

std::string ColorDirectory() {
    MscmsFunction<decltype(&GetColorDirectoryW)> get("GetColorDirectoryW");
    if (get.get()) {
        DWORD saved = GetLastError();
        std::wstring folder = AskText([&](PWSTR buffer, PDWORD size) { return get.get()(nullptr, buffer, size); });
        SetLastError(saved);
        if (!folder.empty()) return path::ToNative(folder.c_str());
    }
    // Without MSCMS the folder is found the way MSCMS finds it.
    if (const char* dir = std::getenv("TESK_COLOR_DIR"); dir && *dir) return dir;
    if (const char* data = std::getenv("XDG_DATA_HOME"); data && *data) return std::string(data) + "/icc";
    const char* home = std::getenv("HOME");
    return std::string(home ? home : "") + "/.local/share/icc";
}

std::string ResolveProfile(const wchar_t* name) {
    if (HasFolder(name)) return path::ToNative(name);
    return ColorDirectory() + "/" + path::Utf8(name);
}

std::string StandardProfile() {
    MscmsFunction<decltype(&GetStandardColorSpaceProfileW)> get("GetStandardColorSpaceProfileW");
    if (!get.get()) return "";
    DWORD saved = GetLastError();
    std::wstring name = AskText(
        [&](PWSTR buffer, PDWORD size) { return get.get()(nullptr, LCS_WINDOWS_COLOR_SPACE, buffer, size); });
    SetLastError(saved);
    return name.empty() ? std::string() : ResolveProfile(name.c_str());
}

std::vector<std::string> AssociatedProfiles(const std::wstring& device) {
    std::vector<std::string> paths;
    if (device.empty()) return paths;
    for (const std::string& name : associations::ProfilesOf(path::Utf8(device)))
        paths.push_back(ResolveProfile(path::Wide(name).c_str()));
    return paths;
}

bool LooksLikeProfile(const std::string& nativePath) {
    std::ifstream file(nativePath, std::ios::binary);
    if (!file) {
        SetLastError(ERROR_FILE_NOT_FOUND);
        return false;
    }
    unsigned char header[128] = {};
    file.read(reinterpret_cast<char*>(header), sizeof header);
    bool ok = file.gcount() == sizeof header && header[36] == 'a' && header[37] == 'c' && header[38] == 's' &&
              header[39] == 'p';
    if (!ok) SetLastError(ERROR_INVALID_PROFILE);
    return ok;
}

}  // namespace tesk::gdi
