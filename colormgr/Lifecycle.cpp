// Construction (loading the platform colour libraries), the one-instance
// lifecycle and destruction.
#include <new>

#include "colormgr/ColorManager.h"
#include "host/ColorSpec.h"
#include "host/SingletonManager.h"

const GUID CColorManager::m_kCMGUID = {0xA2D8115D, 0x49BD, 0x4A50, {0x90, 0xCB, 0x28, 0x81, 0x48, 0xD0, 0x0D, 0xB7}};

namespace {
bool g_bDisabled = false;

void DestroyManager(void* object) { CColorManager::Delete(static_cast<CColorManager*>(object)); }
}  // namespace

CColorManager::CColorManager() {
    m_setupProfilePos = m_setupProfiles.end();
    m_setupCMYKProfilePos = m_setupCMYKProfiles.end();
    LoadPlatformLibraries();
    VGDI_TeskGDI_SetColorSpec(&m_colorSpec);
}

void CColorManager::LoadPlatformLibraries() {
    // A missing library must not raise a system dialog.
    UINT previousMode = ::SetErrorMode(SEM_FAILCRITICALERRORS);
    m_hICMUI = ::LoadLibraryW(L"ICMUI.DLL");
    m_bLoaded = m_hICMUI != nullptr;
    if (m_bLoaded) {
        m_hMSCMS = ::LoadLibraryW(L"MSCMS.DLL");
        m_bLoaded = m_hMSCMS != nullptr;
    }
    if (m_bLoaded) {
        m_hGDI32 = ::LoadLibraryW(L"GDI32.DLL");
        m_bLoaded = m_hGDI32 != nullptr;
    }
    ::SetErrorMode(previousMode);
}

CColorManager::~CColorManager() {
    for (HTRANSFORM* transform : {&m_hImageTransform, &m_hCMYKToRGBTransform, &m_hRGBToCMYKTransform})
        if (*transform && m_pfnDeleteColorTransform) m_pfnDeleteColorTransform(*transform);

    if (m_pSavedGammaRamp) {
        SetDeviceGammaRampFromVCGT(nullptr, nullptr, 0, true);
        delete[] m_pSavedGammaRamp;  // still set when the restore failed
        m_pSavedGammaRamp = nullptr;
    }

    if (m_hICMUI) ::FreeLibrary(m_hICMUI);
    if (m_hMSCMS) ::FreeLibrary(m_hMSCMS);
    if (m_hGDI32) ::FreeLibrary(m_hGDI32);

    VGDI_TeskGDI_SetColorSpec(nullptr);
    m_setupProfiles.clear();
    m_setupCMYKProfiles.clear();
    m_greyPalette.Clear();
    delete[] m_pQFXProfile;
}

CColorManager* CColorManager::Instance() {
    if (g_bDisabled) return nullptr;
    CSingletonManager& singletons = CSingletonManager::Instance();
    if (void* existing = singletons.GetInstanceVoid(m_kCMGUID)) return static_cast<CColorManager*>(existing);
    CColorManager* manager = new CColorManager();  // a throwing constructor frees the memory
    singletons.AddVoid(m_kCMGUID, manager, &DestroyManager);
    manager->InitAppService(nullptr, nullptr);
    return manager;
}

void CColorManager::CreateInstance(CColorManager** out) { *out = new (std::nothrow) CColorManager(); }

void CColorManager::AddInstance(CColorManager* manager) {
    CSingletonManager::Instance().AddVoid(m_kCMGUID, manager, &DestroyManager);
}

void CColorManager::Delete(CColorManager* manager) { delete manager; }

void CColorManager::Disable() { g_bDisabled = true; }

VCM_MODE CColorManager::GetMode() const { return g_bDisabled ? VCM_MODE_OFF : m_eMode; }
