// The writer's life: binding, opening a profile for writing, storing tags
// through the platform and closing with a verdict.
#include "icc/ICCWriteColorProfile.h"

#include "module/BindProc.h"
#include "module/FileProfileRecord.h"

CICCWriteColorProfile::CICCWriteColorProfile() {
    BindWriterFunctions();
    InitHeaderFields();
}

CICCWriteColorProfile::CICCWriteColorProfile(void*& handle) : CICCColorProfile(handle, nullptr, true) {
    BindWriterFunctions();
    InitHeaderFields();
}

CICCWriteColorProfile::CICCWriteColorProfile(void*& handle, const wchar_t* name, const wchar_t* /*source*/)
    : CICCColorProfile(handle, name, true) {
    BindWriterFunctions();
    InitHeaderFields();
}

CICCWriteColorProfile::CICCWriteColorProfile(const CICCWriteColorProfile& other) : CICCColorProfile(other) {
    BindWriterFunctions();
    CopyWriterState(other);
}

CICCWriteColorProfile& CICCWriteColorProfile::operator=(const CICCWriteColorProfile& other) {
    if (this == &other) return *this;
    CICCColorProfile::operator=(other);
    m_pfnSetColorProfileElement = other.m_pfnSetColorProfileElement;
    m_pfnSetColorProfileHeader = other.m_pfnSetColorProfileHeader;
    m_pfnSetColorProfileElementReference = other.m_pfnSetColorProfileElementReference;
    m_pfnSetColorProfileElementSize = other.m_pfnSetColorProfileElementSize;
    m_pfnGetCMMInfo = other.m_pfnGetCMMInfo;
    CopyWriterState(other);
    return *this;
}

void CICCWriteColorProfile::BindWriterFunctions() {
    // The base has loaded the colour modules already; a missing export only
    // leaves its own pointer null.
    using tesk::BindProc;
    BindProc(m_hMSCMS, "SetColorProfileElement", m_pfnSetColorProfileElement);
    BindProc(m_hMSCMS, "SetColorProfileHeader", m_pfnSetColorProfileHeader);
    BindProc(m_hMSCMS, "SetColorProfileElementReference", m_pfnSetColorProfileElementReference);
    BindProc(m_hMSCMS, "SetColorProfileElementSize", m_pfnSetColorProfileElementSize);
    BindProc(m_hMSCMS, "GetCMMInfo", m_pfnGetCMMInfo);
}

void CICCWriteColorProfile::CopyWriterState(const CICCWriteColorProfile& other) {
    m_nHeaderClass = other.m_nHeaderClass;
    m_nHeaderDataColorSpace = other.m_nHeaderDataColorSpace;
    m_nHeaderConnectionSpace = other.m_nHeaderConnectionSpace;
    for (int i = 0; i < 3; ++i) m_nHeaderDateTime[i] = other.m_nHeaderDateTime[i];
    m_nHeaderSignature = other.m_nHeaderSignature;
    m_nHeaderPlatform = other.m_nHeaderPlatform;
    m_nHeaderProfileFlags = other.m_nHeaderProfileFlags;
    m_nHeaderManufacturer = other.m_nHeaderManufacturer;
    m_nHeaderModel = other.m_nHeaderModel;
    m_nHeaderAttributes[0] = other.m_nHeaderAttributes[0];
    m_nHeaderAttributes[1] = other.m_nHeaderAttributes[1];
    m_nHeaderRenderingIntent = other.m_nHeaderRenderingIntent;
    for (int i = 0; i < 3; ++i) m_nHeaderIlluminant[i] = other.m_nHeaderIlluminant[i];
    m_nHeaderCreator = other.m_nHeaderCreator;
    m_nCMMType = other.m_nCMMType;
    m_nTagDataTotal = other.m_nTagDataTotal;
    m_nTagCount = other.m_nTagCount;
}

bool CICCWriteColorProfile::OpenICCProfileForWrite(const wchar_t* name) {
    if (!name) return false;
    HPROFILE opened = nullptr;
    if (PROFILE* record = tesk::AllocFileProfileRecord(BuildProfilePath(name))) {
        if (m_pfnOpenColorProfileW)
            opened = m_pfnOpenColorProfileW(record, PROFILE_READWRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                            CREATE_ALWAYS);
        tesk::FreeFileProfileRecord(record);
    }
    if (m_hProfile) CloseProfile();
    if (!opened) return false;
    m_hProfile = opened;
    m_strProfileName = name;
    return true;
}

bool CICCWriteColorProfile::IsProfileWritable(void*& /*handle*/) { return true; }

int CICCWriteColorProfile::StoreTagBytes(unsigned long tag, void* data, int size) {
    if (!m_hProfile || !m_pfnSetColorProfileElementSize || !m_pfnSetColorProfileElement) return -1;
    if (!m_pfnSetColorProfileElementSize(m_hProfile, static_cast<TAGTYPE>(tag), static_cast<DWORD>(size)))
        return -1;
    DWORD count = static_cast<DWORD>(size);
    const BOOL stored = m_pfnSetColorProfileElement(m_hProfile, static_cast<TAGTYPE>(tag), 0, &count, data);
    // A zero size has already removed the tag; there are no bytes left to refuse.
    if ((!stored && size > 0) || count != static_cast<DWORD>(size)) return -1;
    return static_cast<int>(count);
}

void CICCWriteColorProfile::AccountTag(int size) {
    // The header's profile size is built on this rule (the remainder, not the
    // padding to the next multiple of 4); files already written rely on it.
    m_nTagDataTotal += static_cast<uint32_t>(size + size % 4);
    ++m_nTagCount;
}

int CICCWriteColorProfile::WriteTagToProfile(unsigned long tag, void* data, int size) {
    const int written = StoreTagBytes(tag, data, size);
    if (written < 0) return -1;
    AccountTag(size);
    return written;
}

CM_PROFILE CICCWriteColorProfile::FinalizeProfileWrite() {
    if (!m_hProfile) return CM_PROFILE_NONE;
    BOOL valid = FALSE;
    const bool answered = m_pfnIsColorProfileValid && m_pfnIsColorProfileValid(m_hProfile, &valid);
    const bool closed = m_pfnCloseColorProfile && m_pfnCloseColorProfile(m_hProfile);
    if (!answered || !valid) {
        if (closed) m_hProfile = nullptr;
        return CM_PROFILE_INVALID;
    }
    if (!closed) return CM_PROFILE_CLOSE_FAILED;
    m_hProfile = nullptr;
    return CM_PROFILE_VALID;
}
