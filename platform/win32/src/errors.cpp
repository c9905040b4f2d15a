#include <unistd.h>
#include <windows.h>

namespace {
UINT g_errorMode = 0;
thread_local DWORD t_lastError = 0;
}  // namespace

TESK_WIN32_API DWORD WINAPI GetLastError() { return t_lastError; }
TESK_WIN32_API void WINAPI SetLastError(DWORD code) { t_lastError = code; }

// There are no system error dialogs on Linux; the mode is kept so that callers
// that save and restore it see their own value back.
TESK_WIN32_API UINT WINAPI SetErrorMode(UINT mode) {
    UINT previous = __atomic_exchange_n(&g_errorMode, mode, __ATOMIC_SEQ_CST);
    return previous;
}
TESK_WIN32_API UINT WINAPI GetErrorMode() { return __atomic_load_n(&g_errorMode, __ATOMIC_SEQ_CST); }

TESK_WIN32_API DWORD WINAPI GetCurrentThreadId() {
    return static_cast<DWORD>(gettid());
}
TESK_WIN32_API DWORD WINAPI GetCurrentProcessId() { return static_cast<DWORD>(getpid()); }

// Reports Windows 10 (major 10, minor 0) in the documented packing.
TESK_WIN32_API DWORD WINAPI GetVersion() { return 0x4A61000Au; }
