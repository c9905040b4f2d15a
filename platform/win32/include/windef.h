// Basic Win32 types with the Windows SDK's names, sizes and values.
// DWORD, LONG and ULONG are 32-bit as on 64-bit Windows (LLP64), not Linux's
// 64-bit `long`. WCHAR is the platform's wchar_t: 4 bytes on Linux, so
// structures holding WCHAR arrays keep Windows' field order and counts but
// not their byte size.
#pragma once
#include <cstddef>
#include <cstdint>

#ifdef __GNUC__
#define TESK_WIN32_API extern "C" __attribute__((visibility("default")))
// Linux-only helpers with C++ types in their signatures.
#define TESK_WIN32_CXX_API __attribute__((visibility("default")))
#else
#define TESK_WIN32_API extern "C"
#define TESK_WIN32_CXX_API
#endif

#define WINAPI
#define CALLBACK
#define APIENTRY
#define CONST const
#define VOID void
#ifndef FALSE
#define FALSE 0
#endif
#ifndef TRUE
#define TRUE 1
#endif
#define MAX_PATH 260

typedef uint8_t BYTE;
typedef uint16_t WORD;
typedef uint32_t DWORD;
typedef int32_t LONG;
typedef uint32_t ULONG;
typedef uint32_t UINT;
typedef int32_t INT;
typedef int BOOL;
typedef char CHAR;
typedef wchar_t WCHAR;
typedef int16_t SHORT;
typedef uint16_t USHORT;
typedef int64_t LONGLONG;
typedef uint64_t ULONGLONG;
typedef int64_t LONG_PTR;
typedef uint64_t ULONG_PTR;
typedef int64_t INT_PTR;
typedef uint64_t UINT_PTR;
typedef ULONG_PTR DWORD_PTR;
typedef ULONG_PTR SIZE_T;
typedef LONG_PTR LPARAM;
typedef UINT_PTR WPARAM;
typedef LONG_PTR LRESULT;
typedef LONG HRESULT;
typedef DWORD COLORREF;
typedef float FLOAT;

typedef void* PVOID;
typedef void* LPVOID;
typedef const void* LPCVOID;
typedef BYTE* PBYTE;
typedef BYTE* LPBYTE;
typedef WORD* PWORD;
typedef WORD* LPWORD;
typedef DWORD* PDWORD;
typedef DWORD* LPDWORD;
typedef LONG* PLONG;
typedef ULONG* PULONG;
typedef BOOL* PBOOL;
typedef BOOL* LPBOOL;
typedef CHAR* LPSTR;
typedef CHAR* PSTR;
typedef const CHAR* LPCSTR;
typedef WCHAR* LPWSTR;
typedef WCHAR* PWSTR;
typedef const WCHAR* LPCWSTR;
typedef const WCHAR* PCWSTR;
typedef const CHAR* PCSTR;

typedef void* HANDLE;
typedef HANDLE* PHANDLE;
typedef HANDLE* LPHANDLE;
struct HINSTANCE__;
typedef HINSTANCE__* HINSTANCE;
typedef HINSTANCE HMODULE;
struct HWND__;
typedef HWND__* HWND;
struct HDC__;
typedef HDC__* HDC;
struct HKEY__;
typedef HKEY__* HKEY;
typedef HKEY* PHKEY;
struct HMONITOR__;
typedef HMONITOR__* HMONITOR;
struct HBITMAP__;
typedef HBITMAP__* HBITMAP;
struct HPALETTE__;
typedef HPALETTE__* HPALETTE;
typedef HANDLE HGLOBAL;
typedef HANDLE HLOCAL;
typedef HANDLE HGDIOBJ;
typedef DWORD ACCESS_MASK;
typedef LONG LSTATUS;
typedef DWORD REGSAM;

typedef INT_PTR(WINAPI* FARPROC)();

typedef struct tagRECT {
    LONG left;
    LONG top;
    LONG right;
    LONG bottom;
} RECT, *PRECT, *LPRECT;
typedef const RECT* LPCRECT;

typedef struct tagPOINT {
    LONG x;
    LONG y;
} POINT, *PPOINT, *LPPOINT;

typedef struct tagSIZE {
    LONG cx;
    LONG cy;
} SIZE, *PSIZE, *LPSIZE;

typedef struct _SECURITY_ATTRIBUTES {
    DWORD nLength;
    LPVOID lpSecurityDescriptor;
    BOOL bInheritHandle;
} SECURITY_ATTRIBUTES, *PSECURITY_ATTRIBUTES, *LPSECURITY_ATTRIBUTES;

typedef struct _GUID {
    uint32_t Data1;
    uint16_t Data2;
    uint16_t Data3;
    uint8_t Data4[8];
} GUID;
typedef GUID IID;
typedef GUID CLSID;

inline bool operator==(const GUID& a, const GUID& b) {
    if (a.Data1 != b.Data1 || a.Data2 != b.Data2 || a.Data3 != b.Data3) return false;
    for (int i = 0; i < 8; ++i)
        if (a.Data4[i] != b.Data4[i]) return false;
    return true;
}

#define LOBYTE(w) ((BYTE)(((DWORD_PTR)(w)) & 0xff))
#define HIBYTE(w) ((BYTE)((((DWORD_PTR)(w)) >> 8) & 0xff))
#define LOWORD(l) ((WORD)(((DWORD_PTR)(l)) & 0xffff))
#define HIWORD(l) ((WORD)((((DWORD_PTR)(l)) >> 16) & 0xffff))
#define MAKEWORD(a, b) ((WORD)(((BYTE)(((DWORD_PTR)(a)) & 0xff)) | ((WORD)((BYTE)(((DWORD_PTR)(b)) & 0xff))) << 8))
#define MAKELONG(a, b) ((LONG)(((WORD)(((DWORD_PTR)(a)) & 0xffff)) | ((DWORD)((WORD)(((DWORD_PTR)(b)) & 0xffff))) << 16))

static_assert(sizeof(DWORD) == 4 && sizeof(LONG) == 4 && sizeof(ULONG) == 4, "LLP64 integer sizes");
