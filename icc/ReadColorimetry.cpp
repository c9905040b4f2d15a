#include <cmath>
#include <cstring>
#include <cwchar>
#include <exception>
#include <stdexcept>

#include "host/Matrix.h"
#include "icc/ICCReadColorProfile.h"
#include "icc/TagDecoders.h"

namespace {

constexpr unsigned long kRedTRC = 'rTRC';
constexpr unsigned long kGreenTRC = 'gTRC';
constexpr unsigned long kBlueTRC = 'bTRC';
constexpr unsigned long kRedColorant = 'rXYZ';
constexpr unsigned long kGreenColorant = 'gXYZ';
constexpr unsigned long kBlueColorant = 'bXYZ';
constexpr unsigned long kMediaWhitePoint = 'wtpt';
constexpr unsigned long kMediaBlackPoint = 'bkpt';
constexpr unsigned long kChromaticAdaptation = 'chad';
constexpr DWORD kLogColorSpaceVersion = 0x400;
// The record's size as Windows declares it (its file name is 260 two-byte characters).
constexpr DWORD kLogColorSpaceSize = 588;
constexpr DWORD kSampledCurveGamma = 29491;  // 0.45 in 16.16

void ReleaseEntries(TRCCURVE& curve) {
    if (curve.m_nSignature == kCurveTypeSignature && curve.m_curve.m_nCount >= 2) {
        delete[] curve.m_curve.m_pEntries;
        curve.m_curve.m_pEntries = nullptr;
    }
}

bool AllSampled(const TRCCURVE curves[3]) {
    return curves[0].m_nSignature == kCurveTypeSignature && curves[1].m_nSignature == kCurveTypeSignature &&
           curves[2].m_nSignature == kCurveTypeSignature;
}

bool EqualCounts(const TRCCURVE curves[3]) {
    return AllSampled(curves) && curves[0].m_curve.m_nCount == curves[1].m_curve.m_nCount &&
           curves[0].m_curve.m_nCount == curves[2].m_curve.m_nCount;
}

// Integer part shifted up by 30, fraction times 2^30. An all-zero colorant
// gives NaN chromaticities, stored as 0.
FXPT2DOT30 ToFixed2Dot30(float value) {
    if (!(value >= 0.0f && value < 2.0f)) return 0;
    const int integer = static_cast<int>(value);
    const float fraction = value - static_cast<float>(integer);
    return static_cast<FXPT2DOT30>((static_cast<uint32_t>(integer) << 30) +
                                   static_cast<uint32_t>(fraction * 1073741824.0f));
}

// Integer part shifted up by 16, fraction times 65536.
DWORD ToFixed16Dot16(double value) {
    if (!(value >= 0.0 && value < 32768.0)) return 0;
    const uint32_t integer = static_cast<uint32_t>(value);
    return (integer << 16) + static_cast<uint32_t>((value - integer) * 65536.0);
}

void SetChromaticity(CIEXYZ& endpoint, const SMyXYZNumber& xyz) {
    const double sum = xyz.X + xyz.Y + xyz.Z;
    endpoint.ciexyzX = ToFixed2Dot30(static_cast<float>(xyz.X / sum));
    endpoint.ciexyzY = ToFixed2Dot30(static_cast<float>(xyz.Y / sum));
    endpoint.ciexyzZ = ToFixed2Dot30(static_cast<float>(xyz.Z / sum));
}

void StartLogColorSpace(LOGCOLORSPACEW& lcs, LCSCSTYPE type) {
    std::memset(&lcs, 0, sizeof(lcs));
    lcs.lcsSignature = LCS_SIGNATURE;
    lcs.lcsVersion = kLogColorSpaceVersion;
    lcs.lcsSize = kLogColorSpaceSize;
    lcs.lcsCSType = type;
}

}  // namespace

bool CICCReadColorProfile::GetXYZColorant(SMyXYZNumber& xyz, unsigned long tag) {
    unsigned long size = 0;
    unsigned char* data = GetRequestedTag(tag, size);
    if (!data) return false;
    const bool complete = tesk::icc::DecodeXYZ(tesk::icc::TagBytes(data, size), xyz);
    delete[] data;
    return complete;
}

bool CICCReadColorProfile::GetMediaWhitePoint(SMyXYZNumber& xyz) { return GetXYZColorant(xyz, kMediaWhitePoint); }

bool CICCReadColorProfile::GetMediaBlackPoint(SMyXYZNumber& xyz) { return GetXYZColorant(xyz, kMediaBlackPoint); }

