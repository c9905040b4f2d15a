// Printer device modes and the page they describe.
#pragma once
#include <windows.h>

#include "printers.h"

namespace tesk::gdi {

DEVMODEW DefaultDeviceMode(const printers::Printer& printer);
// Takes the fields `requested` marks in dmFields over into `mode`.
void MergeDeviceMode(DEVMODEW& mode, const DEVMODEW& requested);

struct PageGeometry {
    int width = 0;   // pixels
    int height = 0;
    int dpi = 0;
    int widthMillimetres = 0;
    int heightMillimetres = 0;
};
PageGeometry PageOf(const DEVMODEW& mode);

}  // namespace tesk::gdi
