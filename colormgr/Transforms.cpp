// Opening profiles by name and building the display transform: working
// space, optionally a proof profile, then the monitor.
#include <cwchar>
#include <vector>

#include "colormgr/ColorManager.h"
#include "colormgr/ManagerTrace.h"
#include "colormgr/SettingsAccess.h"
#include "devices/TextCodePage.h"
#include "module/ColorDirectory.h"
#include "module/FileProfileRecord.h"

using namespace colormgr;

namespace {
constexpr UINT kDefaultMonitorProfileString = 10401;
constexpr unsigned long kVcgtTag = 0x76636774;  // 'vcgt'
constexpr size_t kGammaRampValues = 768;

bool IsPath(const wchar_t* name) { return std::wcschr(name, L':') || std::wcschr(name, L'\\'); }

CString JoinDirectory(const CString& directory, const wchar_t* name) {
    CString path;
    path.Format(L"%s\\%s", directory.GetString(), name ? name : L"");
    return path;
}
}  // namespace

CString CColorManager::ColorDirectory() { return tesk::ColorDirectory(m_pfnGetColorDirectoryW); }

// One attempt: a PROFILE_FILENAME record in a global block, the open, the
// validity call (only its own result counts), and the block freed again.
HPROFILE CColorManager::OpenProfileOnce(const wchar_t* nameOrPath) {
    CString directory = ColorDirectory();
    CString path = IsPath(nameOrPath) ? CString(nameOrPath) : JoinDirectory(directory, nameOrPath);
    if (!m_pfnOpenColorProfileW || !m_pfnIsColorProfileValid || !m_pfnCloseColorProfile) return nullptr;

    PROFILE* record = tesk::AllocFileProfileRecord(path);
    if (!record) return nullptr;
    HPROFILE profile = m_pfnOpenColorProfileW(record, PROFILE_READ, FILE_SHARE_READ, OPEN_EXISTING);
    if (profile) {
        BOOL valid = FALSE;
        if (!m_pfnIsColorProfileValid(profile, &valid)) {
            m_pfnCloseColorProfile(profile);
            profile = nullptr;
        }
    }
    tesk::FreeFileProfileRecord(record);
    return profile;
}

HPROFILE CColorManager::OpenProfileWithRetry(const wchar_t* nameOrPath) {
    if (!nameOrPath) return nullptr;
    HPROFILE profile = OpenProfileOnce(nameOrPath);
    if (!profile) {
        Trace(CM_TRACE_SILENT(L"CColorManager::OpenColorProfile"), kX64EngagedMessage);
        profile = OpenProfileOnce(nameOrPath);
    }
    return profile;
}

HPROFILE CColorManager::OpenColorProfileFromFile(wchar_t* name) { return OpenProfileWithRetry(name); }

HTRANSFORM CColorManager::CreateTransform(HPROFILE* profiles, DWORD count, DWORD* intents, DWORD intentCount) {
    if (!m_pfnCreateMultiProfileTransform) return nullptr;
    return m_pfnCreateMultiProfileTransform(profiles, count, intents, intentCount, BEST_MODE, INDEX_DONT_CARE);
}

HTRANSFORM CColorManager::CreateTransform2Profile(HPROFILE from, HPROFILE to, DWORD intent) {
    HPROFILE profiles[2] = {from, to};
    DWORD intents[2] = {intent, intent};
    return CreateTransform(profiles, 2, intents, 2);
}

bool CColorManager::UpdateTransform() {
    DeleteTransform(m_hImageTransform);

    CString directory = ColorDirectory();
    if (m_strMonitorProfile.IsNull()) {
        CString defaultName;
        defaultName.LoadString(kDefaultMonitorProfileString);
        UpdateString(m_strMonitorProfile, const_cast<wchar_t*>(defaultName.GetString()));
    }
    CString monitorPath = JoinDirectory(directory, m_strMonitorProfile.Get());
    const bool withProof = m_bProof;
    CString proofPath = withProof ? JoinDirectory(directory, m_strProofProfile.Get()) : CString();

    HPROFILE monitor = OpenProfileWithRetry(monitorPath);
    HPROFILE proof = nullptr;
    if (withProof) {
        proof = OpenProfileWithRetry(proofPath);
        if (!proof) {
            if (monitor) m_pfnCloseColorProfile(monitor);
            return false;
        }
    }
    if (!monitor) {
        if (proof) m_pfnCloseColorProfile(proof);
        return false;
    }

    CString workingPath = JoinDirectory(directory, m_strWorkingSpace.Get());
    HPROFILE working = OpenProfileWithRetry(workingPath);
    if (!working) {
        CICCReadColorProfile fallbackReader;
        working = GetRGBProfile(fallbackReader);
    }

    if (withProof) {
        HPROFILE profiles[3] = {working, proof, monitor};
        DWORD intents[3] = {m_dwIntent, m_dwProofIntent, m_dwProofIntent};
        m_hImageTransform = CreateTransform(profiles, 3, intents, 3);
    } else {
        HPROFILE profiles[2] = {working, monitor};
        DWORD intents[2] = {m_dwIntent, m_dwIntent};
        m_hImageTransform = CreateTransform(profiles, 2, intents, 2);
    }

    UpdateColorWorkingSpace(working);
    if (working) m_pfnCloseColorProfile(working);

    // The monitor's calibration goes to the display's gamma ramp.
    {
        void* handle = monitor;
        CICCReadColorProfile monitorReader(handle, m_strMonitorProfile.Get(), false);
        if (monitorReader.DoesProfileTagExist(kVcgtTag)) {
            SVCGTGamma gamma{};
            if (monitorReader.GetVCGTTable(gamma) && gamma.m_nGammaType == kVCGTTable) {
                const size_t count = static_cast<size_t>(gamma.m_table.m_nChannels) * gamma.m_table.m_nEntryCount;
                // The ramp is always read as 768 values: a shorter table reads as zero past its end.
                std::vector<uint16_t> ramp(count > kGammaRampValues ? count : kGammaRampValues, 0);
                if (gamma.m_table.m_pData)
                    for (size_t i = 0; i < count; ++i) ramp[i] = gamma.m_table.m_pData[i];
                SetDeviceGammaRampFromVCGT(nullptr, ramp.data(), static_cast<int>(count), false);
            }
            if (gamma.m_nGammaType == kVCGTTable) delete[] gamma.m_table.m_pData;
        } else if (m_pSavedGammaRamp) {
            SetDeviceGammaRampFromVCGT(nullptr, nullptr, 0, true);
        }
    }

    m_pfnCloseColorProfile(monitor);
    if (proof) m_pfnCloseColorProfile(proof);
    return m_hImageTransform != nullptr;
}

