// Device–profile associations, shared by the colour system (which writes
// them) and GDI (which reads them): per device name an ordered list of
// profile file names, kept in "device_profiles.json" of the user's
// configuration folder as {"<device>": ["<profile>.icm", ...], ...} (UTF-8).
#pragma once
#include <string>
#include <vector>

#include "../windef.h"

namespace tesk::associations {

// The profile file names associated with `device`, in association order.
TESK_WIN32_CXX_API std::vector<std::string> ProfilesOf(const std::string& device);

// Appends `profile` to the device's list unless it is there; false when the
// file cannot be written.
TESK_WIN32_CXX_API bool Add(const std::string& device, const std::string& profile);

enum class RemoveResult { kRemoved, kNotAssociated, kWriteFailed };
TESK_WIN32_CXX_API RemoveResult Remove(const std::string& device, const std::string& profile);

// Drops `profile` from every device's list; false when the file cannot be written.
TESK_WIN32_CXX_API bool Forget(const std::string& profile);

}  // namespace tesk::associations
