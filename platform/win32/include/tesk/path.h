// Paths between the Windows form the module uses and Linux's.
// Windows form: every '/' of a Linux path is a '\\' ("\\home\\me\\a.icc").
// Either form is accepted where a path comes in; a drive prefix such as "Z:"
// stands for the root, as under Wine.
#pragma once
#include <string>

#include "../windef.h"

namespace tesk::path {
TESK_WIN32_CXX_API std::string ToNative(const wchar_t* windowsPath);
TESK_WIN32_CXX_API std::wstring ToWindows(const std::string& nativePath);
TESK_WIN32_CXX_API std::string Utf8(const std::wstring& text);
TESK_WIN32_CXX_API std::wstring Wide(const std::string& utf8);
// $XDG_CONFIG_HOME/teskcolor (default ~/.config/teskcolor), created on demand.
TESK_WIN32_CXX_API std::string ConfigDirectory();
// The module's own profiles: the "ColorProfile" folder beside the running
// executable when there is one, else the folder installed with the library
// (<datadir>/teskcolormgr/ColorProfile, found from where libteskwin32 is).
TESK_WIN32_CXX_API std::string OwnProfileFolder();
// A file named in the executable's "ColorProfile" folder that is not there
// becomes the installed folder's file of that name when that one exists;
// every other path comes back as it is.
TESK_WIN32_CXX_API std::string WithInstalledProfileFallback(const std::string& nativePath);
// Writes `bytes` to `nativePath` through a temporary file and a rename.
TESK_WIN32_CXX_API bool WriteFileAtomically(const std::string& nativePath, const std::string& bytes);
}  // namespace tesk::path
