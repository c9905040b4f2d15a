#include <tesk/path.h>
#include <windows.h>

#include <cstring>
#include <string>

namespace {

bool IsUtf8CodePage(UINT codePage) {
    return codePage == CP_ACP || codePage == CP_OEMCP || codePage == CP_THREAD_ACP || codePage == CP_UTF8;
}

// Decodes one UTF-8 sequence; malformed input yields U+FFFD and consumes one byte.
char32_t DecodeUtf8(const unsigned char* s, size_t n, size_t& used) {
    unsigned char c = s[0];
    used = 1;
    if (c < 0x80) return c;
    int extra = (c >= 0xF0 && c < 0xF8) ? 3 : (c >= 0xE0) ? 2 : (c >= 0xC2 && c < 0xE0) ? 1 : -1;
    if (extra < 0 || static_cast<size_t>(extra) >= n) return 0xFFFD;
    char32_t cp = c & (0x3F >> extra);
    for (int i = 1; i <= extra; ++i) {
        if ((s[i] & 0xC0) != 0x80) return 0xFFFD;
        cp = (cp << 6) | (s[i] & 0x3F);
    }
    static const char32_t kMin[] = {0, 0x80, 0x800, 0x10000};
    if (cp < kMin[extra] || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) return 0xFFFD;
    used = static_cast<size_t>(extra) + 1;
    return cp;
}

void EncodeUtf8(char32_t cp, std::string& out) {
    if (cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) cp = 0xFFFD;
    if (cp < 0x80) {
        out += static_cast<char>(cp);
    } else if (cp < 0x800) {
        out += static_cast<char>(0xC0 | (cp >> 6));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    } else if (cp < 0x10000) {
        out += static_cast<char>(0xE0 | (cp >> 12));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (cp >> 18));
        out += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    }
}

}  // namespace

namespace tesk::path {

std::string Utf8(const std::wstring& text) {
    std::string out;
    out.reserve(text.size());
    for (wchar_t ch : text) EncodeUtf8(static_cast<char32_t>(ch), out);
    return out;
}

std::wstring Wide(const std::string& utf8) {
    std::wstring out;
    out.reserve(utf8.size());
    const auto* s = reinterpret_cast<const unsigned char*>(utf8.data());
    size_t i = 0;
    while (i < utf8.size()) {
        size_t used = 1;
        out += static_cast<wchar_t>(DecodeUtf8(s + i, utf8.size() - i, used));
        i += used;
    }
    return out;
}

}  // namespace tesk::path

// A length of -1 means the text is terminated and the terminator is counted,
// as on Windows.
TESK_WIN32_API int WINAPI MultiByteToWideChar(UINT codePage, DWORD, LPCSTR text, int length, LPWSTR out,
                                              int outLength) {
    if (!text || length == 0 || outLength < 0 || (outLength > 0 && !out)) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    if (!IsUtf8CodePage(codePage)) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    size_t n = length < 0 ? std::strlen(text) + 1 : static_cast<size_t>(length);
    std::wstring wide = tesk::path::Wide(std::string(text, n));
    if (outLength == 0) return static_cast<int>(wide.size());
    if (wide.size() > static_cast<size_t>(outLength)) {
        SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return 0;
    }
    std::memcpy(out, wide.data(), wide.size() * sizeof(wchar_t));
    return static_cast<int>(wide.size());
}

TESK_WIN32_API int WINAPI WideCharToMultiByte(UINT codePage, DWORD, LPCWSTR text, int length, LPSTR out,
                                              int outLength, LPCSTR, LPBOOL usedDefault) {
    if (!text || length == 0 || outLength < 0 || (outLength > 0 && !out)) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    if (!IsUtf8CodePage(codePage)) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return 0;
    }
    if (usedDefault) *usedDefault = FALSE;
    size_t n = length < 0 ? std::wcslen(text) + 1 : static_cast<size_t>(length);
    std::string narrow = tesk::path::Utf8(std::wstring(text, n));
    if (outLength == 0) return static_cast<int>(narrow.size());
    if (narrow.size() > static_cast<size_t>(outLength)) {
        SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return 0;
    }
    std::memcpy(out, narrow.data(), narrow.size());
    return static_cast<int>(narrow.size());
}
