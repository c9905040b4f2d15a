// Whether a profile is valid: the container rules of ICC.1 checked here, and
// Little CMS able to open the serialized bytes as the last word.
#pragma once
#include "icc_container.h"

namespace tesk::mscms {

bool IsValidProfile(const IccContainer& container);

}  // namespace tesk::mscms
