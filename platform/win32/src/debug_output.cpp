#include <tesk/path.h>
#include <windows.h>

#include <cstdio>
#include <string>

// The debugger output of a Linux process is its standard error. One write per
// line keeps lines of different threads apart.
TESK_WIN32_API void WINAPI OutputDebugStringW(LPCWSTR text) {
    if (!text) return;
    std::string line = tesk::path::Utf8(text);
    fwrite(line.data(), 1, line.size(), stderr);
    fflush(stderr);
}

TESK_WIN32_API void WINAPI OutputDebugStringA(LPCSTR text) {
    if (!text) return;
    fputs(text, stderr);
    fflush(stderr);
}
