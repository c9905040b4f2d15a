#include "cli/imageio/TiffMessages.h"

#include <tiffio.h>

#include <cstdarg>
#include <cstdio>
#include <mutex>

namespace teskcolor {

namespace {

thread_local std::string t_lastError;
thread_local std::string t_warnings;

void OnTiffError(const char* module, const char* format, va_list args) {
    char text[512];
    std::vsnprintf(text, sizeof text, format, args);
    t_lastError = module && *module ? std::string(module) + ": " + text : std::string(text);
}

// Kept rather than shown: a tag libtiff drops as unreadable is only a warning to it.
void OnTiffWarning(const char*, const char* format, va_list args) {
    char text[512];
    std::vsnprintf(text, sizeof text, format, args);
    if (t_warnings.size() < 4096) t_warnings += std::string(text) + "\n";
}

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
    t_warnings.clear();
    return text;
}

bool TiffDroppedTag(const std::string& fieldName) {
    return t_warnings.find("\"" + fieldName + "\"") != std::string::npos;
}

}  // namespace teskcolor
