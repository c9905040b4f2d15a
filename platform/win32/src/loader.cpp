#include <dirent.h>
#include <dlfcn.h>
#include <tesk/language.h>
#include <tesk/loader.h>
#include <tesk/path.h>
#include <tesk/resource.h>
#include <unistd.h>
#include <windows.h>

#include "image_entry.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <cwctype>
#include <map>
#include <mutex>
#include <set>
#include <sstream>
#include <string>
#include <vector>

namespace {

struct Module {
    std::wstring key;        // upper-case bare file name, e.g. "MSCMS.DLL"
    std::string nativePath;  // the shared object behind it
    void* library = nullptr;
    int references = 0;
    bool attached = false;  // DllMain ran for DLL_PROCESS_ATTACH
};

struct LoaderState {
    // Recursive: dlopen runs an object's entry, which registers it and calls
    // its DllMain, and DllMain calls back into the loader.
    std::recursive_mutex mutex;
    std::map<std::string, Module*> byPath;
    std::set<Module*> live;
    std::map<std::wstring, tesk::loader::Substitute> substitutes;
    tesk::loader::Observer observer;
};

LoaderState& State() {
    static LoaderState* state = new LoaderState;  // modules may be freed from static destructors
    return *state;
}

std::wstring Upper(std::wstring text) {
    for (wchar_t& ch : text) ch = static_cast<wchar_t>(std::towupper(ch));
    return text;
}

std::string Lower(std::string text) {
    for (char& ch : text) ch = static_cast<char>(std::tolower(static_cast<unsigned char>(ch)));
    return text;
}

// "C:\x\MSCMS.DLL" -> "MSCMS.DLL"
std::wstring BareName(const std::wstring& name) {
    size_t cut = name.find_last_of(L"\\/");
    return Upper(cut == std::wstring::npos ? name : name.substr(cut + 1));
}

// "MSCMS.DLL" -> "mscms.so"; a name without an extension gets ".so".
std::string SharedObjectName(const std::string& bare) {
    std::string lower = Lower(bare);
    if (lower.size() > 4 && lower.compare(lower.size() - 4, 4, ".dll") == 0) return lower.substr(0, lower.size() - 4) + ".so";
    if (lower.find('.') == std::string::npos) return lower + ".so";
    return lower;
}

std::string OwnDirectory() {
    Dl_info info{};
    if (dladdr(reinterpret_cast<void*>(&LoadLibraryW), &info) && info.dli_fname) {
        std::string path = info.dli_fname;
        size_t cut = path.rfind('/');
        if (cut != std::string::npos) return path.substr(0, cut);
    }
    return ".";
}

std::vector<std::string> SearchDirectories() {
    std::vector<std::string> dirs;
    if (const char* extra = std::getenv("TESK_MODULE_PATH")) {
        std::stringstream list(extra);
        std::string dir;
        while (std::getline(list, dir, ':'))
            if (!dir.empty()) dirs.push_back(dir);
    }
    std::string own = OwnDirectory();
    dirs.push_back(own);
    dirs.push_back(own + "/teskcolormgr");
    return dirs;
}

// Case-insensitive lookup of `file` in `dir`, as Windows file names are.
std::string FindInDirectory(const std::string& dir, const std::string& file) {
    std::string exact = dir + "/" + file;
    if (access(exact.c_str(), R_OK) == 0) return exact;
    DIR* listing = opendir(dir.c_str());
    if (!listing) return {};
    std::string wanted = Lower(file), found;
    while (dirent* entry = readdir(listing)) {
        if (Lower(entry->d_name) == wanted) {
            found = dir + "/" + entry->d_name;
            break;
        }
    }
    closedir(listing);
    return found;
}

std::string Canonical(const std::string& path) {
    if (path.empty()) return path;
    char resolved[4096];
    return realpath(path.c_str(), resolved) ? std::string(resolved) : path;
}

std::string FindModule(const std::wstring& windowsName) {
    std::string native = tesk::path::ToNative(windowsName.c_str());
    size_t cut = native.rfind('/');
    if (cut != std::string::npos) {
        std::string dir = cut == 0 ? "/" : native.substr(0, cut);
        std::string file = native.substr(cut + 1);
        std::string hit = FindInDirectory(dir, file);
        return hit.empty() ? FindInDirectory(dir, SharedObjectName(file)) : hit;
    }
    std::string file = SharedObjectName(native);
    for (const std::string& dir : SearchDirectories()) {
        std::string hit = FindInDirectory(dir, file);
        if (!hit.empty()) return hit;
    }
    return {};
}

std::string Resolve(const std::wstring& windowsName) { return Canonical(FindModule(windowsName)); }

void Notify(const char* call, const std::wstring& name, bool ok) {
    tesk::loader::Observer observer;
    {
        std::lock_guard lock(State().mutex);
        observer = State().observer;
    }
    if (observer) observer(call, name, ok);
}

Module* LiveModule(HMODULE handle) {
    auto* module = reinterpret_cast<Module*>(handle);
    return State().live.count(module) ? module : nullptr;
}

}  // namespace

