// The smallest program that embeds the colour manager: start the host
// services, ask for the manager, and convert one screen colour into the inks
// of the default CMYK press profile, as an editor's colour picker would.
#include <cstdio>

#include "colormgr/ColorManager.h"
#include "host/HostServices.h"

int main() {
    StartHostServices();  // before the first CColorManager::Instance()
    CColorManager* manager = CColorManager::Instance();
    if (!manager || !manager->IsLoaded()) {
        std::fprintf(stderr, "press_colour: the colour system could not be loaded\n");
        return 1;
    }
    CString press;
    manager->GetCMYKProfile(press);

    DWORD colour = RGB(255, 0, 0);
    BYTE cyan = 0, magenta = 0, yellow = 0, black = 0;
    if (manager->ColorTransformRGBtoCMYK(colour, cyan, magenta, yellow, black, false) != VELL_OK) {
        std::fprintf(stderr, "press_colour: the conversion failed\n");
        return 1;
    }
    std::printf("%ls: C%d M%d Y%d K%d\n", press.GetString(), cyan, magenta, yellow, black);
    // No ink at all means the press profile was not found.
    return cyan + magenta + yellow + black > 0 ? 0 : 1;
}
