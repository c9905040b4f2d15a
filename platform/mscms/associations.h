// Device–profile associations: per device name an ordered list of profile
// file names, kept in "device_profiles.json" of the user's configuration
// folder as {"<device>": ["<profile>.icm", ...], ...} (UTF-8).
#pragma once
#include <string>
#include <vector>

namespace tesk::mscms {

inline constexpr char kAssociationsFile[] = "device_profiles.json";

std::vector<std::string> AssociatedProfiles(const std::string& device);
// Drops `fileName` from every device's list.
bool ForgetProfileInAssociations(const std::string& fileName);

}  // namespace tesk::mscms
