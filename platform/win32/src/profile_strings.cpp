#include <tesk/path.h>
#include <windows.h>

#include <cstring>
#include <cwctype>
#include <string>
#include <vector>

// win.ini sections live in the registry, where Windows maps them too:
// HKEY_CURRENT_USER\Software\Microsoft\Windows NT\CurrentVersion\<section>.
// The default printer ("windows", "device") falls back to the GDI module's
// printing system when the registry does not name one.
namespace {

bool ReadRegistryText(const wchar_t* section, const wchar_t* name, std::wstring& text) {
    std::wstring path = std::wstring(L"Software\\Microsoft\\Windows NT\\CurrentVersion\\") + section;
    HKEY key = nullptr;
    if (RegOpenKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) return false;
    DWORD type = 0, size = 0;
    bool ok = false;
    if (RegQueryValueExW(key, name, nullptr, &type, nullptr, &size) == ERROR_SUCCESS && type == REG_SZ) {
        std::vector<wchar_t> buffer(size / sizeof(wchar_t) + 1, 0);
        if (RegQueryValueExW(key, name, nullptr, &type, reinterpret_cast<BYTE*>(buffer.data()), &size) == ERROR_SUCCESS) {
            text = buffer.data();
            ok = true;
        }
    }
    RegCloseKey(key);
    return ok;
}

bool EqualNoCase(const wchar_t* a, const wchar_t* b) {
    for (; *a && *b; ++a, ++b)
        if (std::towlower(*a) != std::towlower(*b)) return false;
    return *a == *b;
}

// "name,driver,port" of the printing system's default printer, from the GDI module.
bool DefaultPrinterDevice(std::wstring& text) {
    HMODULE gdi = LoadLibraryW(L"GDI32.DLL");
    if (!gdi) return false;
    using Query = BOOL (*)(LPWSTR, DWORD);
    auto query = reinterpret_cast<Query>(GetProcAddress(gdi, "TeskQueryDefaultPrinterDevice"));
    bool ok = false;
    if (query) {
        wchar_t buffer[1024] = {};
        ok = query(buffer, 1024) && buffer[0];
        if (ok) text = buffer;
    }
    FreeLibrary(gdi);
    return ok;
}

}  // namespace

TESK_WIN32_API DWORD WINAPI GetProfileStringW(LPCWSTR section, LPCWSTR name, LPCWSTR fallback, LPWSTR out,
                                              DWORD size) {
    if (!out || size == 0) return 0;
    std::wstring text;
    bool found = section && name && ReadRegistryText(section, name, text);
    if (!found && section && name && EqualNoCase(section, L"windows") && EqualNoCase(name, L"device"))
        found = DefaultPrinterDevice(text);
    if (!found) text = fallback ? fallback : L"";
    // As on Windows: text that does not fit is cut and the result is size - 1.
    size_t copied = std::min<size_t>(text.size(), size - 1);
    std::wmemcpy(out, text.data(), copied);
    out[copied] = 0;
    return static_cast<DWORD>(copied);
}
