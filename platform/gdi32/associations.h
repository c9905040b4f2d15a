// Read side of MSCMS's device-profile associations: "device_profiles.json"
// in the user's configuration folder, {"<device>": ["<profile file>", ...]}.
// MSCMS writes it (AssociateColorProfileWithDeviceW); GDI only reads it.
#pragma once
#include <string>
#include <vector>

namespace tesk::gdi {

// The profile file names associated with `device`, in association order.
std::vector<std::wstring> ReadAssociations(const std::wstring& device);

}  // namespace tesk::gdi