bool CICCReadColorProfile::IsMediaWhitePointSame(CICCReadColorProfile& other) {
    SMyXYZNumber mine = {};
    SMyXYZNumber theirs = {};
    GetMediaWhitePoint(mine);
    other.GetMediaWhitePoint(theirs);
    return mine.X == theirs.X && mine.Y == theirs.Y && mine.Z == theirs.Z;
}

bool CICCReadColorProfile::IsMediaBlackPointSame(CICCReadColorProfile& other) {
    SMyXYZNumber mine = {};
    SMyXYZNumber theirs = {};
    GetMediaBlackPoint(mine);
    other.GetMediaBlackPoint(theirs);
    return mine.X == theirs.X && mine.Y == theirs.Y && mine.Z == theirs.Z;
}

bool CICCReadColorProfile::GetChromaticAdaptationTag(double* matrix) {
    unsigned long size = 0;
    unsigned char* data = GetRequestedTag(kChromaticAdaptation, size);
    if (!data || size == 0 || !matrix) {
        delete[] data;
        return false;
    }
    tesk::icc::DecodeMatrix(tesk::icc::TagBytes(data, size), matrix);
    delete[] data;
    return true;
}

bool CICCReadColorProfile::BuildColorSpecRGB(SColorSpecRGB& colorSpec) {
    TRCCURVE curves[3];
    if (ReadRGBCurves(curves)) {
        TRCCURVE& red = curves[0];
        if (red.m_nSignature == kParametricCurveTypeSignature && red.m_para.m_nParamCount == 1) {
            colorSpec.m_bsRGB = 0;
            colorSpec.m_dGamma = red.m_para.m_dG;
        } else if (red.m_nSignature == kCurveTypeSignature && red.m_curve.m_nCount == 1) {
            colorSpec.m_bsRGB = 0;
            colorSpec.m_dGamma = red.m_curve.m_fGamma;
        } else if (red.m_nSignature == kCurveTypeSignature && red.m_curve.m_nCount >= 2) {
            colorSpec.m_bsRGB = 0;
            colorSpec.m_dGamma = TRCtoGamma(red.m_curve);
            if (IssRGBTRC(red.m_curve)) {
                colorSpec.m_bsRGB = 1;
                colorSpec.m_dGamma = 0.0;
            }
        }
    }
    for (TRCCURVE& curve : curves) ReleaseEntries(curve);

    SMyXYZNumber colorants[3] = {};
    if (GetXYZColorant(colorants[0], kRedColorant) && GetXYZColorant(colorants[1], kGreenColorant))
        GetXYZColorant(colorants[2], kBlueColorant);
    double matrix[3][3];
    for (int row = 0; row < 3; ++row) {
        matrix[row][0] = colorants[row].X;
        matrix[row][1] = colorants[row].Y;
        matrix[row][2] = colorants[row].Z;
    }
    double inverse[3][3] = {};
    const bool inverted = VGDI_MatrixGetInverse(matrix, inverse);
    std::memcpy(colorSpec.m_dMatrix, matrix, sizeof(matrix));
    std::memcpy(colorSpec.m_dInverse, inverse, sizeof(inverse));
    return inverted;
}

long CICCReadColorProfile::GetLCSCSType(void*& profile) {
    if (!profile) return LCS_CALIBRATED_RGB;
    TRCCURVE curves[3];
    std::memset(curves, 0, sizeof(curves));
    const bool allRead = GetTRC(kRedTRC, curves[0]) && GetTRC(kGreenTRC, curves[1]) && GetTRC(kBlueTRC, curves[2]);
    long type = LCS_CALIBRATED_RGB;
    if (curves[0].m_nSignature == kCurveTypeSignature && allRead) {
        // Curves of different lengths are not told apart, as in AreTRCsEqual.
        const bool differ =
            EqualCounts(curves) && !AreTRCsEqual(curves[0].m_curve, curves[1].m_curve, curves[2].m_curve);
        if (!differ && IssRGBTRC(curves[0].m_curve)) type = LCS_sRGB;
    }
    for (TRCCURVE& curve : curves) ReleaseEntries(curve);
    return type;
}

