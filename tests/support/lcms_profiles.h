// Profiles made by Little CMS, never by the code under test, for the tests
// to install or to compare against.
#pragma once
#include <lcms2.h>

#include <cstdint>
#include <string>
#include <vector>

namespace tesk::test {

using Bytes = std::vector<uint8_t>;

// The profile as lcms2 saves it to memory; closes `profile`.
Bytes SavedProfile(cmsHPROFILE profile);
Bytes SrgbProfileBytes();
// A grey profile with gamma 2.2 and a D50 white.
Bytes GreyProfileBytes();

// An RGB display profile (version 2, one-entry 'curv' TRCs of `gamma`) with
// Adobe RGB (1998) primaries and a D65 white; with a 'vcgt' tag of `vcgt`
// values (channels x entries, 16-bit) when given.
void WriteRgbProfile(const std::string& path, double gamma, const std::vector<uint16_t>& vcgt = {},
                     uint16_t vcgtChannels = 3);
void WriteSrgbProfile(const std::string& path);

}  // namespace tesk::test
