#include "cli/IntentConversion.h"

#include "cli/Errors.h"
#include "cli/ModuleHost.h"
#include "cli/SessionSettings.h"
#include "colormgr/ColorManager.h"

namespace teskcolor {

CIntentConversion::CIntentConversion(CColorManager& manager, const std::vector<uint8_t>& source, int intent)
    : m_manager(manager), m_intent(intent) {
    const SProfileSource& target = WorkingSpaceProfile(manager);
    m_target = target.bytes;
    // The module opens both by name in the colour directory.
    m_targetName = NameInColourDirectory(target, manager, false);
    m_sourceName = NameInColourDirectory({source, "the source profile", "", L""}, manager, false);
    m_targetName.push_back(L'\0');
    manager.GetDefaultRGBString(m_workingSpace);
    KeepWritesForThisRun();
}

void CIntentConversion::Apply(SImage& image) const {
    CString sourceName(m_sourceName.c_str());
    m_manager.SetColorWorkingSpace(sourceName);
    std::wstring targetName = m_targetName, noPrinter(1, L'\0'), noProof(1, L'\0');
    m_manager.UpdateSettings(true, false, targetName.data(), noPrinter.data(), noProof.data(), DWORD(m_intent),
                             DWORD(m_intent));
    const bool converted = m_manager.TransformIterator(image.pixels, nullptr, false);
    CString workingSpace = m_workingSpace;
    m_manager.SetColorWorkingSpace(workingSpace);
    if (!converted) throw CCliError(EExit::Failed, "the colour system could not build the conversion with this intent");
    image.iccProfile = m_target;
}

}  // namespace teskcolor
