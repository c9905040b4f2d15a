// Whether two RGB profiles are the same colour space in all but their bytes:
// another maker's sRGB is ours, and converting between them is a wasted pass.
#pragma once
#include <cstdint>
#include <vector>

namespace teskcolor {

// True when converting a grid of colours from `from` into `to`, relative
// colorimetric at 16 bits, moves none of them by more than 1/255.
bool SameRgbColours(const std::vector<uint8_t>& from, const std::vector<uint8_t>& to);

}  // namespace teskcolor
