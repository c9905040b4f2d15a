// The display adapter and monitor in use, the device string for profile
// associations, associating profiles and the display's own profile.
#include <algorithm>
#include <cwchar>
#include <vector>

#include "colormgr/ColorManager.h"
#include "colormgr/ManagerTrace.h"
#include "devices/ProfileFileName.h"
#include "module/BindProc.h"

namespace {
constexpr UINT kDefaultMonitorProfileString = 10401;
constexpr DWORD kDisplayDeviceSize = 840;  // the record's size on Win64
constexpr DWORD kMonitorInfoSize = 104;
constexpr DWORD kWindowsColorSpace = 0x57696E20;  // 'Win '

using PFN_EnumDisplayDevicesW = decltype(&::EnumDisplayDevicesW);

// EnumDisplayDevicesW, taken from User32 for the length of one call.
class CUser32Devices {
public:
    CUser32Devices() {
        m_hModule = ::LoadLibraryW(L"User32.DLL");
        tesk::BindProc(m_hModule, "EnumDisplayDevicesW", m_pfnEnum);
    }
    ~CUser32Devices() {
        if (m_hModule) ::FreeLibrary(m_hModule);
    }
    CUser32Devices(const CUser32Devices&) = delete;
    CUser32Devices& operator=(const CUser32Devices&) = delete;

    bool Available() const { return m_pfnEnum != nullptr; }
    bool Query(const wchar_t* parent, DWORD index, DISPLAY_DEVICEW& device) const {
        device = DISPLAY_DEVICEW{};
        device.cb = kDisplayDeviceSize;
        return m_pfnEnum(parent, index, &device, 0) != FALSE;
    }

private:
    HMODULE m_hModule = nullptr;
    PFN_EnumDisplayDevicesW m_pfnEnum = nullptr;
};

// A copy of `text` in a fresh array of 514 characters.
vell::TSharedArray<wchar_t> DeviceText(const wchar_t* text) {
    vell::TSharedArray<wchar_t> copy(514);
    std::wcsncpy(copy.Get(), text, 513);
    return copy;
}

bool MonitorInfoOfWindow(HWND window, MONITORINFOEXW& info) {
    HMONITOR monitor = ::MonitorFromWindow(window, MONITOR_DEFAULTTOPRIMARY);
    if (!monitor) return false;
    info = MONITORINFOEXW{};
    info.cbSize = kMonitorInfoSize;
    return ::GetMonitorInfoW(monitor, reinterpret_cast<MONITORINFO*>(&info)) != FALSE;
}
}  // namespace

CString CColorManager::GetMonitorDeviceName(HWND hWnd) {
    CString name(L"DISPLAY");
    MONITORINFOEXW info;
    if (hWnd && MonitorInfoOfWindow(hWnd, info)) name = info.szDevice;
    return name;
}

bool CColorManager::GetDisplayMonitorInfo() {
    CUser32Devices devices;
    if (!devices.Available()) return false;

    DISPLAY_DEVICEW adapter;
    DISPLAY_DEVICEW monitor;
    if (!devices.Query(nullptr, 0, adapter)) return false;
    DWORD adapterIndex = 0;
    DWORD monitorIndex = 0;
    for (bool found = false; !found;) {
        Trace(CM_TRACE_INFO(L"CColorManager::GetDisplayMonitorInfo"), L"Adapter Device %d: %s - %s\n",
              static_cast<int>(adapterIndex), adapter.DeviceName, adapter.DeviceString);
        // Any state flag qualifies an adapter, not only the primary one.
        if (adapter.StateFlags != 0) {
            Trace(CM_TRACE_INFO(L"CColorManager::GetDisplayMonitorInfo"), L"Adapter %d: %s - %s is the primary adapter.\n",
                  static_cast<int>(adapterIndex), adapter.DeviceName, adapter.DeviceString);
            m_strAdapterString = DeviceText(adapter.DeviceString);
            m_strAdapterName = DeviceText(adapter.DeviceName);
            for (monitorIndex = 0; devices.Query(adapter.DeviceName, monitorIndex, monitor); ++monitorIndex) {
                Trace(CM_TRACE_INFO(L"CColorManager::GetDisplayMonitorInfo"), L"Monitor Device %d: %s - %s\n",
                      static_cast<int>(monitorIndex), monitor.DeviceName, monitor.DeviceString);
                if (monitor.StateFlags & DISPLAY_DEVICE_ATTACHED_TO_DESKTOP) {
                    found = true;
                    break;
                }
            }
            if (found) break;
        }
        if (!devices.Query(nullptr, ++adapterIndex, adapter)) return false;
    }

    Trace(CM_TRACE_INFO(L"CColorManager::GetDisplayMonitorInfo"),
          L"Adapter %d - Monitor %d: %s - %s is attached to the desktop.\n", static_cast<int>(adapterIndex),
          static_cast<int>(monitorIndex), monitor.DeviceName, monitor.DeviceString);
    m_strMonitorName = DeviceText(monitor.DeviceName);
    m_strMonitorID = DeviceText(monitor.DeviceID);

    HDC dc = ::CreateDCW(L"DISPLAY", nullptr, nullptr, nullptr);
    if (!dc) return false;
    m_strMonitorProfile = GetDefaultICMProfile(dc);
    ::DeleteDC(dc);
    if (!m_strMonitorProfile.IsNull() && m_strMonitorProfile.Get()[0] != 0) return true;

    DWORD size = 0;
    if (m_pfnGetStandardColorSpaceProfileW)
        m_pfnGetStandardColorSpaceProfileW(nullptr, kWindowsColorSpace, nullptr, &size);
    if (size != 0) {
        std::vector<wchar_t> path(static_cast<size_t>(size) + 1, L'\0');
        if (!m_pfnGetStandardColorSpaceProfileW(nullptr, kWindowsColorSpace, path.data(), &size)) return false;
        CString fileName = colormgr::FileNameOfPath(path.data());
        UpdateString(m_strMonitorProfile, const_cast<wchar_t*>(fileName.GetString()));
    } else {
        CString defaultName;
        defaultName.LoadString(kDefaultMonitorProfileString);
        UpdateString(m_strMonitorProfile, const_cast<wchar_t*>(defaultName.GetString()));
    }
    return true;
}

