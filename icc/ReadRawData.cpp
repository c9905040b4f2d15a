#include <cstring>

#include "icc/ICCReadColorProfile.h"
#include "icc/TagDecoders.h"
#include "module/BindProc.h"
#include "module/Trace.h"

namespace {

constexpr const wchar_t* kCreateFromRawData = L"CICCReadColorProfile::CreateFromRawData";
constexpr uint32_t kMaxTagCount = 128;
constexpr uint32_t kVersion210 = 0x02100000;
constexpr DWORD kCopyrightTag = 'cprt';
constexpr DWORD kRepairedCopyrightSize = 52;

}  // namespace

CICCReadColorProfile::CICCReadColorProfile() : CICCColorProfile() { BindReaderFunctions(true); }

CICCReadColorProfile::CICCReadColorProfile(void*& handle, const wchar_t* name, bool owns)
    : CICCColorProfile(handle, name, owns) {
    BindReaderFunctions(false);
}

CICCReadColorProfile::CICCReadColorProfile(const CICCReadColorProfile& other) : CICCColorProfile(other) {
    BindReaderFunctions(false);
}

void CICCReadColorProfile::BindReaderFunctions(bool bindElementWriters) {
    // A second reference to each module, kept for the life of the process.
    LoadPlatformModules();
    using tesk::BindProc;
    if (!BindProc(m_hMSCMS, "GetColorProfileElementTag", m_pfnGetColorProfileElementTag) ||
        !BindProc(m_hMSCMS, "GetColorProfileElement", m_pfnGetColorProfileElement))
        return;
    BindProc(m_hMSCMS, "CreateProfileFromLogColorSpaceW", m_pfnCreateProfileFromLogColorSpaceW);
    if (bindElementWriters && BindProc(m_hMSCMS, "SetColorProfileElement", m_pfnSetColorProfileElement))
        BindProc(m_hMSCMS, "SetColorProfileElementSize", m_pfnSetColorProfileElementSize);
}

bool CICCReadColorProfile::CreateFromRawData(unsigned char* data, unsigned long size, bool& valid) {
    valid = true;
    const RTRACE trace(kCreateFromRawData, nullptr, kTraceInfoTag, 0);
    const tesk::icc::TagBytes raw(data, size);

    const uint32_t declaredSize = raw.U32(0);
    if (size < declaredSize) {
        Trace(trace, L"Raw Color Profile size mismatched (%d,%d)\n", static_cast<int>(size),
              static_cast<int>(declaredSize));
        m_hProfile = nullptr;
        return false;
    }
    // Any one matching byte of "acsp" is enough: only a block in which all
    // four differ is refused.
    if (raw.U8(36) != 'a' && raw.U8(37) != 'c' && raw.U8(38) != 's' && raw.U8(39) != 'p') {
        Trace(trace, L"Raw Color Profile : wrong signature\n");
        m_hProfile = nullptr;
        return false;
    }
    const uint8_t majorVersion = raw.U8(8);
    if (majorVersion < 2 || majorVersion > 4) {
        Trace(trace, L"Raw Color Profile : wrong version!\n");
        m_hProfile = nullptr;
        return false;
    }
    if (raw.U32(128) > kMaxTagCount) {
        Trace(trace, L"Raw Color Profile : too many tags!\n");
        m_hProfile = nullptr;
        return false;
    }

    m_hProfile = nullptr;
    if (!m_pfnOpenColorProfileW || !m_pfnIsColorProfileValid) return false;
    PROFILE memory = {};
    memory.dwType = PROFILE_MEMBUFFER;
    memory.pProfileData = data;
    memory.cbDataSize = static_cast<DWORD>(size);
    HPROFILE handle = nullptr;
    try {
        handle = m_pfnOpenColorProfileW(&memory, PROFILE_READWRITE, FILE_SHARE_READ, OPEN_EXISTING);
    } catch (...) {
        Trace(trace, L"Raw profile memory fails to decode.\n");
        return false;
    }
    if (!handle) return false;

    BOOL profileValid = FALSE;
    if (m_pfnIsColorProfileValid(handle, &profileValid)) {
        m_hProfile = handle;
        return true;
    }

    // Adobe RGB (1998) as some tools embed it fails validation until its
    // copyright text is written back.
    if (raw.U32(8) == kVersion210 && m_pfnSetColorProfileElementSize && m_pfnSetColorProfileElement) {
        unsigned char copyright[kRepairedCopyrightSize] = {};
        const char text[] = "Copyright 2000 Adobe Systems Incorporated";
        std::memcpy(copyright, text, sizeof(text) - 1);
        // The count stays zero on purpose: the resize is what takes effect.
        DWORD count = 0;
        if (m_pfnSetColorProfileElementSize(handle, kCopyrightTag, kRepairedCopyrightSize)) {
            if (!m_pfnSetColorProfileElement(handle, kCopyrightTag, 0, &count, copyright)) (void)GetLastError();
        } else {
            (void)GetLastError();
        }
    }
    if (m_pfnIsColorProfileValid(handle, &profileValid)) {
        m_hProfile = handle;
        return true;
    }
    valid = false;
    if (m_pfnCloseColorProfile) m_pfnCloseColorProfile(handle);
    return false;
}

bool CICCReadColorProfile::AreHeadersSame(void*& other) {
    if (!m_pfnGetColorProfileHeader) return false;
    PROFILEHEADER mine = {};
    PROFILEHEADER theirs = {};
    if (!m_pfnGetColorProfileHeader(m_hProfile, &mine) || !m_pfnGetColorProfileHeader(other, &theirs)) return false;
    // Size, CMM, dates, platform, flags, maker, model, intent and creator are
    // left out: copies of one profile made by different tools are the same.
    return mine.phVersion == theirs.phVersion && mine.phClass == theirs.phClass &&
           mine.phDataColorSpace == theirs.phDataColorSpace &&
           mine.phConnectionSpace == theirs.phConnectionSpace &&
           mine.phAttributes[0] == theirs.phAttributes[0] && mine.phAttributes[1] == theirs.phAttributes[1] &&
           mine.phIlluminant.ciexyzX == theirs.phIlluminant.ciexyzX &&
           mine.phIlluminant.ciexyzY == theirs.phIlluminant.ciexyzY &&
           mine.phIlluminant.ciexyzZ == theirs.phIlluminant.ciexyzZ;
}
