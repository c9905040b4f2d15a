// The reading side of the profile classes: opens a profile held in memory,
// fetches tags and turns them into curves, gamma tables, colorimetry and the
// classifications the colour manager works with.
#pragma once
#include "icc/ICCColorProfile.h"

class TESKCOLORMGR_API CICCReadColorProfile : public CICCColorProfile {
public:
    CICCReadColorProfile();
    // Binds no SetColorProfileElement/Size: such a reader never repairs.
    CICCReadColorProfile(void*& handle, const wchar_t* name, bool owns);
    CICCReadColorProfile(const CICCReadColorProfile& other);
    CICCReadColorProfile& operator=(const CICCReadColorProfile& other) = default;
    ~CICCReadColorProfile() override = default;

    // Raw profile validation and tag access.
    bool CreateFromRawData(unsigned char* data, unsigned long size, bool& valid);
    // The tag in a new[] buffer the caller releases with delete[]; null when absent.
    unsigned char* GetRequestedTag(unsigned long tag, unsigned long& size) override;
    bool DoesProfileTagExist(unsigned long tag);
    bool AreHeadersSame(void*& other);

    // Tone curves and gamma.
    bool GetTRC(unsigned long tag, TRCCURVE& curve);
    bool IsTRCsSame(CICCReadColorProfile& other);
    // The caller checks DoesProfileTagExist('vcgt') first and releases m_pData.
    bool GetVCGTTable(SVCGTGamma& gamma);

    // Colorimetry and classification.
    bool GetXYZColorant(SMyXYZNumber& xyz, unsigned long tag);
    bool GetMediaWhitePoint(SMyXYZNumber& xyz);
    bool GetMediaBlackPoint(SMyXYZNumber& xyz);
    bool IsMediaWhitePointSame(CICCReadColorProfile& other);
    bool IsMediaBlackPointSame(CICCReadColorProfile& other);
    bool GetChromaticAdaptationTag(double* matrix);
    bool BuildColorSpecRGB(SColorSpecRGB& colorSpec);
    long GetLCSCSType(void*& profile);
    bool CreateLogColorSpace(tagLOGCOLORSPACEW& lcs, void*& profile, wchar_t* fileName);
    bool CreateLogColorSpaceFromCurrentProfile(tagLOGCOLORSPACEW& lcs);
    void CreatesRGB();
    bool IsProfileWorkingSpace(CString& name);
    bool IsProfileCMYK(CString& name);
    bool GetDescription(CString& text);
    bool GetCopyright(CString& text);

protected:
    PFN_GetColorProfileElementTag m_pfnGetColorProfileElementTag = nullptr;
    PFN_GetColorProfileElement m_pfnGetColorProfileElement = nullptr;
    PFN_CreateProfileFromLogColorSpaceW m_pfnCreateProfileFromLogColorSpaceW = nullptr;
    PFN_SetColorProfileElement m_pfnSetColorProfileElement = nullptr;
    PFN_SetColorProfileElementSize m_pfnSetColorProfileElementSize = nullptr;

private:
    void BindReaderFunctions(bool bindElementWriters);

    bool GetCurveType(SICCCurveType& curve, unsigned char* tagData, unsigned long& tagSize);
    bool GetParaCurveType(SICCParametricCurveType& curve, unsigned char* tagData, unsigned long tagSize);
    bool GetParaFunc(SICCParametricCurveType& curve, unsigned char* tagData, unsigned long tagSize,
                     unsigned short functionType);
    double GetGammaValue(unsigned long tag);
    double TRCtoGamma(SICCCurveType& curve);
    bool IssRGBTRC(SICCCurveType& curve);
    bool AreTRCsEqual(SICCCurveType& red, SICCCurveType& green, SICCCurveType& blue);

    // Reads the three TRCs; false when any of them cannot be read.
    bool ReadRGBCurves(TRCCURVE curves[3]);
};
