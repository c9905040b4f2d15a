// CColorManager: the one colour-management service of the host. It binds the
// platform colour functions, keeps the user's colour settings (mirrored in the
// host's settings store), builds the display transform from them, lists the
// installed profiles and looks after the monitor and the default printer.
#pragma once
#include <windows.h>
#include <icm.h>

#include <cstdint>
#include <list>
#include <string>
#include <vector>

#include "host/AppService.h"
#include "host/CString.h"
#include "host/SharedArray.h"
#include "host/VException.h"
#include "host/imaging/DibIterator.h"
#include "host/imaging/Palette.h"
#include "host/imaging/RowIterator.h"
#include "host/imaging/StatusControl.h"
#include "icc/ICCReadColorProfile.h"
#include "module/Export.h"

class CConnectLanguage;
class IRowAccess;

enum VCM_MODE : int32_t {
    VCM_MODE_OFF = 0,
    VCM_MODE_PROFILES = 1,
    VCM_MODE_TABLES = 2,
};

// Policy for profiles embedded in opened images: kept and persisted only; the
// further values are the host's.
enum VCM_EMBEDDED : int32_t {
    VCM_EMBEDDED_DEFAULT = 0,
};

// One entry of a setup list; narrow texts in the thread's code page.
struct SSetupProfile {
    std::string strTitle;     // file name without extension
    std::string strFileName;  // file name with extension
    std::string strPath;      // full path
};

class TESKCOLORMGR_API CColorManager : public VAppService {
public:
    static const GUID m_kCMGUID;

    // ---- lifecycle
    static CColorManager* Instance();
    static void CreateInstance(CColorManager** out);
    static void AddInstance(CColorManager* manager);
    static void Delete(CColorManager* manager);
    static void Disable();

    CColorManager();
    ~CColorManager() override;
    CColorManager(const CColorManager&) = delete;
    CColorManager& operator=(const CColorManager&) = delete;

    bool InitAppService(ICommandExecutionContext* context, CWnd* parent) override;
    static void EventHandler(ICommandExecutionContext* context, int event, void* data);
    bool IsLoaded() const { return m_bLoaded; }

    // ---- settings
    VCM_MODE GetMode() const;
    VCM_EMBEDDED GetEmbeddedMode() const { return m_eEmbedded; }
    DWORD GetLCSIntent() const { return m_dwIntent; }
    DWORD GetLCSIntent(DWORD intent) const;
    void GetMonitorProfile(CString& name);
    void GetDefaultMonitorProfile(CString& name);
    void GetCMYKProfile(CString& name);
    bool QFXColorProfile() const { return m_pQFXProfile != nullptr; }

    void SetMode(VCM_MODE mode);
    void SetEmbeddedMode(VCM_EMBEDDED policy);
    void SetColorWorkingSpace(CString& name);
    void SetCMYKProfile(CString& name);
    void SetMonitorProfile(CString& name);
    bool UpdateWithColorWS();
    void SetQFXColorProfile(BYTE* data, int& size);
    void ResetQFXColorProfile();
    void UpdateSettings(bool useProfiles, bool proof, wchar_t* monitor, wchar_t* printer, wchar_t* proofProfile,
                        DWORD intent, DWORD proofIntent);
    void UpdateSettings(double gamma0, double gamma1, double gamma2);

    // ---- profiles and transforms
    HPROFILE OpenColorProfileFromFile(wchar_t* name);
    HPROFILE GetRGBProfile(CICCReadColorProfile& reader);
    HPROFILE GetCMYKProfile(CICCReadColorProfile& reader);
    bool GetWorkingProfile(BYTE** data, int& size, CString& name);
    bool GetRawCMYKProfile(BYTE** data, int& size, CString& name);

    // ---- setup lists
    bool GetSetupProfileList(bool bX64);
    bool GetSetupCMYKProfileList();
    bool GetFirstProfile();
    bool GetNextProfile(std::string& strName);
    bool GetFirstCMYKProfile();
    bool GetCMYKNextProfile(std::string& strName);
    void GetColorDirectoryW(CString& strDir, bool bX64);
    bool InstallColorProfileW(const wchar_t* pszPath);
    bool UninstallColorProfileW(const wchar_t* pszPath);

