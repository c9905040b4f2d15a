// The display's gamma ramp as it was before the first 'gamma load', kept in a
// file so that 'gamma restore' can put it back in a later run: the X server
// keeps a loaded ramp after the program ends.
#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace teskcolor {

// Red, green and blue, 256 values each.
using SRamp = std::vector<uint16_t>;

struct SSavedRamp {
    std::string path;
    bool exists = false;
    std::optional<SRamp> ramp;  // nullopt when there is no file or it cannot be trusted
    std::string damage;         // why a file that exists cannot be trusted
};

// The saved ramp of the display DISPLAY names.
SSavedRamp ReadSavedRamp();
// Writes `ramp` whole or not at all; throws CCliError(WriteFailed) when it cannot.
void SaveRamp(const SRamp& ramp);
void ForgetSavedRamp();

}  // namespace teskcolor
