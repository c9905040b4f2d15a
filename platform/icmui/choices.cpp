#include "choices.h"

#include <cwchar>

namespace tesk::icmui {
namespace {

std::wstring BufferText(PCWSTR buffer, DWORD capacity) {
    if (!buffer || capacity == 0) return L"";
    return std::wstring(buffer, wcsnlen(buffer, capacity));
}

bool CopyOut(const std::wstring& text, PWSTR buffer, DWORD capacity) {
    if (!buffer || text.size() + 1 > capacity) return false;
    std::wmemcpy(buffer, text.c_str(), text.size() + 1);
    return true;
}

bool IsIntent(DWORD intent) { return intent <= INTENT_ABSOLUTE_COLORIMETRIC; }

}  // namespace

Choices ReadRecord(const COLORMATCHSETUPW& setup) {
    Choices choices;
    choices.enableIcm = !(setup.dwFlags & CMS_DISABLEICM);
    choices.proofing = (setup.dwFlags & CMS_ENABLEPROOFING) != 0;
    if (setup.dwFlags & CMS_SETRENDERINTENT && IsIntent(setup.dwRenderIntent)) choices.renderIntent = setup.dwRenderIntent;
    if (setup.dwFlags & CMS_SETPROOFINTENT && IsIntent(setup.dwProofingIntent)) choices.proofIntent = setup.dwProofingIntent;
    if (setup.dwFlags & CMS_SETMONITORPROFILE)
        choices.monitorProfile = BufferText(setup.pMonitorProfile, setup.ccMonitorProfile);
    if (setup.dwFlags & CMS_SETPRINTERPROFILE)
        choices.printerProfile = BufferText(setup.pPrinterProfile, setup.ccPrinterProfile);
    if (setup.dwFlags & CMS_SETTARGETPROFILE)
        choices.targetProfile = BufferText(setup.pTargetProfile, setup.ccTargetProfile);
    return choices;
}

bool WriteRecord(const Choices& choices, COLORMATCHSETUPW& setup) {
    setup.dwFlags &= ~DWORD(CMS_DISABLEICM | CMS_ENABLEPROOFING | CMS_MONITOROVERFLOW | CMS_PRINTEROVERFLOW |
                            CMS_TARGETOVERFLOW);
    if (!choices.enableIcm) setup.dwFlags |= CMS_DISABLEICM;
    if (choices.proofing) setup.dwFlags |= CMS_ENABLEPROOFING;
    setup.dwRenderIntent = choices.renderIntent;
    setup.dwProofingIntent = choices.proofIntent;
    bool fits = true;
    if (!CopyOut(choices.monitorProfile, setup.pMonitorProfile, setup.ccMonitorProfile))
        setup.dwFlags |= CMS_MONITOROVERFLOW, fits = false;
    if (!CopyOut(choices.printerProfile, setup.pPrinterProfile, setup.ccPrinterProfile))
        setup.dwFlags |= CMS_PRINTEROVERFLOW, fits = false;
    if (!CopyOut(choices.targetProfile, setup.pTargetProfile, setup.ccTargetProfile))
        setup.dwFlags |= CMS_TARGETOVERFLOW, fits = false;
    if (!fits) SetLastError(ERROR_INSUFFICIENT_BUFFER);
    return fits;
}

}  // namespace tesk::icmui
