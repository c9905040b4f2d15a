#include <windows.h>

#include <tesk/text.h>

namespace tesk::path {

// Without MB_ERR_INVALID_CHARS both directions replace what they cannot
// convert with U+FFFD, as the Linux conversion does.
std::string Utf8(const std::wstring& text) {
    if (text.empty()) return {};
    const int length = static_cast<int>(text.size());
    const int size = WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    std::string out(static_cast<size_t>(size > 0 ? size : 0), '\0');
    if (size > 0) WideCharToMultiByte(CP_UTF8, 0, text.data(), length, out.data(), size, nullptr, nullptr);
    return out;
}

std::wstring Wide(const std::string& utf8) {
    if (utf8.empty()) return {};
    const int length = static_cast<int>(utf8.size());
    const int size = MultiByteToWideChar(CP_UTF8, 0, utf8.data(), length, nullptr, 0);
    std::wstring out(static_cast<size_t>(size > 0 ? size : 0), L'\0');
    if (size > 0) MultiByteToWideChar(CP_UTF8, 0, utf8.data(), length, out.data(), size);
    return out;
}

}  // namespace tesk::path
