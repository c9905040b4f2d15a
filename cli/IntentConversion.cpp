#include "cli/IntentConversion.h"

#include <string>

#include "cli/Errors.h"
#include "cli/ModuleHost.h"
#include "cli/SessionSettings.h"
#include "colormgr/ColorManager.h"

namespace teskcolor {

void ConvertWithIntent(CColorManager& manager, SImage& image, const std::vector<uint8_t>& source, int intent) {
    const SProfileSource target = WorkingSpaceProfile(manager);
    // The module opens both by name in the colour directory.
    std::wstring targetName = NameInColourDirectory(target, manager, false);
    CString sourceName(NameInColourDirectory({source, "the source profile", "", L""}, manager, false).c_str());
    KeepWritesForThisRun();
    manager.SetColorWorkingSpace(sourceName);
    targetName.push_back(L'\0');
    std::wstring noPrinter(1, L'\0'), noProof(1, L'\0');
    manager.UpdateSettings(true, false, targetName.data(), noPrinter.data(), noProof.data(), DWORD(intent),
                           DWORD(intent));
    if (!manager.TransformIterator(image.pixels, nullptr, false))
        throw CCliError(EExit::Failed, "the colour system could not build the conversion with this intent");
    image.iccProfile = target.bytes;
}

}  // namespace teskcolor