    // ---- profile naming and comparison
    void GetDefaultRGBString(CString& str);
    void GetDefaultCMYKString(CString& str);
    bool GetRGBProfileName(CString& strName);
    bool GetCMYKProfileName(CString& strName);
    bool GetProfileName(CString& strTitle, std::string& strFileName);
    bool GetCMYKProfileName(CString& strTitle, std::string& strFileName);
    bool CompareProfiles(CICCReadColorProfile& a, CICCReadColorProfile& b);
    bool CompareProfileVersusWorkingSpace(CICCReadColorProfile& profile);
    bool CompareProfileVersusCMYKProfile(CICCReadColorProfile& profile);
    uint16_t GetExifColorSpace();
    void GetColorSpecRGB(SColorSpecRGB& colorSpec);

    // ---- monitors and gamma ramps
    bool AssociateMonitorProfile(const wchar_t* pszProfile, HWND& hWnd);
    bool DisassociateMonitorProfile(const wchar_t* pszProfile, HWND& hWnd);
    bool DisassociateAllMonitorProfiles(HWND& hWnd);
    bool SaveOriginialDeviceGammaRamp(HWND& hWnd);
    bool SetDeviceGammaRampFromVCGT(HWND hWnd, uint16_t* pRamp, int nCount, bool bRestore);

    // ---- printer and device contexts
    void SetDefaultPrinterW(const wchar_t* pszPrinter);
    bool SetupDC(HDC hdc);
    void CleanupDC(HDC hdc);

    // ---- colour-matching dialog
    bool ColorMatchUI(HWND hWnd, bool& bEnableICM, bool& bProofing, vell::TSharedArray<wchar_t>& strMonitorProfile,
                      vell::TSharedArray<wchar_t>& strPrinterProfile, vell::TSharedArray<wchar_t>& strTargetProfile,
                      uint32_t& dwRenderIntent, uint32_t& dwProofingIntent);

    // ---- image and colour transformation
    bool TransformImage(void* sourceProfile, CDibIterator& source, CDibIterator& destination,
                        CRowIterator* sourceRows, CRowIterator* destinationRows, bool flag);
    bool TransformIterator(CRowIterator& source, CRowIterator* destination, bool gamma);
    void TransformPaletteColors(void* sourceProfile, RGBQUAD* palette, int count);
    void TransformColor(DWORD& color);
    bool ProcessColors(RGBQUAD* input, RGBQUAD* output, int count);
    int FindGreyscaleIndex(DWORD color);

    // ---- ink planes (255 = no ink)
    VellErrorCode ConvertCMYKtoRGB(unsigned char* cyan, unsigned char* magenta, unsigned char* yellow,
                                   unsigned char* black, unsigned char* rgb, int width, int inputStride,
                                   int outputStride, int planar);
    VellErrorCode ConvertCMYtoRGB(unsigned char* cyan, unsigned char* magenta, unsigned char* yellow,
                                  unsigned char* rgb, int width, int extraLength, int outputStride, int planeStep);
    VellErrorCode ConvertRGBtoCMY(unsigned char* cyan, unsigned char* magenta, unsigned char* yellow, void* rgb,
                                  int width, int outputStride, int inputStride);
    VellErrorCode ConvertRGBtoCMYK(unsigned char* cyan, unsigned char* magenta, unsigned char* yellow,
                                   unsigned char* black, void* rgb, int width, int outputStride, int inputStride);

    // ---- separation and recombination through the CMYK profile
    VellErrorCode TransformFromRGBToCMYK(CStatusControl* status, const CRowIterator& source, CRowIterator& cyan,
                                         CRowIterator& magenta, CRowIterator& yellow, CRowIterator& black,
                                         bool invert);
    VellErrorCode ColorTransformRGBtoCMYK(DWORD& color, BYTE& cyan, BYTE& magenta, BYTE& yellow, BYTE& black,
                                          bool invert);
    VellErrorCode OutputFromRGBToCMYK(CStatusControl* status, CDibIterator& source, CDibIterator& output);
    VellErrorCode OutputFromRGBToCMYK(CStatusControl* status, const CRowIterator& source, CRowIterator& output);
    VellErrorCode TransformFromCMYKToRGB(CStatusControl* status, CRowIterator& cyan, CRowIterator& magenta,
                                         CRowIterator& yellow, CRowIterator& black, CRowIterator& output);
    VellErrorCode InputFromCMYKtoRGB(CStatusControl* status, CDibIterator& source, CDibIterator& output,
                                     void* cmykProfile);
    VellErrorCode InputFromCMYKtoRGB(CStatusControl* status, const CRowIterator& source, CRowIterator& output);
    VellErrorCode InputFromCMYKtoRGB(CStatusControl* status, const CRowIterator& source, CRowIterator& output,
                                     void* cmykProfile);
    bool TransformCMYKImage(void* sourceProfile, CDibIterator& source, CDibIterator& destination);

private:
    friend class CColorManagerTestAccess;

