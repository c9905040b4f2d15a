// The module's diagnostic trace: lines to the debugger output, off unless the
// user switched it on. One switch serves every module of the process.
#pragma once
#include <windows.h>

#include <cstdint>

#include "module/Export.h"

// Tag of information lines.
inline constexpr const wchar_t* kTraceInfoTag = L"[QFXx64]\t[INFO]\t\t";
// Tag of debug lines; such lines are never written.
inline constexpr const wchar_t* kTraceDebugTag = L"[QFXx64]\t[DEBUG]\t";

class TESKCOLORMGR_API RTRACE {
public:
    RTRACE(const wchar_t* category, const wchar_t* sourceFile, const wchar_t* tag, int line)
        : m_pszCategory(category), m_pszSourceFile(sourceFile), m_pszTag(tag), m_nLine(line) {}
    virtual ~RTRACE() = default;

    const wchar_t* m_pszCategory;
    const wchar_t* m_pszSourceFile;
    const wchar_t* m_pszTag;
    int32_t m_nLine;
};

// Formats one line from the record and a printf-style wide format (%s takes
// a wide string) and writes it when the switch allows.
TESKCOLORMGR_API void Trace(const RTRACE& record, const wchar_t* format, ...);

// Whether this module's switch is on (decided on first use).
TESKCOLORMGR_API bool IsTraceEnabled();
