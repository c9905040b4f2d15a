// Gamma ramps between Windows' 256 entries and a CRTC's own size.
#pragma once
#include <cstddef>
#include <cstdint>

#include "display.h"

namespace tesk::display {

// Linear interpolation of `from` (fromCount entries spanning the input range)
// onto `to` (toCount entries over the same range); first and last entries
// map onto each other exactly.
TESK_GDI_INTERNAL void ResampleRamp(const uint16_t* from, size_t fromCount, uint16_t* to, size_t toCount);

}  // namespace tesk::display
