#include "module/Entry.h"

#include <tesk/module_location.h>

#include "host/ConnectLanguage.h"
#include "module/Trace.h"

namespace {

constexpr const wchar_t* kModuleName = L"TeskColorMgr";
constexpr DWORD kModuleFileNameChars = 520;

AFX_EXTENSION_MODULE g_extension = {FALSE, nullptr, nullptr};

// Framework records live for the life of the process, as on Windows.
void RecordDynLinkLibrary() { new CDynLinkLibrary(g_extension); }

CString OwnModuleFileName() {
    CString name;
    GetModuleFileNameW(g_extension.hModule, name.GetBuffer(static_cast<int>(kModuleFileNameChars)),
                       kModuleFileNameChars);
    name.ReleaseBuffer();
    return name;
}

}  // namespace

AFX_EXTENSION_MODULE& TeskColorMgrExtension() { return g_extension; }

void LinkExtension(CString moduleName) {
    RTRACE record(L"LinkExtension", nullptr, kTraceInfoTag, 0);
    CString fileName = moduleName + L"RC.DLL";
    CString altPath = CConnectLanguage::Instance().GetAltPath();
    CString path = CConnectLanguage::Instance().GetPath();
    if (path.IsEmpty()) {
        Trace(record, L"\n***CRITICAL FAILURE\n");
        return;
    }
    CString fullName = path + L"\\" + fileName;
    Trace(record, L"\n***Attempting to load RC dll: %s\n", fullName.GetString());
    HMODULE resources = LoadLibraryW(fullName);
    if (!resources) {
        fullName = altPath + L"\\" + fileName;
        resources = LoadLibraryW(fullName);
    }
    if (!resources) {
        CString own = OwnModuleFileName();
        CConnectLanguage::Instance().AddModuleInfo(own, nullptr, CString(), CString());
        RecordDynLinkLibrary();
        Trace(record, L"\n***Failed to record language DLL info %s\n", fullName.GetString());
        return;
    }
    g_extension.hResource = resources;
    RecordDynLinkLibrary();
    Trace(record, L"\n***Recorded Language DLL info %s\n", fullName.GetString());
    CString own = OwnModuleFileName();
    CConnectLanguage::Instance().AddModuleInfo(own, resources, CString(), CString());
}

BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID) {
    RTRACE record(L"DllMain", nullptr, kTraceInfoTag, 0);
    Trace(record, L"TeskColorMgr.dll DllMain Enter \n");
    if (reason == DLL_PROCESS_ATTACH) {
        Trace(record, L"VCM.DLL Initializing \n");
        if (!AfxInitExtensionModule(g_extension, reinterpret_cast<HMODULE>(instance))) return 0;
        CConnectLanguage::Instance().StoreCB(LinkExtension, CString(kModuleName));
        DisableThreadLibraryCalls(reinterpret_cast<HMODULE>(instance));
    } else if (reason == DLL_PROCESS_DETACH) {
        Trace(record, L"VCM.DLL Terminating \n");
        AfxTermExtensionModule(g_extension);
    }
    return 1;
}

// Linux runs these where Windows would call the entry point for the process.
__attribute__((constructor)) static void OnModuleLoad() {
    HMODULE self = tesk::loader::HandleForAddress(reinterpret_cast<const void*>(&DllMain));
    DllMain(reinterpret_cast<HINSTANCE>(self), DLL_PROCESS_ATTACH, nullptr);
}

__attribute__((destructor)) static void OnModuleUnload() {
    DllMain(reinterpret_cast<HINSTANCE>(g_extension.hModule), DLL_PROCESS_DETACH, nullptr);
}
