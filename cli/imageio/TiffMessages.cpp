#include "cli/imageio/TiffMessages.h"

#include <tiffio.h>

#include <cstdarg>
#include <cstdio>
#include <mutex>

namespace teskcolor {

namespace {

thread_local std::string t_lastError;

void OnTiffError(const char* module, const char* format, va_list args) {
    char text[512];
    std::vsnprintf(text, sizeof text, format, args);
    t_lastError = module && *module ? std::string(module) + ": " + text : std::string(text);
}

void OnTiffWarning(const char*, const char*, va_list) {}

}  // namespace

void InstallTiffHandlers() {
    static std::once_flag once;
    std::call_once(once, [] {
        TIFFSetErrorHandler(OnTiffError);
        TIFFSetWarningHandler(OnTiffWarning);
    });
}

std::string TakeTiffError() {
    std::string text;
    text.swap(t_lastError);
    return text;
}

}  // namespace teskcolor
