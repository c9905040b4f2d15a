#include "gdi_test_support.h"

#include <lcms2.h>
#include <tesk/path.h>

#include <cstdlib>

#include "display.h"

namespace tesk::test {

void GdiTest::SetUp() {
    unsetenv("DISPLAY");
    // No printers unless a test names some; the machine's CUPS is never asked.
    setenv("TESK_TEST_PRINTERS", "", 1);
    setenv("CUPS_SERVER", (env_.Root() + "/no-cups.sock").c_str(), 1);
    setenv("TESK_TEST_PRINTER_SPOOL", SpoolDir().c_str(), 1);
    display::Reset();
}

void GdiTest::TearDown() {
    unsetenv("TESK_TEST_PRINTERS");
    unsetenv("CUPS_SERVER");
    unsetenv("TESK_TEST_PRINTER_SPOOL");
    display::Reset();
}

void GdiTest::UsePrinters(const std::string& list) { setenv("TESK_TEST_PRINTERS", list.c_str(), 1); }

std::wstring Wide(const std::string& text) { return path::Wide(text); }

COLORREF LcmsFromSrgb(const std::string& nativePath, COLORREF c) {
    cmsHPROFILE srgb = cmsCreate_sRGBProfile();
    cmsHPROFILE target = cmsOpenProfileFromFile(nativePath.c_str(), "r");
    cmsHTRANSFORM transform = cmsCreateTransform(srgb, TYPE_RGB_8, target, TYPE_RGB_8, INTENT_PERCEPTUAL, 0);
    uint8_t in[3] = {GetRValue(c), GetGValue(c), GetBValue(c)}, out[3] = {};
    cmsDoTransform(transform, in, out, 1);
    cmsDeleteTransform(transform);
    cmsCloseProfile(target);
    cmsCloseProfile(srgb);
    return RGB(out[0], out[1], out[2]);
}

}  // namespace tesk::test
