// Which profiles of the colour directory count as installed.
#pragma once
#include <string>

namespace tesk::mscms {

// Standard profile choices and the profiles uninstalled with their file kept.
inline constexpr char kProfilesFile[] = "color_profiles.json";

// A profile is installed when its file is in the colour directory and it has
// not been uninstalled since (uninstalling may keep the file). Names are bare
// file names.
bool IsInstalled(const std::string& fileName);
// Marks a profile uninstalled, or installed again; false when that cannot be saved.
bool SetUninstalled(const std::string& fileName, bool uninstalled);

}  // namespace tesk::mscms
