#include <cstring>
#include <exception>
#include <stdexcept>

#include "icc/ICCReadColorProfile.h"
#include "icc/TagDecoders.h"

namespace {

constexpr unsigned long kRedTRC = 'rTRC';
constexpr unsigned long kGreenTRC = 'gTRC';
constexpr unsigned long kBlueTRC = 'bTRC';
constexpr unsigned long kVCGTTag = 'vcgt';

void ReleaseEntries(TRCCURVE& curve) {
    if (curve.m_nSignature == kCurveTypeSignature && curve.m_curve.m_nCount >= 2) {
        delete[] curve.m_curve.m_pEntries;
        curve.m_curve.m_pEntries = nullptr;
    }
}

void ReleaseEntries(TRCCURVE curves[3]) {
    for (int i = 0; i < 3; ++i) ReleaseEntries(curves[i]);
}

// Whether a profile's three curves are one curve for all channels. Mixed
// kinds count as agreeing, like sampled curves of different lengths.
bool ChannelsAgree(TRCCURVE curves[3]) {
    const TRCCURVE& red = curves[0];
    if (red.m_nSignature == kParametricCurveTypeSignature) return red.m_para.m_nParamCount == 1;
    if (red.m_nSignature != kCurveTypeSignature) return false;
    if (curves[1].m_nSignature != kCurveTypeSignature || curves[2].m_nSignature != kCurveTypeSignature) return true;
    return tesk::icc::CurvesAgree(red.m_curve, curves[1].m_curve, curves[2].m_curve);
}

bool SameParametricCurve(const TRCCURVE& a, const TRCCURVE& b) {
    if (a.m_nSignature != b.m_nSignature) return false;
    const SICCParametricCurveType& p = a.m_para;
    const SICCParametricCurveType& q = b.m_para;
    return p.m_dG == q.m_dG && p.m_nFunctionType == q.m_nFunctionType && p.m_nParamCount == q.m_nParamCount &&
           p.m_dA == q.m_dA && p.m_dB == q.m_dB && p.m_dC == q.m_dC && p.m_dD == q.m_dD && p.m_dE == q.m_dE;
}

// Two identity curves are deliberately not a match here.
bool SameSampledCurve(const TRCCURVE& a, const TRCCURVE& b) {
    if (a.m_nSignature != kCurveTypeSignature) return false;
    const SICCCurveType& p = a.m_curve;
    const SICCCurveType& q = b.m_curve;
    if (p.m_nCount != q.m_nCount) return false;
    if (p.m_nCount == 1) return p.m_fGamma == q.m_fGamma;
    if (p.m_nCount == 0 || !p.m_pEntries || !q.m_pEntries) return false;
    return std::memcmp(p.m_pEntries, q.m_pEntries, sizeof(uint16_t) * p.m_nCount) == 0;
}

}  // namespace

bool CICCReadColorProfile::GetTRC(unsigned long tag, TRCCURVE& curve) {
    unsigned long size = 0;
    unsigned char* data = GetRequestedTag(tag, size);
    if (!data) return false;
    curve.m_nSignature = tesk::icc::TagBytes(data, size).TypeSignature();
    bool decoded = false;
    try {
        if (curve.m_nSignature == kCurveTypeSignature)
            decoded = GetCurveType(curve.m_curve, data, size);
        else if (curve.m_nSignature == kParametricCurveTypeSignature)
            decoded = GetParaCurveType(curve.m_para, data, size);
    } catch (const std::exception&) {
        decoded = false;
    }
    delete[] data;
    return decoded;
}

bool CICCReadColorProfile::GetCurveType(SICCCurveType& curve, unsigned char* tagData, unsigned long& tagSize) {
    return tesk::icc::DecodeCurve(tesk::icc::TagBytes(tagData, tagSize), curve);
}

bool CICCReadColorProfile::GetParaCurveType(SICCParametricCurveType& curve, unsigned char* tagData,
                                            unsigned long tagSize) {
    const tesk::icc::TagBytes tag(tagData, tagSize);
    const uint16_t functionType = tag.U16(8);
    curve.m_nFunctionType = functionType;
    if (functionType <= 4) curve.m_nParamCount = functionType + 1u;
    return GetParaFunc(curve, tagData, tagSize, functionType);
}

bool CICCReadColorProfile::GetParaFunc(SICCParametricCurveType& curve, unsigned char* tagData,
                                       unsigned long tagSize, unsigned short functionType) {
    return tesk::icc::DecodeParametricWords(tesk::icc::TagBytes(tagData, tagSize), curve, functionType);
}

double CICCReadColorProfile::GetGammaValue(unsigned long tag) {
    TRCCURVE curve;
    std::memset(&curve, 0, sizeof(curve));
    if (!GetTRC(tag, curve)) {
        // A cut sampled curve still comes back with its entries.
        ReleaseEntries(curve);
        throw std::logic_error("The ICC Profile has been corrupted, error in retrieving the Red TRC value.");
    }
    if (curve.m_nSignature == kCurveTypeSignature) {
        if (curve.m_curve.m_nCount == 1) return curve.m_curve.m_fGamma;
        if (curve.m_curve.m_nCount >= 2) {
            // Sampled curves are reduced with TRCtoGamma by the callers that want it.
            ReleaseEntries(curve);
            return -1.0;
        }
        return 0.0;
    }
    if (curve.m_nSignature == kParametricCurveTypeSignature) return curve.m_para.m_dG;
    return 0.0;
}

double CICCReadColorProfile::TRCtoGamma(SICCCurveType& curve) { return tesk::icc::FitGamma(curve); }

bool CICCReadColorProfile::IssRGBTRC(SICCCurveType& curve) { return tesk::icc::IsSrgbCurve(curve); }

bool CICCReadColorProfile::AreTRCsEqual(SICCCurveType& red, SICCCurveType& green, SICCCurveType& blue) {
    return tesk::icc::CurvesAgree(red, green, blue);
}

bool CICCReadColorProfile::ReadRGBCurves(TRCCURVE curves[3]) {
    std::memset(curves, 0, 3 * sizeof(TRCCURVE));
    return GetTRC(kRedTRC, curves[0]) && GetTRC(kGreenTRC, curves[1]) && GetTRC(kBlueTRC, curves[2]);
}

bool CICCReadColorProfile::IsTRCsSame(CICCReadColorProfile& other) {
    TRCCURVE mine[3];
    TRCCURVE theirs[3];
    std::memset(theirs, 0, sizeof(theirs));
    // Only two profiles that each have one curve for all channels are told
    // apart; every other case counts as the same.
    bool same = true;
    if (ReadRGBCurves(mine) && ChannelsAgree(mine) && other.ReadRGBCurves(theirs) && ChannelsAgree(theirs)) {
        same = theirs[0].m_nSignature == kParametricCurveTypeSignature ? SameParametricCurve(mine[0], theirs[0])
                                                                       : SameSampledCurve(mine[0], theirs[0]);
    }
    ReleaseEntries(mine);
    ReleaseEntries(theirs);
    return same;
}

bool CICCReadColorProfile::GetVCGTTable(SVCGTGamma& gamma) {
    unsigned long size = 0;
    unsigned char* data = GetRequestedTag(kVCGTTag, size);
    if (!data) return false;
    const bool decoded = tesk::icc::DecodeVCGT(tesk::icc::TagBytes(data, size), gamma);
    delete[] data;
    return decoded;
}
