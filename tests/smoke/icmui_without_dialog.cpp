// ICMUI.DLL for Windows systems that lack it (Wine): the module needs the
// library to load, and a smoke run has no one to answer the dialog, so the
// dialog reports itself unavailable.
#include <windows.h>

#include <icm.h>

extern "C" __declspec(dllexport) BOOL WINAPI SetupColorMatchingW(PCOLORMATCHSETUPW) {
    SetLastError(ERROR_NOT_SUPPORTED);
    return FALSE;
}
