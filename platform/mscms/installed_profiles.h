// Which profiles of the colour directory count as installed.
#pragma once
#include <string>

namespace tesk::mscms {

// A profile is installed when its file is in the colour directory and it has
// not been uninstalled since (uninstalling may keep the file). Names are bare
// file names.
bool IsInstalled(const std::string& fileName);

}  // namespace tesk::mscms
