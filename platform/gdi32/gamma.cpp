// Gamma ramps of display device contexts: three arrays of 256 WORDs.
#include <tesk/export_guard.h>

#include <cstring>

#include "display.h"
#include "gdi_objects.h"

using namespace tesk;

namespace {

// Windows refuses ramps that would make the screen unreadable. We refuse a
// channel that runs backwards, but let one step down through: the module
// reads a calibration table's very last value as zero, so a real monitor
// profile's ramp drops once at its end and must still load. Flat ramps, all
// zero ones included, are accepted.
bool IsAcceptableRamp(const WORD* ramp) {
    for (size_t channel = 0; channel < 3; ++channel) {
        const WORD* values = ramp + channel * display::kGammaEntries;
        int stepsDown = 0;
        for (size_t i = 1; i < display::kGammaEntries; ++i)
            if (values[i] < values[i - 1] && ++stepsDown > 1) return false;
    }
    return true;
}

gdi::DeviceContext* DisplayContext(HDC hdc) {
    gdi::DeviceContext* dc = gdi::FindDeviceContext(hdc);
    if (dc && dc->kind != gdi::DeviceKind::Display) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    return dc;
}

}  // namespace

BOOL WINAPI GetDeviceGammaRamp(HDC hdc, LPVOID lpRamp) try {
    auto lock = gdi::Lock();
    gdi::DeviceContext* dc = DisplayContext(hdc);
    if (!dc) return FALSE;
    if (!lpRamp) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    display::GammaRamp ramp;
    if (!display::Current().GetGamma(dc->adapter, ramp) || ramp.size() != 3 * display::kGammaEntries) {
        SetLastError(ERROR_NOT_SUPPORTED);
        return FALSE;
    }
    std::memcpy(lpRamp, ramp.data(), ramp.size() * sizeof(WORD));
    return TRUE;
} catch (...) {
    return tesk::FailAtBoundary(BOOL{FALSE});
}

BOOL WINAPI SetDeviceGammaRamp(HDC hdc, LPVOID lpRamp) try {
    auto lock = gdi::Lock();
    gdi::DeviceContext* dc = DisplayContext(hdc);
    if (!dc) return FALSE;
    if (!lpRamp || !IsAcceptableRamp(static_cast<const WORD*>(lpRamp))) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    const WORD* values = static_cast<const WORD*>(lpRamp);
    display::GammaRamp ramp(values, values + 3 * display::kGammaEntries);
    if (!display::Current().SetGamma(dc->adapter, ramp)) {
        SetLastError(ERROR_NOT_SUPPORTED);
        return FALSE;
    }
    return TRUE;
} catch (...) {
    return tesk::FailAtBoundary(BOOL{FALSE});
}
