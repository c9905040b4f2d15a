// Display adapters and monitors, the desktop window and its device context.
#include <windows.h>
#include <tesk/export_guard.h>

#include <cwchar>
#include <mutex>
#include <set>

#include "display.h"

using namespace tesk;

namespace {

// Windows byte offsets of the DISPLAY_DEVICEW fields' ends (two bytes a character).
constexpr DWORD kWindowsDeviceNameEnd = 4 + 32 * 2;
constexpr DWORD kWindowsDeviceStringEnd = kWindowsDeviceNameEnd + 128 * 2;
constexpr DWORD kWindowsStateFlagsEnd = kWindowsDeviceStringEnd + 4;
constexpr DWORD kWindowsDeviceIdEnd = kWindowsStateFlagsEnd + 128 * 2;
constexpr DWORD kWindowsDisplayDeviceSize = kWindowsDeviceIdEnd + 128 * 2;  // 840
constexpr DWORD kWindowsMonitorInfoSize = 40;
constexpr DWORD kWindowsMonitorInfoExSize = 40 + 32 * 2;  // 104

// The desktop window stands for the whole screen. Other windows are the
// display system's (under X11 an HWND carries the X window's id); the
// virtual display has none.
const HWND kDesktopWindow = reinterpret_cast<HWND>(uintptr_t(0x10010));
// Monitors are numbered by their adapter's position.
constexpr uintptr_t kFirstMonitorHandle = 0x4D0001;

std::mutex g_mutex;
std::set<HDC> g_windowDcs;

void CopyName(WCHAR* target, size_t capacity, const std::wstring& text) {
    std::wcsncpy(target, text.c_str(), capacity - 1);
    target[capacity - 1] = 0;
}

void FillDevice(DISPLAY_DEVICEW& out, DWORD size, const std::wstring& name, const std::wstring& string, DWORD flags,
                const std::wstring& id, const std::wstring& key) {
    // Only fields within the caller's size are written.
    CopyName(out.DeviceName, 32, name);
    if (size >= kWindowsDeviceStringEnd) CopyName(out.DeviceString, 128, string);
    if (size >= kWindowsStateFlagsEnd) out.StateFlags = flags;
    if (size >= kWindowsDeviceIdEnd) CopyName(out.DeviceID, 128, id);
    if (size >= kWindowsDisplayDeviceSize) CopyName(out.DeviceKey, 128, key);
}

HMONITOR MonitorHandle(size_t adapter) { return reinterpret_cast<HMONITOR>(kFirstMonitorHandle + adapter); }

}  // namespace

BOOL WINAPI EnumDisplayDevicesW(LPCWSTR lpDevice, DWORD iDevNum, PDISPLAY_DEVICEW lpDisplayDevice, DWORD dwFlags) try {
    (void)dwFlags;  // device interface names are not distinguished from identifiers
    if (!lpDisplayDevice || lpDisplayDevice->cb < kWindowsDeviceNameEnd) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    std::vector<display::Adapter> adapters = display::Current().Adapters();
    const DWORD size = lpDisplayDevice->cb;
    if (!lpDevice) {
        if (iDevNum >= adapters.size()) return FALSE;
        const display::Adapter& adapter = adapters[iDevNum];
        DWORD flags = (adapter.attached ? DISPLAY_DEVICE_ATTACHED_TO_DESKTOP : 0) |
                      (adapter.primary ? DISPLAY_DEVICE_PRIMARY_DEVICE : 0);
        FillDevice(*lpDisplayDevice, size, adapter.name, adapter.string, flags, adapter.id, adapter.key);
        return TRUE;
    }
    for (const display::Adapter& adapter : adapters) {
        if (!display::SameDeviceName(adapter.name, lpDevice)) continue;
        if (iDevNum >= adapter.monitors.size()) return FALSE;
        const display::Monitor& monitor = adapter.monitors[iDevNum];
        DWORD flags = monitor.attached ? (DISPLAY_DEVICE_ACTIVE | DISPLAY_DEVICE_ATTACHED) : 0;
        FillDevice(*lpDisplayDevice, size, monitor.name, monitor.string, flags, monitor.id, monitor.key);
        return TRUE;
    }
    return FALSE;
} catch (...) {
    return tesk::FailAtBoundary(BOOL{FALSE});
}

HWND WINAPI GetDesktopWindow() try {
    return kDesktopWindow;
} catch (...) {
    return tesk::FailAtBoundary(HWND{});
}

HMONITOR WINAPI MonitorFromWindow(HWND hwnd, DWORD dwFlags) try {
    std::optional<size_t> primary = display::FindAdapter(nullptr);
    if (!primary) return nullptr;
    if (hwnd == kDesktopWindow) return MonitorHandle(*primary);
    if (hwnd)
        if (std::optional<RECT> rect = display::Current().WindowRect(reinterpret_cast<uintptr_t>(hwnd)))
            if (std::optional<size_t> adapter = display::AdapterShowing(*rect)) return MonitorHandle(*adapter);
    // An unknown window, or one on no monitor: the flags decide.
    if (dwFlags == MONITOR_DEFAULTTOPRIMARY || dwFlags == MONITOR_DEFAULTTONEAREST) return MonitorHandle(*primary);
    return nullptr;
} catch (...) {
    return tesk::FailAtBoundary(HMONITOR{});
}

BOOL WINAPI GetMonitorInfoW(HMONITOR hMonitor, LPMONITORINFO lpmi) try {
    std::vector<display::Adapter> adapters = display::Current().Adapters();
    uintptr_t value = reinterpret_cast<uintptr_t>(hMonitor);
    if (value < kFirstMonitorHandle || value - kFirstMonitorHandle >= adapters.size()) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    if (!lpmi || lpmi->cbSize < kWindowsMonitorInfoSize) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    const display::Adapter& adapter = adapters[value - kFirstMonitorHandle];
    lpmi->rcMonitor = adapter.bounds;
    lpmi->rcWork = adapter.bounds;
    lpmi->dwFlags = adapter.primary ? MONITORINFOF_PRIMARY : 0;
    if (lpmi->cbSize >= kWindowsMonitorInfoExSize)
        CopyName(reinterpret_cast<MONITORINFOEXW*>(lpmi)->szDevice, CCHDEVICENAME, adapter.name);
    return TRUE;
} catch (...) {
    return tesk::FailAtBoundary(BOOL{FALSE});
}

HDC WINAPI GetDC(HWND hWnd) try {
    HDC dc = nullptr;
    if (!hWnd || hWnd == kDesktopWindow) {
        dc = CreateDCW(L"DISPLAY", nullptr, nullptr, nullptr);
    } else {
        dc = display::CreateWindowContext(reinterpret_cast<uintptr_t>(hWnd));
        if (!dc) SetLastError(ERROR_INVALID_WINDOW_HANDLE);
    }
    if (dc) {
        std::lock_guard lock(g_mutex);
        g_windowDcs.insert(dc);
    }
    return dc;
} catch (...) {
    return tesk::FailAtBoundary(HDC{});
}

int WINAPI ReleaseDC(HWND hWnd, HDC hDC) try {
    (void)hWnd;
    {
        std::lock_guard lock(g_mutex);
        if (!g_windowDcs.erase(hDC)) return 0;
    }
    return DeleteDC(hDC) ? 1 : 0;
} catch (...) {
    return tesk::FailAtBoundary(0);
}
