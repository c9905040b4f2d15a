// Which pixels of an image a printer (CMYK or proof) profile cannot reproduce,
// asked of the colour system's CheckBitmapBits as the photo editor would ask
// it, and the warning colour painted over them.
#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "cli/imageio/Image.h"

class CColorManager;

namespace teskcolor {

// The warning colour when none is given: a mid grey, as print previews use,
// which stands out against the saturated colours a printer cannot reach.
inline constexpr const char* kDefaultGamutWarningColour = "#808080";

struct SWarningColour {
    uint8_t red = 0, green = 0, blue = 0;
};

// "#rrggbb" or "R,G,B" (0..255); throws CCliError(Usage) otherwise.
SWarningColour ParseWarningColour(const std::string& text);

// One byte a pixel, row after row, nonzero where `gamutProfile` cannot
// reproduce the pixel's colour. An RGB image is read in its embedded profile,
// anything else as the working space holds it. Throws CCliError.
std::vector<uint8_t> OutOfGamutPixels(CColorManager& manager, const SImage& image,
                                      const std::vector<uint8_t>& gamutProfile, int intent);

// Paints `colour` over the pixels `outOfGamut` marks; alpha is kept.
void PaintGamutWarning(SImage& image, const std::vector<uint8_t>& outOfGamut, SWarningColour colour);

}  // namespace teskcolor
