#include "host/CString.h"

#include <tesk/path.h>

#include <algorithm>
#include <cwchar>
#include <cwctype>
#include <vector>

#include "host/ExtensionModule.h"

namespace {

// Windows' wide printf reads %s and %c as wide and %S and %C as narrow;
// glibc's reads them the other way round. Rewrite the conversions.
std::wstring ToGlibcFormat(const wchar_t* format) {
    std::wstring out;
    for (const wchar_t* p = format; *p; ++p) {
        out += *p;
        if (*p != L'%') continue;
        ++p;
        if (*p == L'%') {
            out += L'%';
            continue;
        }
        while (*p && std::wcschr(L"-+ #0123456789.*", *p)) out += *p++;
        bool wideLength = false, narrowLength = false;
        if (p[0] == L'I' && p[1] == L'6' && p[2] == L'4') {
            out += L"ll";
            p += 3;
        }
        while (*p && std::wcschr(L"hlLqjzt", *p)) {
            if (*p == L'l' && (p[1] == L's' || p[1] == L'c')) wideLength = true;
            if (*p == L'h' && (p[1] == L's' || p[1] == L'c')) {
                narrowLength = true;
                ++p;
                continue;
            }
            out += *p++;
        }
        if (!*p) break;
        switch (*p) {
            case L's':
            case L'c':
                if (!wideLength && !narrowLength) out += L'l';
                out += *p;
                break;
            case L'S':
                out += L's';
                break;
            case L'C':
                out += L'c';
                break;
            default:
                out += *p;
        }
    }
    return out;
}

}  // namespace

std::wstring FormatWide(const wchar_t* format, va_list args) {
    if (!format) return {};
    std::wstring glibcFormat = ToGlibcFormat(format);
    std::vector<wchar_t> buffer(256);
    for (;;) {
        va_list copy;
        va_copy(copy, args);
        int n = vswprintf(buffer.data(), buffer.size(), glibcFormat.c_str(), copy);
        va_end(copy);
        if (n >= 0 && static_cast<size_t>(n) < buffer.size()) return std::wstring(buffer.data(), static_cast<size_t>(n));
        // vswprintf reports only failure, not the size it needed.
        if (buffer.size() > (1u << 26)) return {};
        buffer.resize(buffer.size() * 4);
    }
}

CString::CString(const char* utf8) : m_text(utf8 ? tesk::path::Wide(utf8) : std::wstring()) {}

std::string CString::Utf8() const { return tesk::path::Utf8(m_text); }

int CString::Compare(const wchar_t* other) const { return std::wcscmp(m_text.c_str(), other ? other : L""); }

int CString::CompareNoCase(const wchar_t* other) const {
    const wchar_t* a = m_text.c_str();
    const wchar_t* b = other ? other : L"";
    for (;; ++a, ++b) {
        wint_t ca = std::towlower(*a), cb = std::towlower(*b);
        if (ca != cb) return ca < cb ? -1 : 1;
        if (!ca) return 0;
    }
}

int CString::Find(wchar_t ch, int start) const {
    if (start < 0 || start >= GetLength()) return -1;
    size_t at = m_text.find(ch, static_cast<size_t>(start));
    return at == std::wstring::npos ? -1 : static_cast<int>(at);
}

int CString::Find(const wchar_t* sub, int start) const {
    if (!sub || start < 0 || start > GetLength()) return -1;
    size_t at = m_text.find(sub, static_cast<size_t>(start));
    return at == std::wstring::npos ? -1 : static_cast<int>(at);
}

int CString::ReverseFind(wchar_t ch) const {
    size_t at = m_text.rfind(ch);
    return at == std::wstring::npos ? -1 : static_cast<int>(at);
}

CString CString::Left(int count) const {
    count = std::clamp(count, 0, GetLength());
    return CString(m_text.substr(0, static_cast<size_t>(count)));
}

CString CString::Right(int count) const {
    count = std::clamp(count, 0, GetLength());
    return CString(m_text.substr(m_text.size() - static_cast<size_t>(count)));
}

CString CString::Mid(int first) const { return Mid(first, GetLength()); }

CString CString::Mid(int first, int count) const {
    first = std::clamp(first, 0, GetLength());
    count = std::clamp(count, 0, GetLength() - first);
    return CString(m_text.substr(static_cast<size_t>(first), static_cast<size_t>(count)));
}

CString& CString::MakeLower() {
    for (wchar_t& ch : m_text) ch = static_cast<wchar_t>(std::towlower(ch));
    return *this;
}

CString& CString::MakeUpper() {
    for (wchar_t& ch : m_text) ch = static_cast<wchar_t>(std::towupper(ch));
    return *this;
}

CString& CString::Trim() {
    size_t first = 0, last = m_text.size();
    while (first < last && std::iswspace(m_text[first])) ++first;
    while (last > first && std::iswspace(m_text[last - 1])) --last;
    m_text = m_text.substr(first, last - first);
    return *this;
}

int CString::Replace(wchar_t from, wchar_t to) {
    int count = 0;
    for (wchar_t& ch : m_text)
        if (ch == from) {
            ch = to;
            ++count;
        }
    return count;
}

int CString::Replace(const wchar_t* from, const wchar_t* to) {
    if (!from || !*from) return 0;
    std::wstring needle(from), replacement(to ? to : L"");
    int count = 0;
    for (size_t at = m_text.find(needle); at != std::wstring::npos; at = m_text.find(needle, at + replacement.size())) {
        m_text.replace(at, needle.size(), replacement);
        ++count;
    }
    return count;
}

void CString::Truncate(int length) {
    if (length >= 0 && length < GetLength()) m_text.resize(static_cast<size_t>(length));
}

void CString::Format(const wchar_t* format, ...) {
    va_list args;
    va_start(args, format);
    m_text = FormatWide(format, args);
    va_end(args);
}

void CString::FormatV(const wchar_t* format, va_list args) { m_text = FormatWide(format, args); }

void CString::AppendFormat(const wchar_t* format, ...) {
    va_list args;
    va_start(args, format);
    m_text += FormatWide(format, args);
    va_end(args);
}

bool CString::LoadString(UINT id) {
    for (int i = 0; i < AfxResourceModuleCount(); ++i) {
        const wchar_t* text = nullptr;
        int length = LoadStringW(reinterpret_cast<HINSTANCE>(AfxResourceModule(i)), id,
                                 reinterpret_cast<LPWSTR>(&text), 0);
        if (length > 0 && text) {
            m_text.assign(text, static_cast<size_t>(length));
            return true;
        }
    }
    m_text.clear();
    return false;
}

wchar_t* CString::GetBuffer(int minLength) {
    if (minLength > GetLength()) m_text.resize(static_cast<size_t>(minLength));
    return m_text.data();
}

void CString::ReleaseBuffer(int newLength) {
    if (newLength < 0) newLength = static_cast<int>(std::wcslen(m_text.c_str()));
    m_text.resize(static_cast<size_t>(std::min(newLength, GetLength())));
}