TESK_WIN32_API HMODULE WINAPI LoadLibraryW(LPCWSTR name) {
    if (!name || !*name) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    std::wstring key = BareName(name);
    HMODULE result = nullptr;
    {
        LoaderState& state = State();
        std::lock_guard lock(state.mutex);
        auto substitute = state.substitutes.find(key);
        if (substitute != state.substitutes.end() && substitute->second.missing) {
            SetLastError(ERROR_MOD_NOT_FOUND);
        } else if (std::string path = Resolve(name); path.empty()) {
            SetLastError(ERROR_MOD_NOT_FOUND);
        } else if (auto known = state.byPath.find(path); known != state.byPath.end()) {
            ++known->second->references;
            result = reinterpret_cast<HMODULE>(known->second);
        } else if (void* library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) {
            // An object with an entry registered itself while it was opened.
            if (auto entered = state.byPath.find(path); entered != state.byPath.end()) {
                ++entered->second->references;
                result = reinterpret_cast<HMODULE>(entered->second);
            } else {
                auto* module = new Module{key, path, library, 1};
                state.byPath[path] = module;
                state.live.insert(module);
                result = reinterpret_cast<HMODULE>(module);
            }
        } else {
            SetLastError(ERROR_MOD_NOT_FOUND);
        }
    }
    Notify("load", name, result != nullptr);
    return result;
}

TESK_WIN32_API HMODULE WINAPI LoadLibraryExW(LPCWSTR name, HANDLE, DWORD) { return LoadLibraryW(name); }

TESK_WIN32_API BOOL WINAPI FreeLibrary(HMODULE handle) {
    std::wstring key;
    bool ok = false;
    {
        LoaderState& state = State();
        std::lock_guard lock(state.mutex);
        if (Module* module = LiveModule(handle)) {
            key = module->key;
            ok = true;
            // The shared object itself stays mapped: function pointers taken
            // from it may outlive the handle (the module keeps such references
            // for the life of the process by design).
            if (--module->references == 0) {
                state.byPath.erase(module->nativePath);
                state.live.erase(module);
                delete module;
            }
        } else {
            SetLastError(ERROR_INVALID_HANDLE);
        }
    }
    if (ok) Notify("free", key, true);
    return ok ? TRUE : FALSE;
}

TESK_WIN32_API FARPROC WINAPI GetProcAddress(HMODULE handle, LPCSTR exportName) {
    if (!exportName || reinterpret_cast<uintptr_t>(exportName) < 0x10000) {
        SetLastError(ERROR_PROC_NOT_FOUND);  // exports by ordinal do not exist here
        return nullptr;
    }
    LoaderState& state = State();
    std::lock_guard lock(state.mutex);
    Module* module = LiveModule(handle);
    if (!module) {
        SetLastError(ERROR_INVALID_HANDLE);
        return nullptr;
    }
    auto substitute = state.substitutes.find(module->key);
    if (substitute != state.substitutes.end()) {
        if (substitute->second.hidden.count(exportName)) {
            SetLastError(ERROR_PROC_NOT_FOUND);
            return nullptr;
        }
        auto override_ = substitute->second.overrides.find(exportName);
        if (override_ != substitute->second.overrides.end()) return override_->second;
    }
    void* symbol = dlsym(module->library, exportName);
    if (!symbol) {
        SetLastError(ERROR_PROC_NOT_FOUND);
        return nullptr;
    }
    return reinterpret_cast<FARPROC>(symbol);
}

