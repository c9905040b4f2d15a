// GetCMMInfo: the colour engine behind every transform is Little CMS 2.
#include <windows.h>

#include <icm.h>
#include <lcms2.h>
#include <tesk/export_guard.h>

#include "transform_handles.h"

using namespace tesk::mscms;

DWORD WINAPI GetCMMInfo(HTRANSFORM hColorTransform, DWORD dwInfo) try {
    if (!FindTransform(hColorTransform)) return 0;
    // The engine targets Windows 2000 and later, never Windows 95.
    constexpr DWORD kWindowsVersion = 0x00050000;
    switch (dwInfo) {
    case CMM_WIN_VERSION:
    case CMM_VERSION: return kWindowsVersion;
    case CMM_IDENT: return 'lcms';  // lcms2's CMM signature in the ICC registry
    case CMM_DLL_VERSION: return static_cast<DWORD>(cmsGetEncodedCMMversion());
    default:
        // No driver level, description or logo resources exist for it.
        SetLastError(ERROR_NOT_SUPPORTED);
        return 0;
    }
} catch (...) {
    return tesk::FailAtBoundary(DWORD{0});
}
