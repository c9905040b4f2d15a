// Which profile files stand behind the settings, with their fallbacks; title
// look-ups in the setup lists; profile comparisons; the EXIF colour space.
#include "colormgr/ColorManager.h"
#include "devices/TextCodePage.h"
#include "host/ConnectLanguage.h"

using namespace colormgr;

namespace {
constexpr UINT kDefaultRGBString = 10401;
constexpr UINT kEuropeanCMYKString = 10402;
constexpr UINT kUSCMYKString = 10403;
constexpr long kLcsSRGB = 0x73524742;  // 'sRGB'

// Opens `name` with a fresh reader and closes it again; whether it opened.
bool CanOpenProfile(const CString& name) {
    CICCReadColorProfile reader;
    void* profile = reader.OpenICCProfile(const_cast<wchar_t*>(name.GetString()));
    if (!profile) return false;
    reader.CloseProfile(profile);
    return true;
}

bool SameProfile(CICCReadColorProfile& subject, CICCReadColorProfile& other) {
    void* otherHandle = other.GetProfile();
    return subject.AreHeadersSame(otherHandle) && subject.IsMediaWhitePointSame(other) && subject.IsTRCsSame(other);
}

std::list<SSetupProfile>::const_iterator FindTitle(const std::list<SSetupProfile>& list, const CString& title) {
    const std::string narrow = ToThreadCodePage(title.GetString());
    for (auto it = list.begin(); it != list.end(); ++it)
        if (it->strTitle == narrow) return it;
    return list.end();
}
}  // namespace

void CColorManager::GetDefaultRGBString(CString& str) {
    if (!m_strWorkingSpace.IsNull())
        str = m_strWorkingSpace.Get();
    else
        str.LoadString(kDefaultRGBString);
}

void CColorManager::GetDefaultCMYKString(CString& str) {
    if (!m_strCMYKProfile.IsNull()) {
        str = m_strCMYKProfile.Get();
        return;
    }
    const bool european = m_pLanguage && m_pLanguage->GetLanguageTag().Compare(L"en-us") != 0;
    str.LoadString(european ? kEuropeanCMYKString : kUSCMYKString);
}

// True whenever a list entry exists, even when neither the configured nor the
// fallback profile opens: strName then keeps the configured name.
bool CColorManager::GetRGBProfileName(CString& strName) {
    GetDefaultRGBString(strName);
    if (CanOpenProfile(strName)) return true;

    if (m_setupProfiles.empty())
        GetSetupProfileList(false);
    else
        m_setupProfilePos = m_setupProfiles.begin();
    if (m_setupProfiles.empty()) return false;

    std::string title;
    GetNextProfile(title);
    std::string fileName;
    CString wideTitle = FromThreadCodePage(title);
    if (GetProfileName(wideTitle, fileName)) {
        CString candidate = FromThreadCodePage(fileName);
        if (CanOpenProfile(candidate)) strName = candidate;
    }
    return true;
}

bool CColorManager::GetCMYKProfileName(CString& strName) {
    GetDefaultCMYKString(strName);
    if (CanOpenProfile(strName)) return true;

    if (m_setupCMYKProfiles.empty())
        GetSetupCMYKProfileList();
    else
        m_setupCMYKProfilePos = m_setupCMYKProfiles.begin();
    if (m_setupCMYKProfiles.empty()) return false;

    std::string title;
    GetCMYKNextProfile(title);
    CString wideTitle = FromThreadCodePage(title);
    std::string fileName;
    if (GetCMYKProfileName(wideTitle, fileName)) {
        CString candidate = FromThreadCodePage(fileName);
        if (CanOpenProfile(candidate)) strName = candidate;
    }
    return true;
}

bool CColorManager::GetProfileName(CString& strTitle, std::string& strFileName) {
    if (m_setupProfiles.empty()) return false;
    auto match = FindTitle(m_setupProfiles, strTitle);
    if (match == m_setupProfiles.end()) return false;
    strFileName = match->strFileName;
    return true;
}

bool CColorManager::GetCMYKProfileName(CString& strTitle, std::string& strFileName) {
    if (m_setupCMYKProfiles.empty()) return false;
    auto match = FindTitle(m_setupCMYKProfiles, strTitle);
    if (match == m_setupCMYKProfiles.end()) return false;
    strFileName = match->strFileName;
    return true;
}

bool CColorManager::CompareProfiles(CICCReadColorProfile& a, CICCReadColorProfile& b) {
    if (!a.GetProfile()) return false;
    return SameProfile(b, a);
}

// The stored profile's open result is not checked: an unopenable one fails
// the header test.
bool CColorManager::CompareProfileVersusWorkingSpace(CICCReadColorProfile& profile) {
    if (m_strWorkingSpace.IsNull()) return false;
    CICCReadColorProfile stored;
    void* handle = stored.OpenICCProfile(m_strWorkingSpace.Get());
    stored.SetProfile(handle, m_strWorkingSpace.Get());
    if (!profile.GetProfile()) return false;
    return SameProfile(stored, profile);
}

bool CColorManager::CompareProfileVersusCMYKProfile(CICCReadColorProfile& profile) {
    if (m_strCMYKProfile.IsNull()) return false;
    CICCReadColorProfile stored;
    void* handle = stored.OpenICCProfile(m_strCMYKProfile.Get());
    stored.SetProfile(handle, m_strCMYKProfile.Get());
    const bool same = profile.GetProfile() && SameProfile(stored, profile);
    stored.CloseProfile();
    return same;
}

uint16_t CColorManager::GetExifColorSpace() {
    if (m_strWorkingSpace.IsNull()) return 0;
    CString directory;
    GetColorDirectoryW(directory, false);
    CString path = directory + L"\\" + m_strWorkingSpace.Get();
    CICCReadColorProfile reader;
    void* handle = reader.OpenICCProfile(const_cast<wchar_t*>(path.GetString()));
    if (!handle) return 0;
    reader.SetProfile(handle, const_cast<wchar_t*>(path.GetString()));
    void* attached = reader.GetProfile();
    const long type = reader.GetLCSCSType(attached);
    reader.CloseProfile();
    return type == kLcsSRGB ? 1 : 0xFFFF;
}

void CColorManager::GetColorSpecRGB(SColorSpecRGB& colorSpec) { colorSpec = m_colorSpec; }