    // Lifecycle and binding.
    void LoadPlatformLibraries();
    void BindPlatformFunctions();
    bool Is64BitWindows() const { return true; }

    // Start-up pieces.
    void ReadPrinterFromStore();
    void SetupPrinter(const wchar_t* printerName);
    void ReadColorSettings();
    void SetStartupColorSpec();

    // Settings helpers.
    bool UpdateString(vell::TSharedArray<wchar_t>& target, wchar_t* text);
    vell::TSharedArray<wchar_t> GetRegistryString(HKEY root, wchar_t* subKey, wchar_t* valueName);
    vell::TSharedArray<wchar_t> CopyString(wchar_t* text);
    void DeleteTransform(HTRANSFORM& transform);

    // Transforms.
    bool UpdateTransform();
    void UpdateColorWorkingSpace(HPROFILE& workingProfile);
    void SetFallbackColorSpec();
    HTRANSFORM CreateTransform(HPROFILE* profiles, DWORD count, DWORD* intents, DWORD intentCount);
    HTRANSFORM CreateTransform2Profile(HPROFILE from, HPROFILE to, DWORD intent);
    HPROFILE OpenProfileOnce(const wchar_t* nameOrPath);
    HPROFILE OpenProfileWithRetry(const wchar_t* nameOrPath);
    CString ColorDirectory();
    bool GetProfileBytes(const vell::TSharedArray<wchar_t>& member, BYTE** data, int& size, CString& name);

    // Gamma tables of the table mode.
    void BuildTables();

    // Image conversion helpers.
    HPROFILE OpenWorkingSpaceProfile();
    HTRANSFORM OneOffTransformToWorkingSpace(HPROFILE source, HPROFILE workingSpace);
    HTRANSFORM CachedInkTransform(bool cmykToRgb);
    // The working RGB and the default CMYK profile, each falling back to the
    // first installed one; null when none opens. The reader closes it.
    HPROFILE OpenWorkingRGBProfile(CICCReadColorProfile& reader);
    HPROFILE OpenDefaultCMYKProfile(CICCReadColorProfile& reader);
    DWORD SeparationIntent() const { return m_bProof ? m_dwProofIntent : 0; }
    // Working RGB -> default CMYK with `intent`; the RGB profile is closed at
    // once, the CMYK one is handed back for closing after the work. Null when a
    // profile or the transform cannot be had (nothing left open then).
    HTRANSFORM OpenRGBToCMYKTransform(DWORD intent, CICCReadColorProfile& cmykReader, HPROFILE& cmyk);
    // CMYK (the given handle, else the default CMYK profile) -> working RGB;
    // the RGB profile is handed back for closing after the work.
    HTRANSFORM OpenCMYKToRGBTransform(void* cmykProfile, CICCReadColorProfile& rgbReader, HPROFILE& rgb);
    // Every row of `source` through `transform` into `output`; a failed row
    // gives 101 and ends the work or not, as `stopOnFailure` says.
    VellErrorCode TranslateRows(CStatusControl& progress, HTRANSFORM transform, IRowAccess& source,
                                BMFORMAT sourceFormat, IRowAccess& output, BMFORMAT outputFormat,
                                bool stopOnFailure);

    // Setup lists.
    bool ScanColorDirectory(std::list<SSetupProfile>& list, bool cmyk);
    static int CALLBACK EnumICMProfilesProcCallback(wchar_t* fileName, LPARAM param);

    // Monitors.
    bool GetDisplayMonitorInfo();
    vell::TSharedArray<wchar_t> GetDeviceNameForMonitor(HWND& hWnd);
    CString GetMonitorDeviceName(HWND hWnd);
    bool SetDisplayMonitorProfile(vell::TSharedArray<wchar_t>& strName);

    // Printer.
    vell::TSharedArray<wchar_t> GetDefaultPrinterName();
    vell::TSharedArray<wchar_t> GetDefaultICMProfile(HDC hdc);

