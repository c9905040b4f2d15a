// How text crosses between the module and the operating system.
//
// - Interfaces of the module and the Windows colour API take wchar_t text.
// - A narrow std::string or char* inside the module, the host and this
//   interface is always UTF-8, on every system: paths, settings, language
//   tags, text read from files. One documented exception: the profile lists
//   of the setup hold their texts in the thread's ANSI code page (UTF-8 on
//   Linux) and go through devices/TextCodePage.h, never through UTF-8 calls.
// - Conversion happens once, where a call leaves for the system: Linux takes
//   the UTF-8 bytes as they are; Windows gets wide text (the *W functions),
//   never the ANSI code page. A narrow path reaches the C++ library only as
//   a std::filesystem::path made by FileSystemPath.
#pragma once
#include <filesystem>
#include <string>

#include "portable_export.h"

namespace tesk::path {

// UTF-8 <-> wchar_t text (UTF-32 on Linux, UTF-16 on Windows). Malformed
// input becomes U+FFFD; nothing is dropped silently.
TESK_PORTABLE_API std::string Utf8(const std::wstring& text);
TESK_PORTABLE_API std::wstring Wide(const std::string& utf8);

// A UTF-8 path as the C++ library opens it on this system.
inline std::filesystem::path FileSystemPath(const std::string& utf8) {
    return std::filesystem::path(std::u8string(utf8.begin(), utf8.end()));
}

inline std::string Utf8Path(const std::filesystem::path& path) {
    const std::u8string text = path.u8string();
    return std::string(text.begin(), text.end());
}

}  // namespace tesk::path
