// User32 subset: display adapters and monitors, window device contexts
// (provided by the platform module user32.so).
#pragma once
#include "wingdi.h"

typedef INT_PTR(CALLBACK* DLGPROC)(HWND, UINT, WPARAM, LPARAM);

#define MONITOR_DEFAULTTONULL 0x00000000
#define MONITOR_DEFAULTTOPRIMARY 0x00000001
#define MONITOR_DEFAULTTONEAREST 0x00000002
#define MONITORINFOF_PRIMARY 0x00000001

typedef struct tagMONITORINFO {
    DWORD cbSize;
    RECT rcMonitor;
    RECT rcWork;
    DWORD dwFlags;
} MONITORINFO, *LPMONITORINFO;

typedef struct tagMONITORINFOEXW {
    DWORD cbSize;
    RECT rcMonitor;
    RECT rcWork;
    DWORD dwFlags;
    WCHAR szDevice[CCHDEVICENAME];
} MONITORINFOEXW, *LPMONITORINFOEXW;

#define EDD_GET_DEVICE_INTERFACE_NAME 0x00000001
#ifndef ERROR_INVALID_WINDOW_HANDLE
#define ERROR_INVALID_WINDOW_HANDLE 1400L
#endif

// Record sizes count two bytes a character, as on Windows (DISPLAY_DEVICEW
// 840, MONITORINFO 40, MONITORINFOEXW 104), so callers may pass either those
// or sizeof of the Linux records; a record is filled as far as its size
// reaches, counted the Windows way.

TESK_WIN32_API BOOL WINAPI EnumDisplayDevicesW(LPCWSTR lpDevice, DWORD iDevNum, PDISPLAY_DEVICEW lpDisplayDevice,
                                               DWORD dwFlags);
TESK_WIN32_API HMONITOR WINAPI MonitorFromWindow(HWND hwnd, DWORD dwFlags);
TESK_WIN32_API BOOL WINAPI GetMonitorInfoW(HMONITOR hMonitor, LPMONITORINFO lpmi);
TESK_WIN32_API HWND WINAPI GetDesktopWindow();
TESK_WIN32_API HDC WINAPI GetDC(HWND hWnd);
TESK_WIN32_API int WINAPI ReleaseDC(HWND hWnd, HDC hDC);
