#pragma once
#include "portable_export.h"

namespace tesk {
// The user's language as a lower-case tag ("de-de"); "en-us" when the system
// names none. Linux: LC_ALL, LC_MESSAGES or LANG ("de_DE.UTF-8" -> "de-de").
// Windows: the user's default locale.
TESK_PORTABLE_API const char* UserLanguageTag();
}  // namespace tesk
