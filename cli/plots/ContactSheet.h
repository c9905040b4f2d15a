// Several images side by side on one picture, each with its label, so that a
// person sees a run's results at a glance.
#pragma once
#include <string>
#include <vector>

#include "cli/imageio/Image.h"

namespace teskcolor {

struct SContactTile {
    std::string label;
    const SImage* image;  // RGB or grey, 8 or 16 bits; its values are shown as they are
};

// Rows of `columns` thumbnails; throws CCliError (Unsupported for a CMYK tile).
void WriteContactSheet(const std::string& path, const std::vector<SContactTile>& tiles, int columns);

}  // namespace teskcolor
