// The default printer, the profile of a device context, and switching a
// printer context to the printer profile and back.
#include <algorithm>
#include <vector>

#include "colormgr/ColorManager.h"
#include "devices/ProfileFileName.h"
#include "module/BindProc.h"

#ifndef HKEY_CURRENT_CONFIG
#define HKEY_CURRENT_CONFIG ((HKEY)(ULONG_PTR)((LONG)0x80000005))
#endif

namespace {
constexpr DWORD kInsufficientBuffer = 122;
constexpr DWORD kDefaultProfilePathLength = 260;

using PFN_GetICMProfileW = decltype(&::GetICMProfileW);

vell::TSharedArray<wchar_t> SharedText(const CString& text) {
    return vell::TSharedArray<wchar_t>::FromText(text.GetString());
}
}  // namespace

vell::TSharedArray<wchar_t> CColorManager::GetDefaultPrinterName() {
    const DWORD version = ::GetVersion();
    if (version >= 0x80000000u) {
        // The old consumer line keeps the default printer in the registry.
        if (LOBYTE(version) < 4) return {};
        wchar_t subKey[] = L"SYSTEM\\CurrentControlSet\\Control\\Print\\Printers";
        wchar_t valueName[] = L"Default";
        return GetRegistryString(HKEY_CURRENT_CONFIG, subKey, valueName);
    }
    wchar_t device[520] = {};
    ::GetProfileStringW(L"windows", L"device", L"", device, 520);
    device[519] = 0;
    if (device[0] == 0) return {};
    CString value(device);
    const int comma = value.Find(L',');
    CString printer;
    printer.Format(L"%s", (comma >= 0 ? value.Left(comma) : value).GetString());
    return SharedText(printer);
}

vell::TSharedArray<wchar_t> CColorManager::GetDefaultICMProfile(HDC hdc) {
    HMODULE gdi = ::LoadLibraryW(L"Gdi32.DLL");
    if (!gdi) return {};
    PFN_GetICMProfileW getProfile = nullptr;
    tesk::BindProc(gdi, "GetICMProfileW", getProfile);
    vell::TSharedArray<wchar_t> result;
    if (getProfile) {
        DWORD size = 0;
        bool usable = true;
        if (!getProfile(hdc, &size, nullptr)) {
            if (::GetLastError() == kInsufficientBuffer)
                usable = size != 0;
            else
                size = kDefaultProfilePathLength;
        } else if (size == 0) {
            usable = false;
        }
        if (usable) {
            std::vector<wchar_t> path(static_cast<size_t>(size) + 1, L'\0');
            if (getProfile(hdc, &size, path.data())) {
                path.back() = 0;
                result = SharedText(colormgr::FileNameOfPath(path.data()));
            }
        }
    }
    ::FreeLibrary(gdi);
    return result;
}

void CColorManager::SetDefaultPrinterW(const wchar_t* pszPrinter) {
    if (!pszPrinter) return;
    m_strPrinterName = CopyString(const_cast<wchar_t*>(pszPrinter));
    wchar_t* name = m_strPrinterName.Get();
    LONG size = ::DocumentPropertiesW(nullptr, nullptr, name, nullptr, nullptr, 0);
    if (size <= 0) return;
    std::vector<BYTE> deviceMode(static_cast<size_t>(size) * 2);
    auto* mode = reinterpret_cast<DEVMODEW*>(deviceMode.data());
    ::DocumentPropertiesW(nullptr, nullptr, name, mode, nullptr, DM_OUT_BUFFER);
    HDC dc = ::CreateDCW(nullptr, name, nullptr, mode);
    if (!dc) return;
    m_strPrinterProfile = GetDefaultICMProfile(dc);
    ::DeleteDC(dc);
}

bool CColorManager::SetupDC(HDC hdc) {
    if (m_eMode != VCM_MODE_PROFILES || m_strPrinterProfile.IsNull()) return false;
    CString path;
    path.Format(L"%s\\%s", ColorDirectory().GetString(), m_strPrinterProfile.Get());
    if (!::SetICMProfileW(hdc, const_cast<wchar_t*>(path.GetString()))) return false;
    return ::SetICMMode(hdc, ICM_ON) != 0;
}

void CColorManager::CleanupDC(HDC hdc) {
    if (hdc && m_eMode == VCM_MODE_PROFILES) ::SetICMMode(hdc, ICM_OFF);
}
