// The colour directory and the paths of profiles named in calls.
#pragma once
#include <windows.h>

#include <string>

#include "icc_container.h"

namespace tesk::mscms {

// $TESK_COLOR_DIR, else $XDG_DATA_HOME/icc, else ~/.local/share/icc; created on
// demand and seeded with the built-in sRGB profile. Empty when it cannot be made.
std::string ColorDirectory();

// The native path of a profile named in a call: a bare file name is looked for
// in the colour directory, anything with a folder or drive is a path.
std::string ProfilePath(const std::wstring& name);
std::string FileName(const std::string& nativePath);

// The text of a PCWSTR argument; false (ERROR_INVALID_PARAMETER) for null or empty.
bool TextArgument(PCWSTR text, std::wstring& out);
// Only the local machine is served: a machine name must be null or empty.
bool IsLocalMachine(PCWSTR machineName);

// Copies `text` and its terminator into `buffer` of `*byteSize` bytes. Too
// small or null: the size needed goes to `*byteSize` and the call fails with
// ERROR_INSUFFICIENT_BUFFER.
BOOL CopyTextOut(const std::wstring& text, PWSTR buffer, PDWORD byteSize);

// Whole file; false with last error set when it cannot be read.
bool ReadWholeFile(const std::string& nativePath, Bytes& bytes);

}  // namespace tesk::mscms
