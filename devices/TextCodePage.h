// Narrow/wide conversions in the thread's ANSI code page, as the setup lists
// hold their texts. A failed conversion gives an empty text.
#pragma once
#include <windows.h>

#include <string>

#include "host/CString.h"

namespace colormgr {

inline std::string ToThreadCodePage(const wchar_t* text) {
    if (!text || !*text) return {};
    int bytes = ::WideCharToMultiByte(CP_THREAD_ACP, 0, text, -1, nullptr, 0, nullptr, nullptr);
    if (bytes <= 1) return {};
    std::string result(static_cast<size_t>(bytes), '\0');
    if (::WideCharToMultiByte(CP_THREAD_ACP, 0, text, -1, result.data(), bytes, nullptr, nullptr) != bytes) return {};
    result.resize(static_cast<size_t>(bytes - 1));
    return result;
}

inline CString FromThreadCodePage(const std::string& text) {
    if (text.empty()) return CString();
    int chars = ::MultiByteToWideChar(CP_THREAD_ACP, 0, text.c_str(), -1, nullptr, 0);
    if (chars <= 1) return CString();
    std::wstring result(static_cast<size_t>(chars), L'\0');
    if (::MultiByteToWideChar(CP_THREAD_ACP, 0, text.c_str(), -1, result.data(), chars) != chars) return CString();
    result.resize(static_cast<size_t>(chars - 1));
    return CString(result);
}

}  // namespace colormgr
