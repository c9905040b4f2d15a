// The ICC profiles a printer's PPD names (*cupsICCProfile lines).
#pragma once
#include <string>
#include <string_view>
#include <vector>

#include "display.h"

namespace tesk::printers {

struct PpdProfile {
    std::string qualifiers;  // "ColorModel.MediaType.Resolution", parts may be empty
    std::string file;        // as written: absolute, or relative to CUPS' profiles folder
};

struct PpdColorInfo {
    std::vector<PpdProfile> profiles;
    std::string defaultColorModel;  // *DefaultColorModel, or ""
};

// Reads the PPD's text; never reads outside `text`, whatever it holds.
TESK_GDI_INTERNAL PpdColorInfo ParsePpdColorInfo(std::string_view text);

// The profile for the default colour model (else the first profile), as a
// path: relative names are taken from `profilesFolder`. "" when none.
TESK_GDI_INTERNAL std::string ChoosePpdProfile(const PpdColorInfo& info, const std::string& profilesFolder);

}  // namespace tesk::printers
