// Device-link profiles: one profile that takes device values straight to
// other device values, applied as Windows allows, through a transform made of
// that one profile alone.
#pragma once
#include <optional>

#include "cli/ModuleHost.h"
#include "cli/imageio/Image.h"

namespace teskcolor {

// `image` through `link`. The image's layout must be the link's input: RGB
// (8 or 16 bits; grey is taken as neutral RGB) or 8-bit CMYK. RGB comes out
// at the input's depth, CMYK at 8 bits. The image's own profile is not used,
// and the result carries none: a link names no colour space of its own.
// Without `intent`, the one the link was made for (its header's).
SImage ApplyDeviceLink(const SProfileSource& link, const SImage& image, std::optional<int> intent);

}  // namespace teskcolor
