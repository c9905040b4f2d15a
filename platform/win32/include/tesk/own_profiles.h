// Where the module's own profiles are on Linux.
#pragma once
#include <string>

#include "../windef.h"

namespace tesk::path {
// The module's own profiles: the "ColorProfile" folder beside the running
// executable when there is one, else the folder installed with the library
// (<datadir>/teskcolormgr/ColorProfile, found from where libteskwin32 is).
TESK_WIN32_CXX_API std::string OwnProfileFolder();
// A file named in the executable's "ColorProfile" folder that is not there
// becomes the installed folder's file of that name when that one exists;
// every other path comes back as it is.
TESK_WIN32_CXX_API std::string WithInstalledProfileFallback(const std::string& nativePath);
}  // namespace tesk::path
