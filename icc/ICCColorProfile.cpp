#include "icc/ICCColorProfile.h"

#include <cstring>
#include <vector>

#include "icc/TagDecoders.h"
#include "module/BindProc.h"
#include "module/ColorDirectory.h"
#include "module/FileProfileRecord.h"

namespace {

constexpr UINT kOwnCMYKProfileUS = 10403;
constexpr UINT kOwnCMYKProfileEurope = 10402;
constexpr DWORD kTransformFlags = BEST_MODE | USE_RELATIVE_COLORIMETRIC;

}  // namespace

CICCColorProfile::CICCColorProfile() { BindPlatformFunctions(true); }

CICCColorProfile::CICCColorProfile(void*& handle, const wchar_t* name, bool owns)
    : m_hProfile(handle), m_bOwnsHandle(owns ? TRUE : FALSE) {
    if (name) m_strProfileName = name;
    BindPlatformFunctions(true);
}

CICCColorProfile::CICCColorProfile(const CICCColorProfile& other)
    : m_hProfile(other.m_hProfile), m_strProfileName(other.m_strProfileName), m_bOwnsHandle(TRUE) {
    BindPlatformFunctions(false);
}

CICCColorProfile& CICCColorProfile::operator=(const CICCColorProfile& other) {
    if (this == &other) return *this;
    m_hProfile = other.m_hProfile;
    m_strProfileName = other.m_strProfileName;
    m_hICMUI = other.m_hICMUI;
    m_hMSCMS = other.m_hMSCMS;
    m_bOwnsHandle = other.m_bOwnsHandle;
    m_pfnGetColorProfileHeader = other.m_pfnGetColorProfileHeader;
    m_pfnGetCountColorProfileElements = other.m_pfnGetCountColorProfileElements;
    m_pfnOpenColorProfileW = other.m_pfnOpenColorProfileW;
    m_pfnCloseColorProfile = other.m_pfnCloseColorProfile;
    m_pfnIsColorProfileValid = other.m_pfnIsColorProfileValid;
    m_pfnGetColorDirectoryW = other.m_pfnGetColorDirectoryW;
    m_pfnGetColorProfileFromHandle = other.m_pfnGetColorProfileFromHandle;
    m_pfnDeleteColorTransform = other.m_pfnDeleteColorTransform;
    m_pfnCreateMultiProfileTransform = other.m_pfnCreateMultiProfileTransform;
    return *this;
}

CICCColorProfile::~CICCColorProfile() {
    if (m_bOwnsHandle && m_hProfile && m_pfnCloseColorProfile) m_pfnCloseColorProfile(m_hProfile);
    if (m_hICMUI) FreeLibrary(m_hICMUI);
    if (m_hMSCMS) FreeLibrary(m_hMSCMS);
}

bool CICCColorProfile::LoadPlatformModules() {
    const UINT previousMode = SetErrorMode(SEM_FAILCRITICALERRORS);
    m_hICMUI = LoadLibraryW(L"ICMUI.DLL");
    if (m_hICMUI) m_hMSCMS = LoadLibraryW(L"MSCMS.DLL");
    SetErrorMode(previousMode);
    return m_hICMUI && m_hMSCMS;
}

void CICCColorProfile::BindPlatformFunctions(bool bindProfileFromHandle) {
    if (!LoadPlatformModules()) return;
    HMODULE mscms = m_hMSCMS;
    if (!tesk::BindProc(mscms, "GetColorProfileHeader", m_pfnGetColorProfileHeader) ||
        !tesk::BindProc(mscms, "GetCountColorProfileElements", m_pfnGetCountColorProfileElements) ||
        !tesk::BindProc(mscms, "GetColorDirectoryW", m_pfnGetColorDirectoryW) ||
        !tesk::BindProc(mscms, "OpenColorProfileW", m_pfnOpenColorProfileW) ||
        !tesk::BindProc(mscms, "CloseColorProfile", m_pfnCloseColorProfile) ||
        !tesk::BindProc(mscms, "IsColorProfileValid", m_pfnIsColorProfileValid))
        return;
    if (bindProfileFromHandle) tesk::BindProc(mscms, "GetColorProfileFromHandle", m_pfnGetColorProfileFromHandle);
    if (tesk::BindProc(mscms, "CreateMultiProfileTransform", m_pfnCreateMultiProfileTransform))
        tesk::BindProc(mscms, "DeleteColorTransform", m_pfnDeleteColorTransform);
}

CString CICCColorProfile::BuildProfilePath(const wchar_t* name) {
    CString directory;
    GetColorDirectoryW(directory, CString(name));
    CString path;
    const CString given(name);
    if (given.Find(L':') >= 0 || given.Find(L'\\') >= 0) {
        path = given;
    } else {
        // A custom profile's directory already ends in '\\'; the doubled
        // separator is accepted by the platform and left as it is.
        path.Format(L"%s\\%s", directory.GetString(), given.GetString());
    }
    return path;
}

void* CICCColorProfile::OpenICCProfile(wchar_t* name) {
    if (!name || !m_pfnOpenColorProfileW || !m_pfnIsColorProfileValid) return nullptr;
    PROFILE* record = tesk::AllocFileProfileRecord(BuildProfilePath(name));
    if (!record) return nullptr;
    HPROFILE handle = nullptr;
    try {
        handle = m_pfnOpenColorProfileW(record, PROFILE_READ, FILE_SHARE_READ, OPEN_EXISTING);
        if (handle) {
            BOOL valid = FALSE;
            if (!m_pfnIsColorProfileValid(handle, &valid)) {
                m_pfnCloseColorProfile(handle);
                handle = nullptr;
            }
        }
    } catch (...) {
        // Whatever was opened before the platform raised is handed back.
    }
    tesk::FreeFileProfileRecord(record);
    return handle;
}