bool CICCReadColorProfile::CreateLogColorSpace(tagLOGCOLORSPACEW& lcs, void*& profile, wchar_t* fileName) {
    StartLogColorSpace(lcs, GetLCSCSType(profile));
    if (lcs.lcsCSType != LCS_CALIBRATED_RGB) return lcs.lcsCSType == LCS_sRGB;
    try {
        struct Colorant {
            unsigned long tag;
            CIEXYZ* endpoint;
            const char* corrupted;
        };
        const Colorant colorants[] = {
            {kRedColorant, &lcs.lcsEndpoints.ciexyzRed,
             "The ICC Profile has been corrupted, error in retrieving Red XYZ value."},
            {kGreenColorant, &lcs.lcsEndpoints.ciexyzGreen,
             "The ICC Profile has been corrupted, error in retrieving Green XYZ value."},
            {kBlueColorant, &lcs.lcsEndpoints.ciexyzBlue,
             "The ICC Profile has been corrupted, error in retrieving Blue XYZ value."},
        };
        for (const Colorant& colorant : colorants) {
            SMyXYZNumber xyz = {};
            if (!GetXYZColorant(xyz, colorant.tag)) throw std::logic_error(colorant.corrupted);
            SetChromaticity(*colorant.endpoint, xyz);
        }
        const double redGamma = GetGammaValue(kRedTRC);
        if (redGamma >= 0.0) {
            lcs.lcsGammaRed = ToFixed16Dot16(redGamma);
            lcs.lcsGammaGreen = ToFixed16Dot16(GetGammaValue(kGreenTRC));
            lcs.lcsGammaBlue = ToFixed16Dot16(GetGammaValue(kBlueTRC));
            return true;
        }
        // A sampled red curve: a nominal gamma, and the profile named by file.
        lcs.lcsGammaRed = lcs.lcsGammaGreen = lcs.lcsGammaBlue = kSampledCurveGamma;
        if (fileName) {
            std::wcsncpy(lcs.lcsFilename, fileName, MAX_PATH - 1);
            lcs.lcsFilename[MAX_PATH - 1] = L'\0';
        }
        return true;
    } catch (const std::exception&) {
        // A damaged profile degrades to sRGB.
        lcs.lcsCSType = LCS_sRGB;
        return false;
    }
}

bool CICCReadColorProfile::CreateLogColorSpaceFromCurrentProfile(tagLOGCOLORSPACEW& lcs) {
    return CreateLogColorSpace(lcs, m_hProfile, const_cast<wchar_t*>(m_strProfileName.GetString()));
}

void CICCReadColorProfile::CreatesRGB() {
    LOGCOLORSPACEW lcs;
    StartLogColorSpace(lcs, LCS_sRGB);
    if (!m_pfnCreateProfileFromLogColorSpaceW) return;
    // The platform hands back a LocalAlloc block holding the whole profile:
    // its true size is the block's size, and it is ours to LocalFree once the
    // profile has been opened from it (the open keeps its own copy).
    PBYTE profile = nullptr;
    if (!m_pfnCreateProfileFromLogColorSpaceW(&lcs, &profile) || !profile) return;
    bool valid = true;
    CreateFromRawData(profile, static_cast<unsigned long>(LocalSize(profile)), valid);
    LocalFree(profile);
}

bool CICCReadColorProfile::IsProfileWorkingSpace(CString& name) {
    std::wstring path = name.Str();
    void* handle = OpenICCProfile(path.data());
    if (!handle) return false;
    SetProfile(handle, path.data());

    bool workingSpace = false;
    PROFILEHEADER header = {};
    if (m_pfnGetColorProfileHeader && m_pfnGetColorProfileHeader(m_hProfile, &header) &&
        (header.phClass == CLASS_MONITOR || header.phClass == CLASS_COLORSPACE) &&
        header.phDataColorSpace == SPACE_RGB) {
        if (header.phClass == CLASS_COLORSPACE) {
            workingSpace = true;
        } else {
            TRCCURVE curves[3];
            if (ReadRGBCurves(curves)) {
                const TRCCURVE& red = curves[0];
                if (red.m_nSignature == kParametricCurveTypeSignature)
                    workingSpace = red.m_para.m_nParamCount == 1;
                else if (red.m_nSignature == kCurveTypeSignature)
                    workingSpace = EqualCounts(curves) &&
                                   AreTRCsEqual(curves[0].m_curve, curves[1].m_curve, curves[2].m_curve);
            }
            for (TRCCURVE& curve : curves) ReleaseEntries(curve);
        }
    }
    CloseProfile();
    return workingSpace;
}

bool CICCReadColorProfile::IsProfileCMYK(CString& name) {
    std::wstring path = name.Str();
    void* handle = OpenICCProfile(path.data());
    if (!handle) return false;
    SetProfile(handle, path.data());
    PROFILEHEADER header = {};
    const bool cmyk = m_pfnGetColorProfileHeader && m_pfnGetColorProfileHeader(m_hProfile, &header) &&
                      header.phClass == CLASS_PRINTER && header.phDataColorSpace == SPACE_CMYK;
    CloseProfile();
    return cmyk;
}
