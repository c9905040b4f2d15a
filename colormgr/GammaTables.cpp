// The three look-up tables of the table mode.
#include <cmath>

#include "colormgr/ColorManager.h"

namespace {
void FillGammaTable(uint8_t table[256], double gamma) {
    const double exponent = 1.0 / gamma;
    const double scale = 255.0 / std::pow(255.0, exponent);
    for (int i = 0; i < 256; ++i) {
        // Truncation toward zero of the rounded value; the low byte is kept.
        // A value no integer can hold (a gamma of 0 or below) truncates to the
        // processor's "integer indefinite", whose low byte is 0.
        const double rounded = std::pow(static_cast<double>(i), exponent) * scale + 0.5;
        const bool representable = std::isfinite(rounded) && rounded > -9.2e18 && rounded < 9.2e18;
        const long long value = representable ? static_cast<long long>(rounded) : 0;
        table[i] = static_cast<uint8_t>(value & 0xFF);
    }
}
}  // namespace

void CColorManager::BuildTables() {
    if (m_dGamma0 == 1.0 && m_dGamma1 == 1.0 && m_dGamma2 == 1.0) {
        for (int i = 0; i < 256; ++i)
            m_abGammaTable0[i] = m_abGammaTable1[i] = m_abGammaTable2[i] = static_cast<uint8_t>(i);
        return;
    }
    FillGammaTable(m_abGammaTable0, m_dGamma0);
    FillGammaTable(m_abGammaTable1, m_dGamma1);
    FillGammaTable(m_abGammaTable2, m_dGamma2);
}
