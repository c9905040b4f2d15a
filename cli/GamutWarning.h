// Which pixels of an image a printer (CMYK or proof) profile cannot reproduce,
// asked of the colour system's CheckBitmapBits as the photo editor would ask
// it, and the warning colour painted over them.
#pragma once
#include <cstdint>
#include <memory>
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

class CWorkingSpacePreparation;

// Which pixels `gamutProfile` cannot reproduce, decided once for an image's
// layout and profile and asked of any number of its bands. An RGB image is
// read in its embedded profile, anything else as the working space holds it.
// Throws CCliError.
class CGamutCheck {
public:
    CGamutCheck(CColorManager& manager, const SImageHeader& image, const std::vector<uint8_t>& gamutProfile,
                int intent);
    ~CGamutCheck();
    CGamutCheck(const CGamutCheck&) = delete;
    CGamutCheck& operator=(const CGamutCheck&) = delete;
    // One byte a pixel, row after row, nonzero where the colour is out of gamut.
    std::vector<uint8_t> OutOfGamut(const SImage& image) const;

private:
    class CTransform;
    std::unique_ptr<CWorkingSpacePreparation> m_working;  // null: the pixels are read in their own profile
    std::unique_ptr<CTransform> m_transform;
};

// CGamutCheck of a whole image.
std::vector<uint8_t> OutOfGamutPixels(CColorManager& manager, const SImage& image,
                                      const std::vector<uint8_t>& gamutProfile, int intent);

// Paints `colour` over the pixels `outOfGamut` marks; alpha is kept.
void PaintGamutWarning(SImage& image, const std::vector<uint8_t>& outOfGamut, SWarningColour colour);

}  // namespace teskcolor
