// The UI framework's extension-module records: a module's resource handle
// joins the chain that string resources are looked up in.
#pragma once
#include <windows.h>

struct AFX_EXTENSION_MODULE {
    BOOL bInitialized;
    HMODULE hModule;
    HMODULE hResource;
};

__attribute__((visibility("default"))) BOOL AfxInitExtensionModule(AFX_EXTENSION_MODULE& state, HMODULE module);
__attribute__((visibility("default"))) void AfxTermExtensionModule(AFX_EXTENSION_MODULE& state, BOOL all = FALSE);

class __attribute__((visibility("default"))) CDynLinkLibrary {
public:
    explicit CDynLinkLibrary(AFX_EXTENSION_MODULE& state);
    ~CDynLinkLibrary();
    HMODULE m_hModule;
    HMODULE m_hResource;
};

// Resource modules of the live CDynLinkLibrary records, newest first.
__attribute__((visibility("default"))) int AfxResourceModuleCount();
__attribute__((visibility("default"))) HMODULE AfxResourceModule(int index);
