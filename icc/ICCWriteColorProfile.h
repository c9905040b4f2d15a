// Builds an ICC display profile through the platform's colour system: the
// header with the program's defaults, tags written one at a time from the
// shared curve and colorimetry structures, and a running account of the
// profile's size that the header's size field is made from.
#pragma once
#include <windows.h>
#include <icm.h>

#include <cstdint>
#include <list>
#include <string>

#include "icc/ICCColorProfile.h"
#include "icc/ICCTypes.h"
#include "module/Export.h"

// Outcome of FinalizeProfileWrite.
enum CM_PROFILE {
    CM_PROFILE_NONE = 0,          // there was no open profile
    CM_PROFILE_VALID = 1,         // valid and closed
    CM_PROFILE_INVALID = 2,       // the platform rejected it; closed
    CM_PROFILE_CLOSE_FAILED = 3,  // valid, but closing failed; still open
};

class TESKCOLORMGR_API CICCWriteColorProfile : public CICCColorProfile {
public:
    CICCWriteColorProfile();
    // Adopts an open profile handle and writes into it.
    explicit CICCWriteColorProfile(void*& handle);
    // `source` names the profile the new one is derived from; the writer
    // itself has no use for it.
    CICCWriteColorProfile(void*& handle, const wchar_t* name, const wchar_t* source);
    CICCWriteColorProfile(const CICCWriteColorProfile& other);
    CICCWriteColorProfile& operator=(const CICCWriteColorProfile& other);
    ~CICCWriteColorProfile() override = default;

    // Creates (or truncates) the named profile and adopts its handle; a bare
    // file name goes into the colour directory.
    bool OpenICCProfileForWrite(const wchar_t* name);

    bool SetDefaultProfileHeader();
    // The header from the stored fields; size, CMM type and version as in
    // the default header.
    void CreateProfileHeader(PROFILEHEADER& header);
    bool SetProfileHeader(PROFILEHEADER& header);

    void SetHeaderClass(unsigned long profileClass);
    void SetHeaderConnectionColorSpace(unsigned long space);
    void SetHeaderDataColorSpace(unsigned long space);
    void SetHeaderManufacturer(unsigned long manufacturer);
    void SetHeaderModel(unsigned long model);
    void SetHeaderPlatform(unsigned long platform);
    void SetHeaderProfileFlags(unsigned long flags);
    void SetHeaderRenderingIntent(unsigned long intent);
    // Takes the three date-time words only when `count` is 3.
    void SetHeaderDateTime(unsigned long* words, int count);
    void SetHeaderIlluminant();
    void SetHeaderAttributes(bool reflective, bool glossy, bool positive, bool colour);

    bool SetTRCCurveType(unsigned long tag, SICCCurveType& curve);
    bool SetTRCParametricCurveType(unsigned long tag, SICCParametricCurveType& curve);
    bool SetVCGTInformation(SVCGTGamma& gamma);
    bool SetXYZColorant(SMyXYZNumber& xyz, unsigned long tag);
    bool SetMediaWhitePoint(SMyXYZNumber& xyz);
    bool SetMediaBlackPoint(SMyXYZNumber& xyz);
    bool SetChromaticAdaptationTag(double* matrix);
    bool SetStringTag(unsigned long tag, std::list<std::string>& strings);
    bool SetCopyrightTag(unsigned long tag, std::list<std::string>& strings);

    CM_PROFILE FinalizeProfileWrite();
    // Writes a complete display profile "TestWriteProfile.icm" into the
    // colour directory; true when every step succeeded and it came out valid.
    bool TestWriteProfile();

private:
    void BindWriterFunctions();
    void InitHeaderFields();
    void CopyWriterState(const CICCWriteColorProfile& other);

    void SetDefaultHeader(PROFILEHEADER& header);
    // Profile size, CMM type and version, shared by both header builders.
    void FillHeaderCommon(PROFILEHEADER& header);

    bool WriteTagPreamble(unsigned long signature, void* place);
    // The bytes written, or -1.
    int WriteTagToProfile(unsigned long tag, void* data, int size);
    // Size, then data, through the platform; the count the platform reports
    // or -1. Does not touch the size account.
    int StoreTagBytes(unsigned long tag, void* data, int size);
    void AccountTag(int size);
    bool IsProfileWritable(void*& handle);

    PFN_SetColorProfileElement m_pfnSetColorProfileElement = nullptr;
    PFN_SetColorProfileHeader m_pfnSetColorProfileHeader = nullptr;
    PFN_SetColorProfileElementReference m_pfnSetColorProfileElementReference = nullptr;
    PFN_SetColorProfileElementSize m_pfnSetColorProfileElementSize = nullptr;
    PFN_GetCMMInfo m_pfnGetCMMInfo = nullptr;

    // Header fields in host order.
    uint32_t m_nHeaderClass = 0;
    uint32_t m_nHeaderDataColorSpace = 0;
    uint32_t m_nHeaderConnectionSpace = 0;
    uint32_t m_nHeaderDateTime[3] = {};
    uint32_t m_nHeaderSignature = 0;
    uint32_t m_nHeaderPlatform = 0;
    uint32_t m_nHeaderProfileFlags = 0;
    uint32_t m_nHeaderManufacturer = 0;
    uint32_t m_nHeaderModel = 0;
    uint32_t m_nHeaderAttributes[2] = {};
    uint32_t m_nHeaderRenderingIntent = 0;
    uint32_t m_nHeaderIlluminant[3] = {};  // s15Fixed16 bit patterns
    uint32_t m_nHeaderCreator = 0;
    // The header's CMM type, and its creator in the default header.
    uint32_t m_nCMMType = 0;

    // Tag data written so far, by the account the header's size rests on.
    uint32_t m_nTagDataTotal = 0;
    uint32_t m_nTagCount = 0;
};
