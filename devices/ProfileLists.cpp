// The working-space and CMYK setup lists with their cursors, the colour
// directory, install/uninstall and the profile-enumeration callback.
#include <vector>

#include "colormgr/ColorManager.h"
#include "colormgr/ManagerTrace.h"
#include "devices/DirectoryFinder.h"
#include "devices/TextCodePage.h"

using namespace colormgr;

void CColorManager::GetColorDirectoryW(CString& strDir, bool bX64) {
    if (bX64) Trace(CM_TRACE_INFO(L"CColorManager::GetColorDirectoryW"), kX64EngagedMessage);
    strDir = ColorDirectory();
}

bool CColorManager::ScanColorDirectory(std::list<SSetupProfile>& list, bool cmyk) {
    CString directory;
    GetColorDirectoryW(directory, false);
    std::string pattern = ToThreadCodePage(directory.GetString()) + "\\*.*";
    CICCReadColorProfile classifier;
    for (const SFoundFile& file : FindFiles(FromThreadCodePage(pattern))) {
        if (file.isDirectory) continue;
        CString path = file.path;
        const bool wanted = cmyk ? classifier.IsProfileCMYK(path) : classifier.IsProfileWorkingSpace(path);
        if (!wanted) continue;
        list.push_back({ToThreadCodePage(file.title.GetString()), ToThreadCodePage(file.fileName.GetString()),
                        ToThreadCodePage(file.path.GetString())});
    }
    return !list.empty();
}

// Without any working-space profile the scan repeats without end: callers
// rely on the platform always providing one.
bool CColorManager::GetSetupProfileList(bool bX64) {
    for (bool x64 = bX64;; x64 = true) {
        m_setupProfiles.clear();
        m_setupProfilePos = m_setupProfiles.end();
        if (x64) Trace(CM_TRACE_INFO(L"CColorManager::GetSetupProfileList"), kX64EngagedMessage);
        if (ScanColorDirectory(m_setupProfiles, false)) {
            m_setupProfilePos = m_setupProfiles.begin();
            return true;
        }
    }
}

bool CColorManager::GetSetupCMYKProfileList() {
    m_setupCMYKProfiles.clear();
    ScanColorDirectory(m_setupCMYKProfiles, true);
    m_setupCMYKProfilePos = m_setupCMYKProfiles.begin();
    return !m_setupCMYKProfiles.empty();
}

bool CColorManager::GetFirstProfile() {
    if (m_setupProfiles.empty() && GetSetupProfileList(false)) return true;
    m_setupProfilePos = m_setupProfiles.begin();
    return !m_setupProfiles.empty();
}

// The call that hands out the last entry fills strName and still returns false.
bool CColorManager::GetNextProfile(std::string& strName) {
    if (m_setupProfiles.empty() || m_setupProfilePos == m_setupProfiles.end()) return false;
    SSetupProfile entry = *m_setupProfilePos;
    strName = entry.strTitle;
    ++m_setupProfilePos;
    return m_setupProfilePos != m_setupProfiles.end();
}

bool CColorManager::GetFirstCMYKProfile() {
    if (m_setupCMYKProfiles.empty() && GetSetupCMYKProfileList()) return true;
    m_setupCMYKProfilePos = m_setupCMYKProfiles.begin();
    return !m_setupCMYKProfiles.empty();
}

bool CColorManager::GetCMYKNextProfile(std::string& strName) {
    if (m_setupCMYKProfilePos == m_setupCMYKProfiles.end()) return false;
    SSetupProfile entry = *m_setupCMYKProfilePos;
    strName = entry.strTitle;
    ++m_setupCMYKProfilePos;
    return m_setupCMYKProfilePos != m_setupCMYKProfiles.end();
}

bool CColorManager::InstallColorProfileW(const wchar_t* pszPath) {
    if (!m_bLoaded || !m_pfnInstallColorProfileW) return false;
    return m_pfnInstallColorProfileW(nullptr, pszPath) == 1;
}

bool CColorManager::UninstallColorProfileW(const wchar_t* pszPath) {
    if (!m_bLoaded || !m_pfnUninstallColorProfileW) return false;
    return m_pfnUninstallColorProfileW(nullptr, pszPath, FALSE) == 1;
}

int CALLBACK CColorManager::EnumICMProfilesProcCallback(wchar_t* fileName, LPARAM param) {
    auto* names = reinterpret_cast<std::vector<CString>*>(param);
    CString full(fileName);
    const int separator = full.ReverseFind(L'\\');
    names->push_back(separator >= 0 ? full.Mid(separator + 1) : full);
    return 1;
}
