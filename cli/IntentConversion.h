// Conversions with a rendering intent chosen for the run. The module's
// one-off conversion into the working space is always relative colorimetric;
// its display transform takes the settings' intent, so for each conversion
// the source becomes the working space and the target the monitor profile.
#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "cli/imageio/Image.h"
#include "host/CString.h"

class CColorManager;

namespace teskcolor {

// From `source` into the working space with `intent`, decided once and
// applied to any number of images or bands.
class CIntentConversion {
public:
    CIntentConversion(CColorManager& manager, const std::vector<uint8_t>& source, int intent);
    // Converts the RGB pixels of `image` in place and tags it with the
    // working-space profile. The working space is as it was afterwards, so
    // conversions of other files may come between two calls.
    void Apply(SImage& image) const;

private:
    CColorManager& m_manager;
    std::vector<uint8_t> m_target;
    std::wstring m_sourceName, m_targetName;
    CString m_workingSpace;
    int m_intent;
};

}  // namespace teskcolor
