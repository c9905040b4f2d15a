// The platform's colour-matching dialog, pre-filled from the settings; the
// user's choices come back through the arguments.
#include <cwchar>

#include "colormgr/ColorManager.h"

namespace {
constexpr DWORD kRecordSize = 136;  // the record's size on Win64
constexpr DWORD kProfileBufferLength = 260;
constexpr DWORD kAlwaysSet = CMS_SETRENDERINTENT | CMS_SETPROOFINTENT | CMS_SETMONITORPROFILE |
                             CMS_SETPRINTERPROFILE | CMS_SETTARGETPROFILE | CMS_USEDESCRIPTION;

void FillBuffer(wchar_t (&buffer)[kProfileBufferLength], bool use, const wchar_t* text) {
    buffer[0] = 0;
    if (use && text) std::wcsncpy(buffer, text, kProfileBufferLength - 1);
    buffer[kProfileBufferLength - 1] = 0;
}
}  // namespace

bool CColorManager::ColorMatchUI(HWND hWnd, bool& bEnableICM, bool& bProofing,
                                 vell::TSharedArray<wchar_t>& strMonitorProfile,
                                 vell::TSharedArray<wchar_t>& strPrinterProfile,
                                 vell::TSharedArray<wchar_t>& strTargetProfile, uint32_t& dwRenderIntent,
                                 uint32_t& dwProofingIntent) {
    if (!hWnd || !m_pfnSetupColorMatchingW) return false;

    wchar_t monitorProfile[kProfileBufferLength];
    wchar_t printerProfile[kProfileBufferLength];
    wchar_t targetProfile[kProfileBufferLength];
    FillBuffer(monitorProfile, !m_strMonitorProfile.IsNull(), m_strMonitorProfile.Get());
    FillBuffer(printerProfile, !m_strPrinterProfile.IsNull(), strPrinterProfile.Get());
    FillBuffer(targetProfile, !m_strProofProfile.IsNull(), strTargetProfile.Get());
    vell::TSharedArray<wchar_t> displayName = GetDeviceNameForMonitor(hWnd);

    COLORMATCHSETUPW setup{};
    setup.dwSize = kRecordSize;
    setup.dwVersion = COLOR_MATCH_VERSION;
    setup.dwFlags = kAlwaysSet;
    if (!bEnableICM) setup.dwFlags |= CMS_DISABLEICM;
    if (m_bProof || bProofing) setup.dwFlags |= CMS_ENABLEPROOFING;
    setup.hwndOwner = hWnd;
    setup.pSourceName = m_strWorkingSpace.Get();
    setup.pDisplayName = displayName.Get();
    setup.pPrinterName = m_strPrinterName.Get();
    setup.dwRenderIntent = dwRenderIntent;
    setup.dwProofingIntent = dwProofingIntent;
    setup.pMonitorProfile = monitorProfile;
    setup.ccMonitorProfile = kProfileBufferLength;
    setup.pPrinterProfile = printerProfile;
    setup.ccPrinterProfile = kProfileBufferLength;
    setup.pTargetProfile = targetProfile;
    setup.ccTargetProfile = kProfileBufferLength;

    ::SetLastError(0);
    const BOOL accepted = m_pfnSetupColorMatchingW(&setup);
    if (!accepted && ::GetLastError() == 0) return true;  // cancelled: nothing changes

    // A failed call writes its unchanged values back as well.
    bProofing = (setup.dwFlags & CMS_ENABLEPROOFING) != 0;
    bEnableICM = (setup.dwFlags & CMS_DISABLEICM) == 0;
    dwRenderIntent = setup.dwRenderIntent;
    dwProofingIntent = setup.dwProofingIntent;
    monitorProfile[kProfileBufferLength - 1] = 0;
    printerProfile[kProfileBufferLength - 1] = 0;
    targetProfile[kProfileBufferLength - 1] = 0;
    if (monitorProfile[0] != 0) {
        strMonitorProfile = CopyString(monitorProfile);
        AssociateMonitorProfile(strMonitorProfile.Get(), hWnd);
        SetDisplayMonitorProfile(strMonitorProfile);
    }
    if (printerProfile[0] != 0) strPrinterProfile = CopyString(printerProfile);
    if (targetProfile[0] != 0) strTargetProfile = CopyString(targetProfile);
    return accepted != FALSE;
}
