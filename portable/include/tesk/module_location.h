// Where the system loader found a module.
#pragma once
#include <string>

#include <windows.h>

#include "portable_export.h"

namespace tesk::loader {

// Native path of the file that provides the module `windowsName`, or "" if
// the loader finds none.
TESK_PORTABLE_API std::string ResolveModulePath(const std::wstring& windowsName);

// The module handle of the module that holds `address` (a module's own code
// asks with the address of one of its functions); null: the executable's.
TESK_PORTABLE_API HMODULE HandleForAddress(const void* address);

}  // namespace tesk::loader
