// What GDI32 needs of the colour system (MSCMS.DLL): the colour directory,
// the standard profile and the profiles associated with a device. MSCMS is
// loaded by name when needed, as a Windows GDI would find it.
#pragma once
#include <string>
#include <vector>

namespace tesk::gdi {

// Linux path of the colour directory.
std::string ColorDirectory();
// Linux path of a profile named in a call: a bare file name lives in the
// colour directory; anything with a folder or drive is a path.
std::string ResolveProfile(const wchar_t* name);
// Linux path of the standard "Win " colour space profile, or "".
std::string StandardProfile();
// Linux paths of the profiles associated with `device`, in association order.
std::vector<std::string> AssociatedProfiles(const std::wstring& device);
// True when the file holds something with an ICC profile header.
bool LooksLikeProfile(const std::string& nativePath);

}  // namespace tesk::gdi
