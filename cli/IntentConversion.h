// Conversions with a rendering intent chosen for the run. The module's
// one-off conversion into the working space is always relative colorimetric;
// its display transform takes the settings' intent, so for this run only the
// source becomes the working space and the target the monitor profile.
#pragma once
#include <cstdint>
#include <vector>

#include "cli/imageio/Image.h"

class CColorManager;

namespace teskcolor {

// Converts the RGB pixels of `image` in place from `source` into the working
// space with `intent`, and tags the image with the working-space profile.
void ConvertWithIntent(CColorManager& manager, SImage& image, const std::vector<uint8_t>& source, int intent);

}  // namespace teskcolor