void CICCColorProfile::SetProfile(void*& handle, wchar_t* name) {
    if (!handle) return;
    if (m_hProfile && m_pfnCloseColorProfile) m_pfnCloseColorProfile(m_hProfile);
    m_hProfile = handle;
    m_strProfileName = name;
}

void* CICCColorProfile::GetProfile() { return m_hProfile; }

bool CICCColorProfile::GetProfile(void*& handle, unsigned char* buffer, unsigned long* size) {
    if (!handle) return false;
    DWORD byteCount = size ? static_cast<DWORD>(*size) : 0;
    if (m_pfnGetColorProfileFromHandle) m_pfnGetColorProfileFromHandle(handle, buffer, size ? &byteCount : nullptr);
    if (size) *size = byteCount;
    return true;
}

bool CICCColorProfile::GetProfileHandle(void*& handle) {
    if (!m_hProfile) return false;
    handle = m_hProfile;
    return true;
}

bool CICCColorProfile::CloseProfile() {
    if (!m_hProfile) return false;
    const bool closed = m_pfnCloseColorProfile && m_pfnCloseColorProfile(m_hProfile) != FALSE;
    m_hProfile = nullptr;
    return closed;
}

bool CICCColorProfile::CloseProfile(void*& handle) {
    if (!handle) return false;
    const bool closed = m_pfnCloseColorProfile && m_pfnCloseColorProfile(handle) != FALSE;
    if (handle == m_hProfile) m_hProfile = nullptr;
    handle = nullptr;
    return closed;
}

int CICCColorProfile::GetNumberOfTags(void*& profile) {
    if (!profile || !m_pfnGetCountColorProfileElements) return 0;
    DWORD count = 0;
    m_pfnGetCountColorProfileElements(profile, &count);
    return static_cast<int>(count);
}

bool CICCColorProfile::GetTextString(void*& /*profile*/, unsigned long tag, std::string& text) {
    unsigned long size = 0;
    unsigned char* data = GetRequestedTag(tag, size);
    if (!data || size == 0) {
        delete[] data;
        return false;
    }
    const tesk::icc::TagBytes bytes(data, size);
    const uint32_t type = bytes.TypeSignature();
    if (type == tesk::icc::kDescTypeSignature) {
        std::string ascii = tesk::icc::DecodeDescAscii(bytes);
        if (!ascii.empty()) text = std::move(ascii);
    } else if (type == tesk::icc::kMlucTypeSignature) {
        std::wstring wide;
        if (tesk::icc::DecodeMlucFirstRecord(bytes, wide)) {
            const int needed = WideCharToMultiByte(CP_THREAD_ACP, 0, wide.c_str(), -1, nullptr, 0, nullptr, nullptr);
            std::vector<char> narrow(needed > 0 ? static_cast<size_t>(needed) : 1, '\0');
            if (needed > 0)
                WideCharToMultiByte(CP_THREAD_ACP, 0, wide.c_str(), -1, narrow.data(), needed, nullptr, nullptr);
            text = narrow.data();
        }
    } else {
        delete[] data;
        return false;
    }
    delete[] data;
    return !text.empty();
}

void CICCColorProfile::GetColorDirectoryW(CString& directory, CString name) {
    if (IsCustomColorProfile(name)) {
        wchar_t path[513] = {};
        GetModuleFileNameW(nullptr, path, 513);
        CString executable(path);
        const int lastSeparator = executable.ReverseFind(L'\\');
        directory = lastSeparator >= 0 ? executable.Left(lastSeparator) : executable;
        directory += L"\\ColorProfile\\";
        return;
    }
    directory = tesk::ColorDirectory(m_pfnGetColorDirectoryW);
}

int CICCColorProfile::IsCustomColorProfile(CString name) {
    CString own;
    own.LoadString(kOwnCMYKProfileUS);
    if (name.Compare(own) == 0) return 1;
    own.LoadString(kOwnCMYKProfileEurope);
    if (name.Compare(own) == 0) return 1;
    return 0;
}

bool CICCColorProfile::Is64BitWindows() { return true; }

unsigned char* CICCColorProfile::GetRequestedTag(unsigned long /*tag*/, unsigned long& /*size*/) { return nullptr; }

bool CICCColorProfile::SetRequestedTag(unsigned long /*tag*/, CString& /*text*/, unsigned char* /*data*/) {
    return false;
}

void* CICCColorProfile::CreateTransform(void** profiles, unsigned long count, unsigned long* intents,
                                        unsigned long intentCount) {
    if (!m_pfnCreateMultiProfileTransform) return nullptr;
    std::vector<DWORD> platformIntents(intents ? intentCount : 0);
    for (size_t i = 0; i < platformIntents.size(); ++i) platformIntents[i] = static_cast<DWORD>(intents[i]);
    return m_pfnCreateMultiProfileTransform(reinterpret_cast<PHPROFILE>(profiles), static_cast<DWORD>(count),
                                            intents ? platformIntents.data() : nullptr,
                                            static_cast<DWORD>(intentCount), kTransformFlags, INDEX_DONT_CARE);
}

void* CICCColorProfile::CreateTransform2Profile(void* source, void* destination, unsigned long intent) {
    void* profiles[2] = {source, destination};
    return CreateTransform(profiles, 2, &intent, 1);
}
