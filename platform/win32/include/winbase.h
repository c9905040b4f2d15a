// Kernel calls of the Win32 subset: modules, errors, events, memory, text,
// debug output. Provided on Linux by libteskwin32.
#pragma once
#include "windef.h"
#include "winerror.h"

// Modules. Windows module names ("MSCMS.DLL", "TeskColorMgrRC.DLL") resolve
// case-insensitively to shared objects named in lower case with ".so" in place
// of ".dll", found beside libteskwin32, in its "teskcolormgr" folder, or in
// $TESK_MODULE_PATH. A name with a folder is looked for in that folder only.
TESK_WIN32_API HMODULE WINAPI LoadLibraryW(LPCWSTR lpLibFileName);
TESK_WIN32_API HMODULE WINAPI LoadLibraryExW(LPCWSTR lpLibFileName, HANDLE hFile, DWORD dwFlags);
TESK_WIN32_API BOOL WINAPI FreeLibrary(HMODULE hLibModule);
TESK_WIN32_API FARPROC WINAPI GetProcAddress(HMODULE hModule, LPCSTR lpProcName);
TESK_WIN32_API HMODULE WINAPI GetModuleHandleW(LPCWSTR lpModuleName);
#define GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT 0x2
#define GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS 0x4
TESK_WIN32_API BOOL WINAPI GetModuleHandleExW(DWORD dwFlags, LPCWSTR lpModuleName, HMODULE* phModule);
// Paths come back in Windows form: every '/' of the Linux path is a '\\'.
TESK_WIN32_API DWORD WINAPI GetModuleFileNameW(HMODULE hModule, LPWSTR lpFilename, DWORD nSize);
#define LOAD_LIBRARY_AS_DATAFILE 0x00000002

#define SEM_FAILCRITICALERRORS 0x0001
#define SEM_NOGPFAULTERRORBOX 0x0002
#define SEM_NOOPENFILEERRORBOX 0x8000
TESK_WIN32_API UINT WINAPI SetErrorMode(UINT uMode);
TESK_WIN32_API UINT WINAPI GetErrorMode();

// Last error, per thread.
TESK_WIN32_API DWORD WINAPI GetLastError();
TESK_WIN32_API void WINAPI SetLastError(DWORD dwErrCode);

TESK_WIN32_API DWORD WINAPI GetCurrentThreadId();
TESK_WIN32_API DWORD WINAPI GetCurrentProcessId();
TESK_WIN32_API DWORD WINAPI GetVersion();

// Named events live in the process (the switches they carry are per process).
#define SYNCHRONIZE 0x00100000L
#define EVENT_MODIFY_STATE 0x0002
#define EVENT_ALL_ACCESS 0x1F0003
#define WAIT_OBJECT_0 0x00000000L
#define WAIT_TIMEOUT 0x00000102L
#define WAIT_FAILED 0xFFFFFFFFu
#define INFINITE 0xFFFFFFFFu
TESK_WIN32_API HANDLE WINAPI CreateEventW(LPSECURITY_ATTRIBUTES lpEventAttributes, BOOL bManualReset,
                                          BOOL bInitialState, LPCWSTR lpName);
TESK_WIN32_API HANDLE WINAPI OpenEventW(DWORD dwDesiredAccess, BOOL bInheritHandle, LPCWSTR lpName);
TESK_WIN32_API BOOL WINAPI SetEvent(HANDLE hEvent);
TESK_WIN32_API BOOL WINAPI ResetEvent(HANDLE hEvent);
TESK_WIN32_API DWORD WINAPI WaitForSingleObject(HANDLE hHandle, DWORD dwMilliseconds);
TESK_WIN32_API BOOL WINAPI CloseHandle(HANDLE hObject);

// Global and local memory: blocks with a header, so GlobalHandle/GlobalSize work.
#define GMEM_FIXED 0x0000
#define GMEM_MOVEABLE 0x0002
#define GMEM_ZEROINIT 0x0040
#define GPTR (GMEM_FIXED | GMEM_ZEROINIT)
#define GHND (GMEM_MOVEABLE | GMEM_ZEROINIT)
#define LMEM_FIXED 0x0000
#define LMEM_ZEROINIT 0x0040
#define LPTR (LMEM_FIXED | LMEM_ZEROINIT)
TESK_WIN32_API HGLOBAL WINAPI GlobalAlloc(UINT uFlags, SIZE_T dwBytes);
TESK_WIN32_API HGLOBAL WINAPI GlobalFree(HGLOBAL hMem);
TESK_WIN32_API LPVOID WINAPI GlobalLock(HGLOBAL hMem);
TESK_WIN32_API BOOL WINAPI GlobalUnlock(HGLOBAL hMem);
TESK_WIN32_API HGLOBAL WINAPI GlobalHandle(LPCVOID pMem);
TESK_WIN32_API SIZE_T WINAPI GlobalSize(HGLOBAL hMem);
TESK_WIN32_API HLOCAL WINAPI LocalAlloc(UINT uFlags, SIZE_T uBytes);
TESK_WIN32_API HLOCAL WINAPI LocalFree(HLOCAL hMem);
TESK_WIN32_API SIZE_T WINAPI LocalSize(HLOCAL hMem);

// Text: the thread's ANSI code page is UTF-8.
#define CP_ACP 0
#define CP_OEMCP 1
#define CP_THREAD_ACP 3
#define CP_UTF8 65001
TESK_WIN32_API int WINAPI MultiByteToWideChar(UINT CodePage, DWORD dwFlags, LPCSTR lpMultiByteStr, int cbMultiByte,
                                              LPWSTR lpWideCharStr, int cchWideChar);
TESK_WIN32_API int WINAPI WideCharToMultiByte(UINT CodePage, DWORD dwFlags, LPCWSTR lpWideCharStr, int cchWideChar,
                                              LPSTR lpMultiByteStr, int cbMultiByte, LPCSTR lpDefaultChar,
                                              LPBOOL lpUsedDefaultChar);

// Debugger output goes to standard error.
TESK_WIN32_API void WINAPI OutputDebugStringW(LPCWSTR lpOutputString);
TESK_WIN32_API void WINAPI OutputDebugStringA(LPCSTR lpOutputString);

// String resources of a resource module (see teskresource.h).
TESK_WIN32_API int WINAPI LoadStringW(HINSTANCE hInstance, UINT uID, LPWSTR lpBuffer, int cchBufferMax);

// Module entry notifications.
#define DLL_PROCESS_DETACH 0
#define DLL_PROCESS_ATTACH 1
#define DLL_THREAD_ATTACH 2
#define DLL_THREAD_DETACH 3
TESK_WIN32_API BOOL WINAPI DisableThreadLibraryCalls(HMODULE hLibModule);

// Keyboard state: no key is held when there is no display.
#define VK_SHIFT 0x10
#define VK_CONTROL 0x11
#define VK_MENU 0x12
TESK_WIN32_API SHORT WINAPI GetAsyncKeyState(int vKey);

// win.ini-style profile strings ("windows"/"device" names the default printer).
TESK_WIN32_API DWORD WINAPI GetProfileStringW(LPCWSTR lpAppName, LPCWSTR lpKeyName, LPCWSTR lpDefault,
                                              LPWSTR lpReturnedString, DWORD nSize);
