// Saving the display's gamma ramp, setting one from a profile's calibration
// table and restoring the saved one (once).
#include <algorithm>
#include <cstring>
#include <new>

#include "colormgr/ColorManager.h"

namespace {
constexpr size_t kRampValues = 768;  // red, green, blue, 256 each
}

bool CColorManager::SaveOriginialDeviceGammaRamp(HWND& hWnd) {
    if (!m_pSavedGammaRamp) {
        m_pSavedGammaRamp = new (std::nothrow) uint16_t[kRampValues];
        if (!m_pSavedGammaRamp) return false;
    }
    std::fill_n(m_pSavedGammaRamp, kRampValues, uint16_t{0});
    // A failed read leaves the zeroed ramp saved; a later restore applies it.
    CString deviceName = GetMonitorDeviceName(hWnd);
    HDC dc = ::CreateDCW(deviceName.GetString(), nullptr, nullptr, nullptr);
    if (!dc) return false;
    const bool read = m_pfnGetDeviceGammaRamp && m_pfnGetDeviceGammaRamp(dc, m_pSavedGammaRamp) != FALSE;
    ::DeleteDC(dc);
    return read;
}

// pRamp must hold 768 values whatever nCount says; nCount only decides
// whether the saved ramp is applied first.
bool CColorManager::SetDeviceGammaRampFromVCGT(HWND hWnd, uint16_t* pRamp, int nCount, bool bRestore) {
    const uint16_t* source = bRestore ? m_pSavedGammaRamp : pRamp;
    if (!source || !m_pfnSetDeviceGammaRamp) return false;
    uint16_t ramp[kRampValues];
    std::memcpy(ramp, source, sizeof(ramp));

    CString deviceName = hWnd ? GetMonitorDeviceName(hWnd) : CString(L"DISPLAY");
    HDC dc = ::CreateDCW(deviceName.GetString(), nullptr, nullptr, nullptr);

    if (bRestore) {
        if (!dc) return false;
        const bool restored = m_pfnSetDeviceGammaRamp(dc, ramp) != FALSE;
        if (restored) {
            delete[] m_pSavedGammaRamp;
            m_pSavedGammaRamp = nullptr;
        }
        ::DeleteDC(dc);
        return restored;
    }

    bool result = false;
    if (nCount == static_cast<int>(kRampValues) && m_pfnSetDeviceGammaRamp(dc, ramp)) {
        result = true;
    } else {
        if (m_pSavedGammaRamp) {
            uint16_t saved[kRampValues];
            std::memcpy(saved, m_pSavedGammaRamp, sizeof(saved));
            m_pfnSetDeviceGammaRamp(dc, saved);
        }
        result = m_pfnSetDeviceGammaRamp(dc, ramp) != FALSE;
    }
    if (dc) ::DeleteDC(dc);
    return result;
}
