#include "device_mode.h"

#include <algorithm>
#include <cwchar>

namespace tesk::gdi {

DEVMODEW DefaultDeviceMode(const printers::Printer& printer) {
    DEVMODEW mode{};
    std::wcsncpy(mode.dmDeviceName, printer.name.c_str(), CCHDEVICENAME - 1);
    mode.dmSpecVersion = DM_SPECVERSION;
    mode.dmSize = sizeof(DEVMODEW);
    mode.dmFields = DM_ORIENTATION | DM_PAPERSIZE | DM_COPIES | DM_PRINTQUALITY | DM_COLOR | DM_YRESOLUTION |
                    DM_ICMMETHOD | DM_ICMINTENT;
    mode.dmOrientation = DMORIENT_PORTRAIT;
    mode.dmPaperSize = DMPAPER_A4;
    mode.dmCopies = 1;
    mode.dmPrintQuality = SHORT(printer.dpi);
    mode.dmYResolution = SHORT(printer.dpi);
    mode.dmColor = DMCOLOR_COLOR;
    mode.dmICMMethod = DMICMMETHOD_SYSTEM;
    mode.dmICMIntent = DMICM_CONTRAST;
    return mode;
}

void MergeDeviceMode(DEVMODEW& mode, const DEVMODEW& requested) {
    DWORD fields = requested.dmFields;
    if (fields & DM_ORIENTATION && (requested.dmOrientation == DMORIENT_PORTRAIT ||
                                    requested.dmOrientation == DMORIENT_LANDSCAPE))
        mode.dmOrientation = requested.dmOrientation;
    if (fields & DM_PAPERSIZE && (requested.dmPaperSize == DMPAPER_A4 || requested.dmPaperSize == DMPAPER_LETTER))
        mode.dmPaperSize = requested.dmPaperSize;
    if (fields & DM_COPIES && requested.dmCopies > 0) mode.dmCopies = requested.dmCopies;
    // Resolutions are kept within what a page buffer can reasonably hold.
    if (fields & DM_PRINTQUALITY && requested.dmPrintQuality >= 72 && requested.dmPrintQuality <= 600)
        mode.dmPrintQuality = requested.dmPrintQuality;
    if (fields & DM_YRESOLUTION && requested.dmYResolution >= 72 && requested.dmYResolution <= 600)
        mode.dmYResolution = requested.dmYResolution;
    if (fields & DM_COLOR && (requested.dmColor == DMCOLOR_COLOR || requested.dmColor == DMCOLOR_MONOCHROME))
        mode.dmColor = requested.dmColor;
    if (fields & DM_ICMMETHOD) mode.dmICMMethod = requested.dmICMMethod;
    if (fields & DM_ICMINTENT) mode.dmICMIntent = requested.dmICMIntent;
}

PageGeometry PageOf(const DEVMODEW& mode) {
    PageGeometry page;
    page.widthMillimetres = mode.dmPaperSize == DMPAPER_LETTER ? 216 : 210;
    page.heightMillimetres = mode.dmPaperSize == DMPAPER_LETTER ? 279 : 297;
    if (mode.dmOrientation == DMORIENT_LANDSCAPE) std::swap(page.widthMillimetres, page.heightMillimetres);
    page.dpi = std::clamp<int>(mode.dmYResolution ? mode.dmYResolution : mode.dmPrintQuality, 72, 600);
    page.width = int(page.widthMillimetres * page.dpi * 10 / 254);
    page.height = int(page.heightMillimetres * page.dpi * 10 / 254);
    return page;
}

}  // namespace tesk::gdi
