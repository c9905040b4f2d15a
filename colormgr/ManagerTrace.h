// Trace records of the colour manager's sources.
#pragma once
#include "module/Trace.h"

#define CM_WIDEN2(text) L##text
#define CM_WIDEN(text) CM_WIDEN2(text)

// An information record for `category` at the current source line.
#define CM_TRACE_INFO(category) RTRACE(category, CM_WIDEN(__FILE__), kTraceInfoTag, __LINE__)
// A record without tag: formatted, never written.
#define CM_TRACE_SILENT(category) RTRACE(category, CM_WIDEN(__FILE__), nullptr, __LINE__)

// Written whenever a profile path is retried or the directory is asked "for x64".
inline constexpr const wchar_t* kX64EngagedMessage = L"x64 is engaged. Watch out the path of sRGB porfile.";
