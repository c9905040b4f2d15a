// SetupColorMatchingW: the colour-matching dialog.
#include <windows.h>

#include <icm.h>
#include <tesk/export_guard.h>

#include "choices.h"
#include "dialog_module.h"

using namespace tesk;

BOOL WINAPI SetupColorMatchingW(PCOLORMATCHSETUPW pcms) try {
    if (!pcms || pcms->dwSize < sizeof(COLORMATCHSETUPW) || pcms->dwVersion < COLOR_MATCH_VERSION) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    icmui::Choices choices = icmui::ReadRecord(*pcms);
    switch (icmui::RunDialogFromModule(*pcms, choices)) {
    case icmui::DialogResult::Accepted:
        return icmui::WriteRecord(choices, *pcms) ? TRUE : FALSE;
    case icmui::DialogResult::Cancelled:
        // A cancelled dialog is not an error: the caller tells it by last error 0.
        SetLastError(ERROR_SUCCESS);
        return FALSE;
    case icmui::DialogResult::Unavailable:
        break;
    }
    // No dialog can be shown (no display, or no GTK); the record stays untouched.
    SetLastError(ERROR_NOT_SUPPORTED);
    return FALSE;
} catch (...) {
    return tesk::FailAtBoundary(BOOL{FALSE});
}
