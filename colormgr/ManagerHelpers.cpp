// Small helpers that the settings, the device code and the transforms share:
// shared texts, one text from the registry, dropping a transform.
#include "colormgr/ColorManager.h"

bool CColorManager::UpdateString(vell::TSharedArray<wchar_t>& target, wchar_t* text) {
    if (!text) return false;
    target = vell::TSharedArray<wchar_t>::FromText(text);
    return true;
}

vell::TSharedArray<wchar_t> CColorManager::CopyString(wchar_t* text) {
    if (!text) return {};
    return vell::TSharedArray<wchar_t>::FromText(text);
}

vell::TSharedArray<wchar_t> CColorManager::GetRegistryString(HKEY root, wchar_t* subKey, wchar_t* valueName) {
    HKEY key = nullptr;
    if (::RegOpenKeyW(root, subKey, &key) != ERROR_SUCCESS) return {};
    vell::TSharedArray<wchar_t> result;
    DWORD size = 0;
    if (::RegQueryValueExW(key, valueName, nullptr, nullptr, nullptr, &size) == ERROR_SUCCESS && size > 1) {
        vell::TSharedArray<wchar_t> value(size / sizeof(wchar_t) + 1);
        DWORD read = size;
        if (::RegQueryValueExW(key, valueName, nullptr, nullptr, reinterpret_cast<LPBYTE>(value.Get()), &read) ==
            ERROR_SUCCESS)
            result = value;
    }
    ::RegCloseKey(key);
    return result;
}

void CColorManager::DeleteTransform(HTRANSFORM& transform) {
    if (transform && m_pfnDeleteColorTransform) m_pfnDeleteColorTransform(transform);
    transform = nullptr;
}
