// The colour settings: getters, setters (member first, then the settings
// store), the two commits of the settings dialogs and the host's QFX profile.
#include <cstring>
#include <new>

#include "colormgr/ColorManager.h"
#include "colormgr/SettingsAccess.h"
#include "host/VException.h"

using namespace colormgr;

namespace {
bool AllNeutral(double g0, double g1, double g2) { return g0 == 1.0 && g1 == 1.0 && g2 == 1.0; }
}  // namespace

DWORD CColorManager::GetLCSIntent(DWORD intent) const {
    switch (intent) {
        case INTENT_PERCEPTUAL: return LCS_GM_IMAGES;
        case INTENT_RELATIVE_COLORIMETRIC: return LCS_GM_GRAPHICS;
        case INTENT_SATURATION: return LCS_GM_BUSINESS;
        case INTENT_ABSOLUTE_COLORIMETRIC: return LCS_GM_ABS_COLORIMETRIC;
        default: return LCS_GM_IMAGES;
    }
}

void CColorManager::GetMonitorProfile(CString& name) { name = m_strMonitorProfile.Get(); }

void CColorManager::GetDefaultMonitorProfile(CString& name) { name = m_strDefaultMonitorProfile; }

void CColorManager::GetCMYKProfile(CString& name) { GetDefaultCMYKString(name); }

void CColorManager::SetMode(VCM_MODE mode) { m_eMode = mode; }

void CColorManager::SetEmbeddedMode(VCM_EMBEDDED policy) {
    m_eEmbedded = policy;
    CSettingsGroupAccess(kColorSettingsGroup).WriteInt(kSettingEmbedded, m_eEmbedded);
}

// A CString always holds a buffer, so these setters never skip, not even for
// an empty name.
void CColorManager::SetColorWorkingSpace(CString& name) {
    UpdateString(m_strWorkingSpace, const_cast<wchar_t*>(name.GetString()));
    CSettingsGroupAccess(kColorSettingsGroup).WriteText(kSettingWorkingSpace, m_strWorkingSpace.Get());
}

void CColorManager::SetCMYKProfile(CString& name) {
    UpdateString(m_strCMYKProfile, const_cast<wchar_t*>(name.GetString()));
    DeleteTransform(m_hRGBToCMYKTransform);
    DeleteTransform(m_hCMYKToRGBTransform);
    CSettingsGroupAccess(kColorSettingsGroup).WriteText(kSettingCMYKProfile, m_strCMYKProfile.Get());
}

void CColorManager::SetMonitorProfile(CString& name) {
    UpdateString(m_strMonitorProfile, const_cast<wchar_t*>(name.GetString()));
    CSettingsGroupAccess(kColorSettingsGroup).WriteText(kSettingMonitorProfile, m_strMonitorProfile.Get());
    SetDisplayMonitorProfile(m_strMonitorProfile);
    UpdateTransform();
}

bool CColorManager::UpdateWithColorWS() { return UpdateTransform(); }

void CColorManager::SetQFXColorProfile(BYTE* data, int& size) {
    delete[] m_pQFXProfile;
    m_pQFXProfile = nullptr;
    if (size < 0) throw CVException(VELL_ERR_NO_MEMORY);
    BYTE* copy = new (std::nothrow) BYTE[static_cast<size_t>(size)];
    if (!copy) throw CVException(VELL_ERR_NO_MEMORY);
    if (size > 0) std::memcpy(copy, data, static_cast<size_t>(size));
    m_pQFXProfile = copy;
    m_nQFXProfileSize = size;
}

void CColorManager::ResetQFXColorProfile() {
    m_nQFXProfileSize = 0;
    delete[] m_pQFXProfile;
    m_pQFXProfile = nullptr;
}

void CColorManager::UpdateSettings(bool useProfiles, bool proof, wchar_t* monitor, wchar_t* printer,
                                   wchar_t* proofProfile, DWORD intent, DWORD proofIntent) {
    if (!useProfiles) {
        if (AllNeutral(m_dGamma0, m_dGamma1, m_dGamma2)) {
            m_eMode = VCM_MODE_OFF;
        } else {
            m_eMode = VCM_MODE_TABLES;
            BuildTables();
        }
    } else {
        m_eMode = VCM_MODE_PROFILES;
    }
    m_bProof = proof;
    m_dwIntent = intent;
    m_dwProofIntent = proofIntent;
    // The names must be valid pointers; an empty one keeps the current name.
    if (monitor[0] != 0) UpdateString(m_strMonitorProfile, monitor);
    if (printer[0] != 0) UpdateString(m_strPrinterProfile, printer);
    if (proofProfile[0] != 0) UpdateString(m_strProofProfile, proofProfile);

    {
        CSettingsGroupAccess store(kColorSettingsGroup);
        store.WriteInt(kSettingMode, m_eMode);
        store.WriteInt(kSettingEmbedded, m_eEmbedded);
        store.WriteInt(kSettingProof, m_bProof ? 1 : 0);
        store.WriteInt(kSettingIntent, static_cast<int>(m_dwIntent));
        store.WriteInt(kSettingProofIntent, static_cast<int>(m_dwProofIntent));
        auto writeName = [&store](int id, const vell::TSharedArray<wchar_t>& name) {
            if (!name.IsNull() && name.Get()[0] != 0) store.WriteText(id, name.Get());
        };
        writeName(kSettingMonitorProfile, m_strMonitorProfile);
        writeName(kSettingPrinterProfile, m_strPrinterProfile);
        writeName(kSettingProofProfile, m_strProofProfile);
        writeName(kSettingWorkingSpace, m_strWorkingSpace);
        writeName(kSettingCMYKProfile, m_strCMYKProfile);
    }

    if (m_eMode == VCM_MODE_PROFILES)
        UpdateTransform();
    else
        DeleteTransform(m_hImageTransform);
}

void CColorManager::UpdateSettings(double gamma0, double gamma1, double gamma2) {
    if (m_eMode != VCM_MODE_PROFILES) m_eMode = AllNeutral(gamma0, gamma1, gamma2) ? VCM_MODE_OFF : VCM_MODE_TABLES;
    m_dGamma0 = gamma0;
    m_dGamma1 = gamma1;
    m_dGamma2 = gamma2;
    {
        CSettingsGroupAccess store(kColorSettingsGroup);
        store.WriteInt(kSettingMode, m_eMode);
        store.WriteDouble(kSettingGamma0, m_dGamma0);
        store.WriteDouble(kSettingGamma1, m_dGamma1);
        store.WriteDouble(kSettingGamma2, m_dGamma2);
    }
    if (m_eMode != VCM_MODE_PROFILES) DeleteTransform(m_hImageTransform);
    if (m_eMode != VCM_MODE_OFF) BuildTables();
}
