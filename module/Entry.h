// The module's entry: registration with the host's framework and language
// service when the shared object is loaded, and the end of it at unload.
#pragma once
#include <windows.h>

#include "host/CString.h"
#include "host/ExtensionModule.h"
#include "module/Export.h"

// Called by the system's loader once when the module is loaded and once when it
// goes away; C linkage, the name loaders look for.
extern "C" TESKCOLORMGR_API BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID reserved);

// Called by the language service to load the module's resource library.
TESKCOLORMGR_API void LinkExtension(CString moduleName);

// The module's extension-module record (its resource handle is the language library).
TESKCOLORMGR_API AFX_EXTENSION_MODULE& TeskColorMgrExtension();
