#include "host/ConnectLanguage.h"

#include <tesk/language.h>
#include <tesk/path.h>

#include <cstdlib>
#include <mutex>
#include <vector>

namespace {

struct ModuleInfo {
    CString path;
    HMODULE resource;
    CString text1;
    CString text2;
};

struct LanguageState {
    std::mutex mutex;
    std::vector<ModuleInfo> modules;
};

LanguageState& State() {
    static LanguageState* state = new LanguageState;  // modules register from their load-time constructors
    return *state;
}

// The folder of a module's file, in Windows form; "" when it is unknown.
CString ModuleFolder(HMODULE module) {
    wchar_t file[1024] = {};
    DWORD length = GetModuleFileNameW(module, file, 1024);
    if (length == 0 || length >= 1024) return CString();
    std::wstring path(file, length);
    size_t cut = path.rfind(L'\\');
    return CString(cut == std::wstring::npos ? std::wstring() : path.substr(0, cut));
}

}  // namespace

CConnectLanguage& CConnectLanguage::Instance() {
    static CConnectLanguage* service = new CConnectLanguage;
    return *service;
}

CString CConnectLanguage::GetLanguageTag() const { return CString(tesk::UserLanguageTag()); }

CString CConnectLanguage::GetPath() const {
    // Set, even to nothing, it wins: a host without language files says so with "".
    if (const char* override_ = std::getenv("TESK_LANGUAGE_PATH")) return CString(tesk::path::ToWindows(override_));
    // Resource libraries are installed beside the libraries that use them.
    HMODULE self = nullptr;
    if (!GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                            reinterpret_cast<LPCWSTR>(&State), &self))
        return CString();
    return ModuleFolder(self);
}

CString CConnectLanguage::GetAltPath() const { return ModuleFolder(nullptr); }

void CConnectLanguage::StoreCB(PFN_LinkExtension callback, const CString& moduleName) {
    if (callback) callback(moduleName);
}

void CConnectLanguage::AddModuleInfo(const CString& modulePath, HMODULE resourceLibrary, const CString& text1,
                                     const CString& text2) {
    std::lock_guard lock(State().mutex);
    State().modules.push_back({modulePath, resourceLibrary, text1, text2});
}

HMODULE CConnectLanguage::GetModuleResource(const CString& modulePath) const {
    std::lock_guard lock(State().mutex);
    for (const auto& info : State().modules)
        if (info.path.CompareNoCase(modulePath) == 0) return info.resource;
    return nullptr;
}

int CConnectLanguage::GetModuleInfoCount() const {
    std::lock_guard lock(State().mutex);
    return static_cast<int>(State().modules.size());
}