TESK_WIN32_API HMODULE WINAPI GetModuleHandleW(LPCWSTR name) {
    if (!name) return reinterpret_cast<HMODULE>(tesk::loader::HandleForAddress(nullptr));
    LoaderState& state = State();
    std::lock_guard lock(state.mutex);
    std::wstring key = BareName(name);
    for (Module* module : state.live)
        if (module->key == key) return reinterpret_cast<HMODULE>(module);
    SetLastError(ERROR_MOD_NOT_FOUND);
    return nullptr;
}

TESK_WIN32_API BOOL WINAPI GetModuleHandleExW(DWORD flags, LPCWSTR name, HMODULE* handle) {
    if (!handle) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    *handle = (flags & GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS)
                  ? tesk::loader::HandleForAddress(reinterpret_cast<const void*>(name))
                  : GetModuleHandleW(name);
    if (!*handle) {
        SetLastError(ERROR_MOD_NOT_FOUND);
        return FALSE;
    }
    if (!(flags & GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT)) {
        std::lock_guard lock(State().mutex);
        if (Module* module = LiveModule(*handle)) ++module->references;
    }
    return TRUE;
}

TESK_WIN32_API DWORD WINAPI GetModuleFileNameW(HMODULE handle, LPWSTR buffer, DWORD size) {
    std::string native;
    if (!handle) {
        char exe[4096];
        ssize_t n = readlink("/proc/self/exe", exe, sizeof exe - 1);
        if (n <= 0) {
            SetLastError(ERROR_INVALID_HANDLE);
            return 0;
        }
        native.assign(exe, static_cast<size_t>(n));
    } else {
        std::lock_guard lock(State().mutex);
        Module* module = LiveModule(handle);
        if (!module) {
            SetLastError(ERROR_INVALID_HANDLE);
            return 0;
        }
        native = module->nativePath;
    }
    if (!buffer || size == 0) {
        SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return 0;
    }
    std::wstring windows = tesk::path::ToWindows(native);
    // As on Windows: a name that does not fit is cut, terminated, and the
    // result is the buffer size with ERROR_INSUFFICIENT_BUFFER.
    if (windows.size() >= size) {
        std::wmemcpy(buffer, windows.data(), size - 1);
        buffer[size - 1] = 0;
        SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return size;
    }
    std::wmemcpy(buffer, windows.data(), windows.size());
    buffer[windows.size()] = 0;
    SetLastError(ERROR_SUCCESS);
    return static_cast<DWORD>(windows.size());
}

TESK_WIN32_API BOOL WINAPI DisableThreadLibraryCalls(HMODULE handle) {
    std::lock_guard lock(State().mutex);
    if (!LiveModule(handle)) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    return TRUE;  // Linux has no per-thread notifications to switch off
}

TESK_WIN32_API int WINAPI LoadStringW(HINSTANCE instance, UINT id, LPWSTR buffer, int size) {
    if (!buffer || size < 0) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    void* library = nullptr;
    {
        std::lock_guard lock(State().mutex);
        Module* module = LiveModule(reinterpret_cast<HMODULE>(instance));
        if (!module) {
            SetLastError(ERROR_INVALID_HANDLE);
            return 0;
        }
        library = module->library;
    }
    auto tablesOf = reinterpret_cast<PFN_TeskResourceStringTables>(dlsym(library, "TeskResourceStringTables"));
    if (!tablesOf) {
        SetLastError(ERROR_RESOURCE_DATA_NOT_FOUND);
        return 0;
    }
    const TeskResourceStringTable* tables = tablesOf();
    const TeskResourceStringTable* chosen = nullptr;
    const std::string language = tesk::UserLanguageTag();
    // The user's language, else its primary language ("de-at" -> "de-.."), else US English.
    for (const auto* t = tables; t && t->language; ++t)
        if (language == t->language) chosen = t;
    for (const auto* t = tables; !chosen && t && t->language; ++t)
        if (language.compare(0, 3, t->language, 3) == 0) chosen = t;
    for (const auto* t = tables; !chosen && t && t->language; ++t)
        if (std::strcmp(t->language, "en-us") == 0) chosen = t;
    const wchar_t* text = nullptr;
    for (UINT i = 0; chosen && i < chosen->count; ++i)
        if (chosen->strings[i].id == id) text = chosen->strings[i].text;
    if (!text) {
        SetLastError(ERROR_RESOURCE_NAME_NOT_FOUND);
        if (size > 0) buffer[0] = 0;
        return 0;
    }
    int length = static_cast<int>(std::wcslen(text));
    if (size == 0) {
        // Windows: the buffer receives a read-only pointer to the resource.
        *reinterpret_cast<const wchar_t**>(buffer) = text;
        return length;
    }
    int copied = std::min(length, size - 1);
    std::wmemcpy(buffer, text, static_cast<size_t>(copied));
    buffer[copied] = 0;
    return copied;
}