vell::TSharedArray<wchar_t> CColorManager::GetDeviceNameForMonitor(HWND& hWnd) {
    MONITORINFOEXW info;
    if (!hWnd || !MonitorInfoOfWindow(hWnd, info)) return m_strMonitorID;
    CUser32Devices devices;
    if (!devices.Available()) return m_strMonitorID;
    DISPLAY_DEVICEW monitor;
    for (DWORD index = 0; devices.Query(info.szDevice, index, monitor); ++index) {
        Trace(CM_TRACE_INFO(L"CColorManager::GetDeviceNameForMonitor"), L"Monitor Device %d: %s - %s\n",
              static_cast<int>(index), monitor.DeviceName, monitor.DeviceString);
        if (monitor.StateFlags & DISPLAY_DEVICE_ATTACHED_TO_DESKTOP) {
            CString id;
            id.Format(L"%s", monitor.DeviceID);
            return CopyString(const_cast<wchar_t*>(id.GetString()));
        }
    }
    return vell::TSharedArray<wchar_t>::FromText(L"");
}

bool CColorManager::AssociateMonitorProfile(const wchar_t* pszProfile, HWND& hWnd) {
    if (!m_bLoaded || !m_pfnAssociateColorProfileWithDeviceW || !m_pfnGetColorDirectoryW) return false;
    vell::TSharedArray<wchar_t> device = hWnd ? GetDeviceNameForMonitor(hWnd) : CopyString(m_strMonitorID.Get());
    return m_pfnAssociateColorProfileWithDeviceW(nullptr, pszProfile, device.Get()) == 1;
}

bool CColorManager::DisassociateMonitorProfile(const wchar_t* pszProfile, HWND& hWnd) {
    if (!m_bLoaded || !m_pfnDisassociateColorProfileFromDeviceW || !m_pfnGetColorDirectoryW) return false;
    vell::TSharedArray<wchar_t> device = hWnd ? GetDeviceNameForMonitor(hWnd) : CopyString(m_strMonitorID.Get());
    return m_pfnDisassociateColorProfileFromDeviceW(nullptr, pszProfile, device.Get()) == 1;
}

// True once there was something to disassociate, even when one call failed.
bool CColorManager::DisassociateAllMonitorProfiles(HWND& hWnd) {
    CString deviceName = GetMonitorDeviceName(hWnd);
    HDC dc = ::CreateDCW(deviceName.GetString(), nullptr, nullptr, nullptr);
    if (!dc) return false;
    std::vector<CString> names;
    if (m_pfnEnumICMProfilesW)
        m_pfnEnumICMProfilesW(dc, &CColorManager::EnumICMProfilesProcCallback, reinterpret_cast<LPARAM>(&names));
    bool result = false;
    if (!names.empty()) {
        for (const CString& name : names)
            if (!DisassociateMonitorProfile(name.GetString(), hWnd)) break;
        result = true;
    }
    ::DeleteDC(dc);
    return result;
}

bool CColorManager::SetDisplayMonitorProfile(vell::TSharedArray<wchar_t>& strName) {
    if (strName.IsNull() || strName.Get()[0] == 0 || !m_hGDI32) return false;
    CString path;
    path.Format(L"%s\\%s", ColorDirectory().GetString(), strName.Get());

    HDC dc = ::CreateDCW(L"DISPLAY", nullptr, nullptr, nullptr);
    decltype(&::SetICMProfileW) setProfile = nullptr;
    tesk::BindProc(m_hGDI32, "SetICMProfileW", setProfile);
    bool result = false;
    if (setProfile) result = setProfile(dc, const_cast<wchar_t*>(path.GetString())) != FALSE;
    if (dc) ::DeleteDC(dc);
    return result;
}
