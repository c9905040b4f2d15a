// Spooler subset (provided by the platform module gdi32.so on Linux).
#pragma once
#include "wingdi.h"

#define DM_UPDATE 1
#define DM_COPY 2
#define DM_PROMPT 4
#define DM_MODIFY 8
#define DM_OUT_BUFFER DM_COPY
#define DM_IN_PROMPT DM_PROMPT
#define DM_IN_BUFFER DM_MODIFY

// With fMode 0 the result is the size in bytes of the full device mode.
TESK_WIN32_API LONG WINAPI DocumentPropertiesW(HWND hWnd, HANDLE hPrinter, LPWSTR pDeviceName,
                                               PDEVMODEW pDevModeOutput, PDEVMODEW pDevModeInput, DWORD fMode);
TESK_WIN32_API BOOL WINAPI GetDefaultPrinterW(LPWSTR pszBuffer, LPDWORD pcchBuffer);
TESK_WIN32_API BOOL WINAPI SetDefaultPrinterW(LPCWSTR pszPrinter);

#define IDOK 1
// Linux only: "name,driver,port" of the default printer (what win.ini's
// "windows"/"device" holds on Windows); FALSE when there is none or it does
// not fit in `size` characters.
TESK_WIN32_API BOOL WINAPI TeskQueryDefaultPrinterDevice(LPWSTR buffer, DWORD size);
