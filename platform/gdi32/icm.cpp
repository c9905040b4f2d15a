// The ICM side of device contexts: the profile a DC matches to, the ICM mode
// and the profiles associated with the DC's device.
#include <tesk/path.h>
#include <tesk/export_guard.h>

#include <cwchar>

#include "color_system.h"
#include "display.h"
#include "gdi_objects.h"
#include "icm_matching.h"

using namespace tesk;

namespace {

// The device string profile associations are kept under: a display's monitor
// identifier (what EnumDisplayDevicesW reports as DeviceID) or a printer's name.
std::wstring AssociationDevice(const gdi::DeviceContext& dc) {
    if (dc.kind == gdi::DeviceKind::Printer) return dc.printer.name;
    std::vector<display::Adapter> adapters = display::Current().Adapters();
    if (dc.adapter < adapters.size() && !adapters[dc.adapter].monitors.empty())
        return adapters[dc.adapter].monitors.front().id;
    return L"";
}

// The profile a DC matches to: the one set on it (for a display, the
// display's own profile), else the device's default association (the one
// associated last), else what the device itself supplies: a printer driver's
// profile, or the standard colour space for a display.
}  // namespace

std::string tesk::gdi::ProfileOf(const DeviceContext& dc) {
    if (dc.kind == gdi::DeviceKind::Display) {
        if (std::optional<std::string> own = display::Current().Profile(dc.adapter)) return *own;
    } else if (dc.profile) {
        return *dc.profile;
    }
    std::vector<std::string> associated = gdi::AssociatedProfiles(AssociationDevice(dc));
    if (!associated.empty()) return associated.back();
    if (dc.kind == gdi::DeviceKind::Printer) return dc.printer.driverProfile;
    return gdi::StandardProfile();
}

BOOL WINAPI GetICMProfileW(HDC hdc, LPDWORD pBufSize, LPWSTR pszFilename) try {
    auto lock = gdi::Lock();
    gdi::DeviceContext* dc = gdi::FindDeviceContext(hdc);
    if (!dc) return FALSE;
    if (!pBufSize) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    std::string profile = gdi::ProfileOf(*dc);
    if (profile.empty()) {
        SetLastError(ERROR_PROFILE_NOT_FOUND);
        return FALSE;
    }
    std::wstring name = path::ToWindows(profile);
    DWORD needed = DWORD(name.size() + 1);
    if (!pszFilename || *pBufSize < needed) {
        *pBufSize = needed;
        SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return FALSE;
    }
    std::wmemcpy(pszFilename, name.c_str(), needed);
    *pBufSize = needed;
    return TRUE;
} catch (...) {
    return tesk::FailAtBoundary(BOOL{FALSE});
}

BOOL WINAPI SetICMProfileW(HDC hdc, LPWSTR lpFileName) try {
    auto lock = gdi::Lock();
    gdi::DeviceContext* dc = gdi::FindDeviceContext(hdc);
    if (!dc) return FALSE;
    if (!lpFileName || !*lpFileName) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    std::string profile = gdi::ResolveProfile(lpFileName);
    if (!gdi::LooksLikeProfile(profile)) return FALSE;
    // A display's profile belongs to the display, so that the next DC on it
    // (and, under X11, every other program) sees it; other DCs keep their own.
    if (dc->kind == gdi::DeviceKind::Display) return display::Current().SetProfile(dc->adapter, profile);
    dc->profile = profile;
    return TRUE;
} catch (...) {
    return tesk::FailAtBoundary(BOOL{FALSE});
}

int WINAPI SetICMMode(HDC hdc, int mode) try {
    auto lock = gdi::Lock();
    gdi::DeviceContext* dc = gdi::FindDeviceContext(hdc);
    if (!dc) return 0;
    switch (mode) {
    case ICM_QUERY:
        return dc->icmMode;
    case ICM_ON:
    case ICM_OFF:
    case ICM_DONE_OUTSIDEDC:
        dc->icmMode = mode;
        return TRUE;
    default:
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
} catch (...) {
    return tesk::FailAtBoundary(0);
}

int WINAPI EnumICMProfilesW(HDC hdc, ICMENUMPROCW proc, LPARAM param) try {
    std::vector<std::string> profiles;
    {
        auto lock = gdi::Lock();
        gdi::DeviceContext* dc = gdi::FindDeviceContext(hdc);
        if (!dc) return -1;
        if (!proc) {
            SetLastError(ERROR_INVALID_PARAMETER);
            return -1;
        }
        profiles = gdi::AssociatedProfiles(AssociationDevice(*dc));
    }
    // The callback runs without the lock: it may well call GDI itself.
    if (profiles.empty()) return -1;
    int result = -1;
    for (const std::string& profile : profiles) {
        std::wstring name = path::ToWindows(profile);
        result = proc(name.data(), param);
        if (result == 0) break;
    }
    return result;
} catch (...) {
    return tesk::FailAtBoundary(-1);
}
