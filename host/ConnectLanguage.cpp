#include "host/ConnectLanguage.h"

#include <tesk/language.h>
#include <tesk/module_location.h>
#include <tesk/path.h>

#include <cstdlib>
#include <filesystem>
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

std::string FolderOf(const std::string& path) {
    const std::filesystem::path folder = tesk::path::FileSystemPath(path).parent_path();
    return folder.empty() ? std::string(".") : tesk::path::Utf8Path(folder);
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
    // The build and the install put the resource libraries beside the platform modules.
    std::string modules = tesk::loader::ResolveModulePath(L"MSCMS.DLL");
    if (modules.empty()) return CString();
    return CString(tesk::path::ToWindows(FolderOf(modules)));
}

CString CConnectLanguage::GetAltPath() const {
    wchar_t exe[1024] = {};
    GetModuleFileNameW(nullptr, exe, 1024);
    std::wstring path = exe;
    size_t cut = path.rfind(L'\\');
    return CString(cut == std::wstring::npos ? std::wstring() : path.substr(0, cut));
}

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
