// Linux-only controls of the module loader behind LoadLibraryW/GetProcAddress.
// Tests use them to stand a substitute in for a Windows module name.
#pragma once
#include <functional>
#include <map>
#include <set>
#include <string>

#include <tesk/module_location.h>

#include "../windef.h"

namespace tesk::loader {

struct Substitute {
    // true: LoadLibraryW of this name fails with ERROR_MOD_NOT_FOUND.
    bool missing = false;
    // Exports answered by GetProcAddress before the real module is asked.
    std::map<std::string, FARPROC> overrides;
    // Exports GetProcAddress reports as absent (ERROR_PROC_NOT_FOUND).
    std::set<std::string> hidden;
};

// Applies to later LoadLibraryW calls of `windowsName` (case-insensitive).
TESK_WIN32_CXX_API void SetSubstitute(const std::wstring& windowsName, const Substitute& substitute);
TESK_WIN32_CXX_API void ClearSubstitutes();

// The real export, bypassing any substitute: how a recording substitute forwards.
TESK_WIN32_CXX_API FARPROC RealProcAddress(const std::wstring& windowsName, const char* exportName);

// Called for every LoadLibraryW ("load") and FreeLibrary ("free") with the
// module's Windows name and whether the call succeeded.
using Observer = std::function<void(const char* call, const std::wstring& windowsName, bool ok)>;
TESK_WIN32_CXX_API void SetObserver(Observer observer);

}  // namespace tesk::loader