void CColorManager::SetFallbackColorSpec() {
    static constexpr double kMatrix[3][3] = {{0.43605092, 0.222491, 0.01392889},
                                             {0.38508309, 0.716888, 0.09709693},
                                             {0.1430859, 0.060621, 0.71418117}};
    static constexpr double kInverse[3][3] = {{3.1340605, -0.9787603, 0.0719434},
                                              {-1.617035, 1.9161379, -0.2289722},
                                              {-0.4906508, 0.0334489, 1.4052267}};
    m_colorSpec.m_bsRGB = 1;
    m_colorSpec.m_dGamma = 0.0;
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 3; ++column) {
            m_colorSpec.m_dMatrix[row][column] = kMatrix[row][column];
            m_colorSpec.m_dInverse[row][column] = kInverse[row][column];
        }
}

void CColorManager::UpdateColorWorkingSpace(HPROFILE& workingProfile) {
    if (!m_strWorkingSpace.IsNull() && workingProfile) {
        void* handle = workingProfile;
        CICCReadColorProfile reader(handle, m_strWorkingSpace.Get(), false);
        if (!reader.BuildColorSpecRGB(m_colorSpec)) SetFallbackColorSpec();
        CSettingsGroupAccess(kColorSettingsGroup).WriteText(kSettingWorkingSpace, m_strWorkingSpace.Get());
        return;
    }
    SetFallbackColorSpec();
}

HPROFILE CColorManager::GetRGBProfile(CICCReadColorProfile& reader) {
    if (m_setupProfiles.empty()) GetSetupProfileList(false);
    if (m_setupProfiles.empty()) return nullptr;
    const std::string& fileName = m_setupProfiles.front().strFileName;
    CString wide = colormgr::FromThreadCodePage(fileName);
    return reader.OpenICCProfile(const_cast<wchar_t*>(wide.GetString()));
}

HPROFILE CColorManager::GetCMYKProfile(CICCReadColorProfile& reader) {
    if (m_setupCMYKProfiles.empty()) GetSetupCMYKProfileList();
    if (m_setupCMYKProfiles.empty()) return nullptr;
    GetFirstCMYKProfile();
    std::string title;
    GetCMYKNextProfile(title);
    CString wideTitle = colormgr::FromThreadCodePage(title);
    std::string fileName;
    if (!GetCMYKProfileName(wideTitle, fileName)) return nullptr;
    CString wide = colormgr::FromThreadCodePage(fileName);
    return reader.OpenICCProfile(const_cast<wchar_t*>(wide.GetString()));
}

bool CColorManager::GetProfileBytes(const vell::TSharedArray<wchar_t>& member, BYTE** data, int& size,
                                    CString& name) {
    if (member.IsNull() || !data || !m_pfnGetColorProfileFromHandle) return false;
    CString path = JoinDirectory(ColorDirectory(), member.Get());
    CICCReadColorProfile reader;
    HPROFILE profile = reader.OpenICCProfile(const_cast<wchar_t*>(path.GetString()));
    if (!profile) return false;

    bool delivered = false;
    DWORD bytes = 0;
    m_pfnGetColorProfileFromHandle(profile, nullptr, &bytes);
    if (bytes > 0) {
        auto* block = static_cast<BYTE*>(::GlobalAlloc(GPTR, bytes));
        if (block) {
            m_pfnGetColorProfileFromHandle(profile, block, &bytes);
            *data = block;
            size = static_cast<int>(bytes);
            delivered = true;
        }
    }
    if (m_pfnCloseColorProfile) m_pfnCloseColorProfile(profile);

    CString stored(member.Get());
    const int dot = stored.ReverseFind(L'.');
    name = dot >= 0 ? stored.Left(dot) : CString();
    return delivered;
}

bool CColorManager::GetWorkingProfile(BYTE** data, int& size, CString& name) {
    return GetProfileBytes(m_strWorkingSpace, data, size, name);
}

bool CColorManager::GetRawCMYKProfile(BYTE** data, int& size, CString& name) {
    return GetProfileBytes(m_strCMYKProfile, data, size, name);
}