    // ---- platform binding (declaration order of the bound exports)
    decltype(&::GetStandardColorSpaceProfileW) m_pfnGetStandardColorSpaceProfileW = nullptr;
    decltype(&::SetupColorMatchingW) m_pfnSetupColorMatchingW = nullptr;
    decltype(&::GetColorDirectoryW) m_pfnGetColorDirectoryW = nullptr;
    decltype(&::OpenColorProfileW) m_pfnOpenColorProfileW = nullptr;
    decltype(&::CreateColorTransformW) m_pfnCreateColorTransformW = nullptr;
    decltype(&::CreateMultiProfileTransform) m_pfnCreateMultiProfileTransform = nullptr;
    decltype(&::TranslateBitmapBits) m_pfnTranslateBitmapBits = nullptr;
    decltype(&::TranslateColors) m_pfnTranslateColors = nullptr;
    decltype(&::CloseColorProfile) m_pfnCloseColorProfile = nullptr;
    decltype(&::IsColorProfileValid) m_pfnIsColorProfileValid = nullptr;
    decltype(&::DeleteColorTransform) m_pfnDeleteColorTransform = nullptr;
    decltype(&::SetStandardColorSpaceProfileW) m_pfnSetStandardColorSpaceProfileW = nullptr;
    decltype(&::AssociateColorProfileWithDeviceW) m_pfnAssociateColorProfileWithDeviceW = nullptr;
    decltype(&::DisassociateColorProfileFromDeviceW) m_pfnDisassociateColorProfileFromDeviceW = nullptr;
    decltype(&::InstallColorProfileW) m_pfnInstallColorProfileW = nullptr;
    decltype(&::UninstallColorProfileW) m_pfnUninstallColorProfileW = nullptr;
    decltype(&::CreateProfileFromLogColorSpaceW) m_pfnCreateProfileFromLogColorSpaceW = nullptr;
    decltype(&::GetColorProfileFromHandle) m_pfnGetColorProfileFromHandle = nullptr;
    decltype(&::GetDeviceGammaRamp) m_pfnGetDeviceGammaRamp = nullptr;
    decltype(&::SetDeviceGammaRamp) m_pfnSetDeviceGammaRamp = nullptr;
    decltype(&::EnumICMProfilesW) m_pfnEnumICMProfilesW = nullptr;

    bool m_bLoaded = false;
    HMODULE m_hICMUI = nullptr;
    HMODULE m_hMSCMS = nullptr;
    HMODULE m_hGDI32 = nullptr;

    // ---- transforms (display; CMYK <-> working space, built lazily by the conversion code)
    HTRANSFORM m_hImageTransform = nullptr;
    HTRANSFORM m_hCMYKToRGBTransform = nullptr;
    HTRANSFORM m_hRGBToCMYKTransform = nullptr;

    // ---- gamma tables of the table mode
    uint8_t m_abGammaTable0[256] = {};
    uint8_t m_abGammaTable1[256] = {};
    uint8_t m_abGammaTable2[256] = {};

    // ---- printer and default monitor profile
    vell::TSharedArray<wchar_t> m_strPrinterName;
    CString m_strDefaultMonitorProfile;

    // ---- settings (store ids of group 169 beside each)
    VCM_MODE m_eMode = VCM_MODE_PROFILES;            // 170
    VCM_EMBEDDED m_eEmbedded = VCM_EMBEDDED_DEFAULT;  // 182
    bool m_bProof = false;                            // 171
    vell::TSharedArray<wchar_t> m_strMonitorProfile;  // 172
    vell::TSharedArray<wchar_t> m_strPrinterProfile;  // 173
    vell::TSharedArray<wchar_t> m_strCMYKProfile;     // 176
    vell::TSharedArray<wchar_t> m_strProofProfile;    // 174
    vell::TSharedArray<wchar_t> m_strWorkingSpace;    // 175
    DWORD m_dwIntent = 0;                             // 177
    DWORD m_dwProofIntent = 3;                        // 178
    double m_dGamma0 = 0.0;                           // 181
    double m_dGamma1 = 0.0;                           // 180
    double m_dGamma2 = 0.0;                           // 179

    // ---- other state
    uint16_t* m_pSavedGammaRamp = nullptr;  // 768 values, red, green, blue
    BYTE* m_pQFXProfile = nullptr;          // host-supplied profile bytes
    int32_t m_nQFXProfileSize = 0;
    CVPalette m_greyPalette;
    CConnectLanguage* m_pLanguage = nullptr;
    std::list<SSetupProfile> m_setupProfiles;
    std::list<SSetupProfile>::iterator m_setupProfilePos;
    std::list<SSetupProfile> m_setupCMYKProfiles;
    std::list<SSetupProfile>::iterator m_setupCMYKProfilePos;
    SColorSpecRGB m_colorSpec{};

    // ---- display adapter and monitor
    vell::TSharedArray<wchar_t> m_strAdapterName;
    vell::TSharedArray<wchar_t> m_strAdapterString;
    vell::TSharedArray<wchar_t> m_strMonitorName;
    vell::TSharedArray<wchar_t> m_strMonitorID;
};
