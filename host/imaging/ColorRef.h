// A colour of the imaging library: 8-bit red, green, blue and alpha, plus the
// palette index that stands for it in indexed images.
#pragma once
#include <windows.h>

class CColorRef {
public:
    constexpr CColorRef() = default;
    constexpr CColorRef(BYTE red, BYTE green, BYTE blue, BYTE alpha = 255, int index = 0)
        : m_bRed(red), m_bGreen(green), m_bBlue(blue), m_bAlpha(alpha), m_nIndex(index) {}
    // From a COLORREF (0x00BBGGRR), opaque.
    static constexpr CColorRef FromCOLORREF(COLORREF c) {
        return CColorRef(BYTE(c & 0xFF), BYTE((c >> 8) & 0xFF), BYTE((c >> 16) & 0xFF));
    }

    constexpr BYTE GetRed() const { return m_bRed; }
    constexpr BYTE GetGreen() const { return m_bGreen; }
    constexpr BYTE GetBlue() const { return m_bBlue; }
    constexpr BYTE GetAlpha() const { return m_bAlpha; }
    constexpr int GetIndex() const { return m_nIndex; }
    constexpr COLORREF ToCOLORREF() const { return COLORREF(m_bRed | (m_bGreen << 8) | (DWORD(m_bBlue) << 16)); }
    constexpr bool operator==(const CColorRef&) const = default;

private:
    BYTE m_bRed = 0;
    BYTE m_bGreen = 0;
    BYTE m_bBlue = 0;
    BYTE m_bAlpha = 255;
    int m_nIndex = 0;
};
