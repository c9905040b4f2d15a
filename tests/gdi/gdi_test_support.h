// Shared set-up of the GDI32 / User32 / ICMUI tests.
#pragma once
#include <windows.h>

#include <string>

#include "support/frame_fails_with.h"
#include "support/lcms_profiles.h"
#include "support/temp_env.h"

namespace tesk::test {

// A headless process: no X display, no printers unless the test names some,
// the virtual display chosen afresh.
class GdiTest : public IsolatedTest {
protected:
    void SetUp() override;
    void TearDown() override;
    // Names test printers (TESK_TEST_PRINTERS) and points their spool folder
    // into the test's folder.
    void UsePrinters(const std::string& list);
    std::string SpoolDir() const { return env_.Root() + "/spool"; }
};

std::wstring Wide(const std::string& text);
// What lcms2 makes of the sRGB colour `c` in the RGB profile at `nativePath` (perceptual).
COLORREF LcmsFromSrgb(const std::string& nativePath, COLORREF c);

}  // namespace tesk::test
