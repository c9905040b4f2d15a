#include <windows.h>

#include <tesk/module_location.h>
#include <tesk/text.h>

#include <vector>

namespace tesk::loader {

namespace {

std::string FileNameOf(HMODULE module) {
    std::vector<wchar_t> buffer(MAX_PATH);
    for (;;) {
        const DWORD size = static_cast<DWORD>(buffer.size());
        const DWORD length = GetModuleFileNameW(module, buffer.data(), size);
        if (length == 0) return {};
        if (length < size) return path::Utf8(std::wstring(buffer.data(), length));
        buffer.resize(buffer.size() * 2);
    }
}

}  // namespace

std::string ResolveModulePath(const std::wstring& windowsName) {
    // A module already loaded is the one every later LoadLibraryW gets.
    if (HMODULE loaded = GetModuleHandleW(windowsName.c_str())) return FileNameOf(loaded);
    // Otherwise the file the search order names first.
    std::vector<wchar_t> buffer(MAX_PATH);
    for (;;) {
        const DWORD size = static_cast<DWORD>(buffer.size());
        const DWORD length = SearchPathW(nullptr, windowsName.c_str(), nullptr, size, buffer.data(), nullptr);
        if (length == 0) return {};
        if (length < size) return path::Utf8(std::wstring(buffer.data(), length));
        buffer.resize(length);
    }
}

HMODULE HandleForAddress(const void* address) {
    if (!address) return GetModuleHandleW(nullptr);
    HMODULE module = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       static_cast<LPCWSTR>(address), &module);
    return module;
}

}  // namespace tesk::loader
