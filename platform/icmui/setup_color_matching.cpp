// SetupColorMatchingW: the colour-matching dialog.
#include <icm.h>
#include <windows.h>

#include <cstdlib>

namespace {

bool HasDisplay() {
    const char* display = std::getenv("DISPLAY");
    return display && *display;
}

}  // namespace

BOOL WINAPI SetupColorMatchingW(PCOLORMATCHSETUPW pcms) {
    if (!pcms || pcms->dwSize < sizeof(COLORMATCHSETUPW) || pcms->dwVersion < COLOR_MATCH_VERSION) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    // No dialog can be shown without a display; the record stays untouched.
    if (!HasDisplay()) {
        SetLastError(ERROR_NOT_SUPPORTED);
        return FALSE;
    }
    // This build has no dialog toolkit.
    SetLastError(ERROR_NOT_SUPPORTED);
    return FALSE;
}
