// Paths between the Windows form the module uses and the system's own.
// Windows form: '\\' separators ("\\home\\me\\a.icc" on Linux). On Linux
// either form is accepted where a path comes in, and a drive prefix such as
// "Z:" stands for the root, as under Wine. Native paths are UTF-8 (text.h).
#pragma once
#include <string>

#include "portable_export.h"
#include "text.h"

namespace tesk::path {
TESK_PORTABLE_API std::string ToNative(const wchar_t* windowsPath);
TESK_PORTABLE_API std::wstring ToWindows(const std::string& nativePath);
// The user's configuration folder for this program, created on demand:
// $XDG_CONFIG_HOME/teskcolor (default ~/.config/teskcolor) on Linux,
// %APPDATA%\teskcolor on Windows.
TESK_PORTABLE_API std::string ConfigDirectory();
// Writes `bytes` to `nativePath` through a temporary file beside it, flushed
// to disk and renamed over the old file: a reader sees the old or the new file.
TESK_PORTABLE_API bool WriteFileAtomically(const std::string& nativePath, const std::string& bytes);
}  // namespace tesk::path
