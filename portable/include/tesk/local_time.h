#pragma once
#include <ctime>

#include "portable_export.h"

namespace tesk {
// `when` in the local time zone; false when the system cannot say.
TESK_PORTABLE_API bool LocalTime(std::time_t when, std::tm& local);
}  // namespace tesk
