// Registry subset: a persistent key/value store in the user's configuration
// folder ($XDG_CONFIG_HOME/teskcolor/registry).
#pragma once
#include "windef.h"

#define HKEY_CLASSES_ROOT ((HKEY)(ULONG_PTR)((LONG)0x80000000))
#define HKEY_CURRENT_USER ((HKEY)(ULONG_PTR)((LONG)0x80000001))
#define HKEY_LOCAL_MACHINE ((HKEY)(ULONG_PTR)((LONG)0x80000002))
#define HKEY_USERS ((HKEY)(ULONG_PTR)((LONG)0x80000003))

#define KEY_QUERY_VALUE 0x0001
#define KEY_SET_VALUE 0x0002
#define KEY_CREATE_SUB_KEY 0x0004
#define KEY_READ 0x20019
#define KEY_WRITE 0x20006
#define KEY_ALL_ACCESS 0xF003F
#define REG_OPTION_NON_VOLATILE 0x00000000L

#define REG_NONE 0
#define REG_SZ 1
#define REG_BINARY 3
#define REG_DWORD 4

#define REG_CREATED_NEW_KEY 0x00000001L
#define REG_OPENED_EXISTING_KEY 0x00000002L

TESK_WIN32_API LSTATUS WINAPI RegOpenKeyExW(HKEY hKey, LPCWSTR lpSubKey, DWORD ulOptions, REGSAM samDesired,
                                            PHKEY phkResult);
TESK_WIN32_API LSTATUS WINAPI RegCreateKeyExW(HKEY hKey, LPCWSTR lpSubKey, DWORD Reserved, LPWSTR lpClass,
                                              DWORD dwOptions, REGSAM samDesired,
                                              LPSECURITY_ATTRIBUTES lpSecurityAttributes, PHKEY phkResult,
                                              LPDWORD lpdwDisposition);
// REG_SZ data is wide text as on Windows; sizes count bytes of wchar_t.
TESK_WIN32_API LSTATUS WINAPI RegQueryValueExW(HKEY hKey, LPCWSTR lpValueName, LPDWORD lpReserved, LPDWORD lpType,
                                               LPBYTE lpData, LPDWORD lpcbData);
TESK_WIN32_API LSTATUS WINAPI RegSetValueExW(HKEY hKey, LPCWSTR lpValueName, DWORD Reserved, DWORD dwType,
                                             const BYTE* lpData, DWORD cbData);
TESK_WIN32_API LSTATUS WINAPI RegDeleteValueW(HKEY hKey, LPCWSTR lpValueName);
TESK_WIN32_API LSTATUS WINAPI RegCloseKey(HKEY hKey);
TESK_WIN32_API LSTATUS WINAPI RegOpenKeyW(HKEY hKey, LPCWSTR lpSubKey, PHKEY phkResult);
