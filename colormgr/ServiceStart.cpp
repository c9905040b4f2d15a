// Starting the service (InitAppService) and following the host's printer
// changes (EventHandler).
#include "colormgr/ColorManager.h"
#include "colormgr/SettingsAccess.h"

using namespace colormgr;

namespace {
constexpr int kPrinterChangedEvent = 42;
constexpr UINT kDefaultMonitorProfileString = 10401;
}  // namespace

bool CColorManager::InitAppService(ICommandExecutionContext* context, CWnd* /*parent*/) {
    if (context) m_pLanguage = context->GetLanguage();

    BindPlatformFunctions();

    if (m_bLoaded) {
        GetDisplayMonitorInfo();
        if (!m_strMonitorProfile.IsNull()) SetDisplayMonitorProfile(m_strMonitorProfile);
    }
    if (m_bLoaded) ReadPrinterFromStore();

    ReadColorSettings();

    m_nQFXProfileSize = 0;
    SetStartupColorSpec();

    if (m_eMode == VCM_MODE_TABLES)
        BuildTables();
    else if (m_eMode == VCM_MODE_PROFILES)
        UpdateTransform();

    m_strDefaultMonitorProfile.LoadString(kDefaultMonitorProfileString);
    m_greyPalette.CreateGreyscale();

    if (!m_strMonitorProfile.IsNull()) SetDisplayMonitorProfile(m_strMonitorProfile);
    return true;
}

void CColorManager::EventHandler(ICommandExecutionContext* /*context*/, int event, void* data) {
    if (event != kPrinterChangedEvent || !data) return;
    CColorManager* manager = static_cast<CColorManager*>(data);
    manager->ReadPrinterFromStore();
    manager->UpdateTransform();
}

void CColorManager::ReadPrinterFromStore() {
    CString printer;
    {
        CSettingsGroupAccess store(kPrinterSettingsGroup);
        store.ReadText(kDefaultPrinterId, printer);
    }
    if (printer.IsEmpty()) return;
    m_strPrinterName = CopyString(const_cast<wchar_t*>(printer.GetString()));
    SetupPrinter(m_strPrinterName.Get());
}

// The printer's own profile becomes the printer and the proof profile.
void CColorManager::SetupPrinter(const wchar_t* printerName) {
    wchar_t* name = const_cast<wchar_t*>(printerName);
    LONG size = ::DocumentPropertiesW(nullptr, nullptr, name, nullptr, nullptr, 0);
    if (size <= 0) return;
    std::vector<BYTE> deviceMode(static_cast<size_t>(size) * 2);
    DEVMODEW* mode = reinterpret_cast<DEVMODEW*>(deviceMode.data());
    ::DocumentPropertiesW(nullptr, nullptr, name, mode, nullptr, DM_OUT_BUFFER);
    HDC dc = ::CreateDCW(nullptr, printerName, nullptr, mode);
    if (!dc) return;
    m_strPrinterProfile = GetDefaultICMProfile(dc);
    m_strProofProfile = CopyString(m_strPrinterProfile.Get());
    ::DeleteDC(dc);
}

void CColorManager::ReadColorSettings() {
    CSettingsGroupAccess store(kColorSettingsGroup);
    if (!store.HasStore()) {
        CString workingSpace;
        GetDefaultRGBString(workingSpace);
        UpdateString(m_strWorkingSpace, const_cast<wchar_t*>(workingSpace.GetString()));
        return;
    }

    int value = 0;
    if (store.ReadInt(kSettingMode, value)) m_eMode = static_cast<VCM_MODE>(value);
    if (store.ReadInt(kSettingEmbedded, value)) m_eEmbedded = static_cast<VCM_EMBEDDED>(value);
    if (store.ReadInt(kSettingProof, value)) m_bProof = value != 0;
    if (store.ReadInt(kSettingIntent, value)) m_dwIntent = static_cast<DWORD>(value);
    if (store.ReadInt(kSettingProofIntent, value)) m_dwProofIntent = static_cast<DWORD>(value);

    auto readName = [&store, this](int id, vell::TSharedArray<wchar_t>& member) {
        CString text;
        if (store.ReadText(id, text) && !text.IsEmpty()) UpdateString(member, const_cast<wchar_t*>(text.GetString()));
        return !text.IsEmpty();
    };
    readName(kSettingMonitorProfile, m_strMonitorProfile);
    if (!readName(kSettingWorkingSpace, m_strWorkingSpace)) {
        CString fallback;
        GetDefaultRGBString(fallback);
        UpdateString(m_strWorkingSpace, const_cast<wchar_t*>(fallback.GetString()));
    }
    if (!readName(kSettingCMYKProfile, m_strCMYKProfile)) {
        CString fallback;
        GetDefaultCMYKString(fallback);
        UpdateString(m_strCMYKProfile, const_cast<wchar_t*>(fallback.GetString()));
    }
    readName(kSettingPrinterProfile, m_strPrinterProfile);
    readName(kSettingProofProfile, m_strProofProfile);

    double gamma = 0.0;
    if (store.ReadDouble(kSettingGamma0, gamma)) m_dGamma0 = gamma;
    if (store.ReadDouble(kSettingGamma1, gamma)) m_dGamma1 = gamma;
    if (store.ReadDouble(kSettingGamma2, gamma)) m_dGamma2 = gamma;
}

// Start-up values of the lent RGB colour record; a profile-based build
// overwrites them from the working space.
void CColorManager::SetStartupColorSpec() {
    static constexpr double kMatrix[3][3] = {{0.38508309, 0.1430859, 0.43605092},
                                             {0.716888, 0.060621, 0.09709693},
                                             {0.09709693, 0.71418117, 0.01392889}};
    static constexpr double kInverse[3][3] = {{-0.9787603, -1.9161379, 0.0334489},
                                              {-0.2289722, 1.9161379, 1.4052267},
                                              {3.1340605, -1.617035, -0.4906508}};
    m_colorSpec.m_bsRGB = 0;
    m_colorSpec.m_dGamma = 0.45454545454545453;
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 3; ++column) {
            m_colorSpec.m_dMatrix[row][column] = kMatrix[row][column];
            m_colorSpec.m_dInverse[row][column] = kInverse[row][column];
        }
}
