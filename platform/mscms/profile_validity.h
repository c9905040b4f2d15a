// Whether a profile is valid: the container rules of ICC.1 checked here, and
// Little CMS able to open the serialized bytes as the last word.
#pragma once
#include <cstdint>

#include "icc_container.h"

namespace tesk::mscms {

bool IsValidProfile(const IccContainer& container);
// What installing asks of a file: the profile signature and a version ICC.1 knows.
bool IsProfileFile(const IccContainer& container);

// Header signatures ICC.1 knows.
bool IsKnownClass(uint32_t profileClass);
bool IsKnownColorSpace(uint32_t space);

}  // namespace tesk::mscms
