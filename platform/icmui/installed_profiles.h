// The profiles the dialog offers: those in the colour directory.
#pragma once
#include <string>
#include <vector>

namespace tesk::icmui {

struct InstalledProfile {
    std::wstring fileName;
    std::wstring description;  // the profile's own description, or its file name
    unsigned deviceClass = 0;  // 'mntr', 'prtr', ... from the header
};

std::vector<InstalledProfile> InstalledProfiles();

}  // namespace tesk::icmui
