// The host's language service: the user's language, where language resource
// libraries live, and the modules that registered for resources.
#pragma once
#include <windows.h>

#include "CString.h"
#include "host/HostExport.h"

typedef void (*PFN_LinkExtension)(CString moduleName);

class TESK_HOST_API CConnectLanguage {
public:
    static CConnectLanguage& Instance();

    // Language tag such as "en-us" or "de-de", from the environment.
    CString GetLanguageTag() const;
    // Folder of the language resource libraries (Windows form): $TESK_LANGUAGE_PATH,
    // else the folder this host library was loaded from.
    CString GetPath() const;
    // Fallback folder: the host executable's folder.
    CString GetAltPath() const;
    // Registers a module's call-back and calls it at once with `moduleName`.
    void StoreCB(PFN_LinkExtension callback, const CString& moduleName);
    void AddModuleInfo(const CString& modulePath, HMODULE resourceLibrary, const CString& text1, const CString& text2);
    // The resource library recorded for a module path (null when none).
    HMODULE GetModuleResource(const CString& modulePath) const;
    int GetModuleInfoCount() const;

private:
    CConnectLanguage() = default;
};
