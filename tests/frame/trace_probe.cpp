// Loads the module twice through the loader in a fresh process (its entry
// traces while loading, and must run once), then
// writes a few lines with the tags the tests check and reports whether the
// switch was published. With --event-first the switch event exists,
// unsignalled, before the module decides.
#include <windows.h>

#include <cstdio>
#include <cstring>

#include "module/Trace.h"

using TraceFn = void (*)(const RTRACE&, const wchar_t*, ...);
using EnabledFn = bool (*)();

int main(int argc, char** argv) {
    HANDLE early = nullptr;
    if (argc > 1 && std::strcmp(argv[1], "--event-first") == 0)
        early = CreateEventW(nullptr, TRUE, FALSE, L"QFX_OUTPUT_DEBUG_ENABLE");
    HMODULE module = LoadLibraryW(L"" TESK_MODULE_FILE);
    if (!module || LoadLibraryW(L"" TESK_MODULE_FILE) != module) {
        std::printf("load failed: %u\n", static_cast<unsigned>(GetLastError()));
        return 2;
    }
    auto trace = reinterpret_cast<TraceFn>(GetProcAddress(module, "_Z5TraceRK6RTRACEPKwz"));
    auto enabled = reinterpret_cast<EnabledFn>(GetProcAddress(module, "_Z14IsTraceEnabledv"));
    if (!trace || !enabled) return 3;
    trace(RTRACE(L"Probe", nullptr, nullptr, 0), L"null tag line\n");
    trace(RTRACE(L"Probe", nullptr, L"[qfxx64]\t[debug]\t", 0), L"debug tag line\n");
    trace(RTRACE(L"Probe", L"probe.cpp", kTraceInfoTag, 42), L"value %d of %s\n", 7, L"seven");
    trace(RTRACE(nullptr, nullptr, L"", 0), L"bare line\n");
    HANDLE event = OpenEventW(SYNCHRONIZE, FALSE, L"QFX_OUTPUT_DEBUG_ENABLE");
    bool published = event && WaitForSingleObject(event, 0) == WAIT_OBJECT_0;
    std::printf("published=%d enabled=%d\n", published ? 1 : 0, enabled() ? 1 : 0);
    if (early) CloseHandle(early);
    return 0;
}
