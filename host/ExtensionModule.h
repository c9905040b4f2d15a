// The UI framework's extension-module records: a module's resource handle
// joins the chain that string resources are looked up in.
#pragma once
#include <windows.h>

#include "host/HostExport.h"

struct AFX_EXTENSION_MODULE {
    BOOL bInitialized;
    HMODULE hModule;
    HMODULE hResource;
};

TESK_HOST_API BOOL AfxInitExtensionModule(AFX_EXTENSION_MODULE& state, HMODULE module);
TESK_HOST_API void AfxTermExtensionModule(AFX_EXTENSION_MODULE& state, BOOL all = FALSE);

class TESK_HOST_API CDynLinkLibrary {
public:
    explicit CDynLinkLibrary(AFX_EXTENSION_MODULE& state);
    ~CDynLinkLibrary();
    HMODULE m_hModule;
    HMODULE m_hResource;
};

// Resource modules of the live CDynLinkLibrary records, newest first.
TESK_HOST_API int AfxResourceModuleCount();
TESK_HOST_API HMODULE AfxResourceModule(int index);
