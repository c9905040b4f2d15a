// Curve, gamma-table and colorimetry structures shared by the profile reader,
// the profile writer and the colour manager.
#pragma once
#include <windows.h>

#include <cstdint>

// A sampled or single-gamma tone curve.
struct SICCCurveType {
    // 0: identity; 1: a single gamma in m_fGamma; 2 or more: sampled curve.
    uint32_t m_nCount;
    // Sampled values 0..65535 in host order, allocated with new[] when
    // m_nCount >= 2 and released by whoever holds the structure.
    uint16_t* m_pEntries;
    float m_fGamma;
};

// A parametric ('para') curve as this module keeps it; there is no slot for
// the seventh ICC parameter.
struct SICCParametricCurveType {
    double m_dG;
    uint16_t m_nFunctionType;
    // One more than the function type (1..5): the count the writer uses.
    uint32_t m_nParamCount;
    double m_dA;
    double m_dB;
    double m_dC;
    double m_dD;
    double m_dE;
};

// One channel's tone curve as read from a TRC tag.
struct TRCCURVE {
    // 'curv' or 'para'; selects the member of the union below.
    uint32_t m_nSignature;
    union {
        SICCCurveType m_curve;
        SICCParametricCurveType m_para;
    };
};

// An ICC four-character signature as a number ("curv" -> 0x63757276), the
// value a multi-character literal has, without the compiler warning about one.
constexpr uint32_t IccSignature(const char (&text)[5]) {
    return uint32_t(uint8_t(text[0])) << 24 | uint32_t(uint8_t(text[1])) << 16 | uint32_t(uint8_t(text[2])) << 8 |
           uint32_t(uint8_t(text[3]));
}

inline constexpr uint32_t kCurveTypeSignature = IccSignature("curv");
inline constexpr uint32_t kParametricCurveTypeSignature = IccSignature("para");

// Video-card gamma ('vcgt') table form.
struct SVCGTTable {
    uint16_t m_nChannels;
    uint16_t m_nEntryCount;
    uint16_t m_nEntrySize;
    // channels x entry count x entry size values, allocated with new[];
    // released by the caller.
    uint16_t* m_pData;
};

// Video-card gamma formula form: s15Fixed16 bit patterns in host order.
struct SVCGTFormula {
    uint32_t m_nRedGamma;
    uint32_t m_nRedMin;
    uint32_t m_nRedMax;
    uint32_t m_nGreenGamma;
    uint32_t m_nGreenMin;
    uint32_t m_nGreenMax;
    uint32_t m_nBlueGamma;
    uint32_t m_nBlueMin;
    uint32_t m_nBlueMax;
};

struct SVCGTGamma {
    // kVCGTTable (0) or kVCGTFormula (1).
    uint32_t m_nGammaType;
    union {
        SVCGTTable m_table;
        SVCGTFormula m_formula;
    };
};

inline constexpr uint32_t kVCGTTable = 0;
inline constexpr uint32_t kVCGTFormula = 1;

// One CIE XYZ triple; 1.0 is the PCS white's Y.
struct SMyXYZNumber {
    double X;
    double Y;
    double Z;
};

// An RGB colour space as the imaging side uses it.
struct SColorSpecRGB {
    int32_t m_bsRGB;            // 1 when the red curve is the sRGB curve
    double m_dGamma;            // red gamma; 0.0 when m_bsRGB is set
    double m_dMatrix[3][3];     // rows: red, green, blue colorant XYZ
    double m_dInverse[3][3];    // inverse of m_dMatrix
};
