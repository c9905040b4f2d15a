// Binding of the platform colour functions by name. The order of look-up is
// fixed: a missing export stops the chain and leaves the rest unbound.
#include "colormgr/ColorManager.h"
#include "module/BindProc.h"

namespace {
template <typename Pointer>
void BindExport(bool& loaded, HMODULE module, const char* name, Pointer& target) {
    if (loaded && !tesk::BindProc(module, name, target)) loaded = false;
}
}  // namespace

void CColorManager::BindPlatformFunctions() {
#define CM_BIND(module, name) BindExport(m_bLoaded, module, #name, m_pfn##name)
    CM_BIND(m_hMSCMS, GetStandardColorSpaceProfileW);
    CM_BIND(m_hMSCMS, SetStandardColorSpaceProfileW);
    CM_BIND(m_hMSCMS, AssociateColorProfileWithDeviceW);
    CM_BIND(m_hMSCMS, DisassociateColorProfileFromDeviceW);
    CM_BIND(m_hMSCMS, InstallColorProfileW);
    CM_BIND(m_hMSCMS, UninstallColorProfileW);
    CM_BIND(m_hICMUI, SetupColorMatchingW);
    CM_BIND(m_hMSCMS, GetColorDirectoryW);
    CM_BIND(m_hMSCMS, OpenColorProfileW);
    CM_BIND(m_hMSCMS, CreateColorTransformW);
    CM_BIND(m_hMSCMS, CreateMultiProfileTransform);
    CM_BIND(m_hMSCMS, TranslateBitmapBits);
    CM_BIND(m_hMSCMS, TranslateColors);
    CM_BIND(m_hMSCMS, CloseColorProfile);
    CM_BIND(m_hMSCMS, IsColorProfileValid);
    CM_BIND(m_hMSCMS, DeleteColorTransform);
    CM_BIND(m_hMSCMS, CreateProfileFromLogColorSpaceW);
    CM_BIND(m_hMSCMS, GetColorProfileFromHandle);
    CM_BIND(m_hGDI32, GetDeviceGammaRamp);
    CM_BIND(m_hGDI32, SetDeviceGammaRamp);
    m_pfnEnumICMProfilesW = nullptr;
    CM_BIND(m_hGDI32, EnumICMProfilesW);
#undef CM_BIND
}
