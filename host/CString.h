// The host's wide string: the subset of the UI framework's CString the module uses.
#pragma once
#include <windows.h>

#include <cstdarg>
#include <string>

#include "host/HostExport.h"

class TESK_HOST_API CString {
public:
    CString() = default;
    CString(const wchar_t* text) : m_text(text ? text : L"") {}
    CString(const wchar_t* text, int length) : m_text(text ? std::wstring(text, length) : std::wstring()) {}
    CString(const std::wstring& text) : m_text(text) {}
    // Narrow text is UTF-8 (the thread's ANSI code page).
    explicit CString(const char* utf8);

    int GetLength() const { return static_cast<int>(m_text.size()); }
    bool IsEmpty() const { return m_text.empty(); }
    void Empty() { m_text.clear(); }
    wchar_t GetAt(int index) const { return m_text.at(static_cast<size_t>(index)); }
    void SetAt(int index, wchar_t ch) { m_text.at(static_cast<size_t>(index)) = ch; }
    operator const wchar_t*() const { return m_text.c_str(); }
    const wchar_t* GetString() const { return m_text.c_str(); }
    const std::wstring& Str() const { return m_text; }
    std::string Utf8() const;

    CString& operator=(const wchar_t* text) { m_text = text ? text : L""; return *this; }
    CString& operator+=(const CString& other) { m_text += other.m_text; return *this; }
    CString& operator+=(const wchar_t* text) { if (text) m_text += text; return *this; }
    CString& operator+=(wchar_t ch) { m_text += ch; return *this; }
    friend CString operator+(const CString& a, const CString& b) { return CString(a.m_text + b.m_text); }
    friend CString operator+(const CString& a, const wchar_t* b) { return CString(a.m_text + (b ? b : L"")); }
    friend CString operator+(const wchar_t* a, const CString& b) { return CString((a ? a : L"") + b.m_text); }
    friend bool operator==(const CString& a, const CString& b) { return a.m_text == b.m_text; }
    friend bool operator==(const CString& a, const wchar_t* b) { return a.m_text == (b ? b : L""); }
    friend bool operator!=(const CString& a, const CString& b) { return !(a == b); }
    friend bool operator<(const CString& a, const CString& b) { return a.m_text < b.m_text; }

    int Compare(const wchar_t* other) const;        // case-sensitive, <0 / 0 / >0
    int CompareNoCase(const wchar_t* other) const;  // ignoring case
    int Find(wchar_t ch, int start = 0) const;
    int Find(const wchar_t* sub, int start = 0) const;
    int ReverseFind(wchar_t ch) const;
    CString Left(int count) const;
    CString Right(int count) const;
    CString Mid(int first) const;
    CString Mid(int first, int count) const;
    CString& MakeLower();
    CString& MakeUpper();
    CString& Trim();
    int Replace(wchar_t from, wchar_t to);
    int Replace(const wchar_t* from, const wchar_t* to);
    void Truncate(int length);

    // printf-style with wide format; %s takes a wide string as on Windows.
    void Format(const wchar_t* format, ...);
    void FormatV(const wchar_t* format, va_list args);
    void AppendFormat(const wchar_t* format, ...);

    // The string resource `id` from the resource modules of the loaded
    // extension modules (newest first); false and empty when none has it.
    bool LoadString(UINT id);

    // A writable buffer of at least `minLength` characters plus terminator;
    // ReleaseBuffer(-1) takes the length from the terminator.
    wchar_t* GetBuffer(int minLength);
    void ReleaseBuffer(int newLength = -1);

private:
    std::wstring m_text;
};

// Formats like swprintf with Windows' reading of %s (wide) and %S (narrow).
TESK_HOST_API std::wstring FormatWide(const wchar_t* format, va_list args);