namespace tesk::loader {

void SetSubstitute(const std::wstring& windowsName, const Substitute& substitute) {
    std::lock_guard lock(State().mutex);
    State().substitutes[BareName(windowsName)] = substitute;
}

void ClearSubstitutes() {
    std::lock_guard lock(State().mutex);
    State().substitutes.clear();
}

FARPROC RealProcAddress(const std::wstring& windowsName, const char* exportName) {
    std::string path;
    {
        std::lock_guard lock(State().mutex);
        path = Resolve(windowsName);
    }
    if (path.empty()) return nullptr;
    // The object is already mapped when a substitute forwards to it; this
    // reference is never dropped, like the module's own.
    void* library = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    return library ? reinterpret_cast<FARPROC>(dlsym(library, exportName)) : nullptr;
}

void SetObserver(Observer observer) {
    std::lock_guard lock(State().mutex);
    State().observer = std::move(observer);
}

std::string ResolveModulePath(const std::wstring& windowsName) {
    std::lock_guard lock(State().mutex);
    return Resolve(windowsName);
}

HMODULE HandleForAddress(const void* address) {
    std::string path;
    if (address) {
        Dl_info info{};
        if (!dladdr(address, &info) || !info.dli_fname) return nullptr;
        path = info.dli_fname;
    } else {
        char exe[4096];
        ssize_t n = readlink("/proc/self/exe", exe, sizeof exe - 1);
        if (n <= 0) return nullptr;
        path.assign(exe, static_cast<size_t>(n));
    }
    char resolved[4096];
    if (realpath(path.c_str(), resolved)) path = resolved;
    LoaderState& state = State();
    std::lock_guard lock(state.mutex);
    auto known = state.byPath.find(path);
    if (known != state.byPath.end()) return reinterpret_cast<HMODULE>(known->second);
    void* library = address ? dlopen(path.c_str(), RTLD_NOW | RTLD_NOLOAD) : dlopen(nullptr, RTLD_NOW);
    size_t cut = path.rfind('/');
    std::wstring key = BareName(tesk::path::Wide(cut == std::string::npos ? path : path.substr(cut + 1)));
    // Held for the process: a module's own handle is never freed.
    auto* module = new Module{key, path, library, 1};
    state.byPath[path] = module;
    state.live.insert(module);
    return reinterpret_cast<HMODULE>(module);
}

void ImageEntry(const void* addressInImage, DWORD reason) {
    HMODULE handle = HandleForAddress(addressInImage);
    if (!handle) return;
    using EntryPoint = BOOL (*)(HINSTANCE, DWORD, LPVOID);
    EntryPoint entry = nullptr;
    {
        std::lock_guard lock(State().mutex);
        Module* module = LiveModule(handle);
        bool attaching = reason == DLL_PROCESS_ATTACH;
        if (!module || !module->library || module->attached == attaching) return;
        module->attached = attaching;
        // Only the object's own export: dlsym also searches its dependencies.
        void* symbol = dlsym(module->library, "DllMain");
        Dl_info image{}, found{};
        if (symbol && dladdr(addressInImage, &image) && dladdr(symbol, &found) && image.dli_fbase == found.dli_fbase)
            entry = reinterpret_cast<EntryPoint>(symbol);
    }
    // A failed attach is not undone: the object is already mapped, and the
    // module's own state says what worked.
    if (entry) entry(reinterpret_cast<HINSTANCE>(handle), reason, nullptr);
}

}  // namespace tesk::loader
