// What a profile file itself holds, read by Little CMS beside the module's own
// analysis: tone curves, colorants and chromatic adaptation as stored, and why
// a file is not a usable profile.
#pragma once
#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace teskcolor {

// Why the bytes are not an ICC profile at all ("not an ICC profile: no 'acsp'
// signature", "truncated: header says N bytes, file has M"); "" when the
// header is sound.
std::string ProfileRefusalReason(const std::vector<uint8_t>& bytes);

// The file's values as stored, or null when Little CMS cannot open it.
nlohmann::ordered_json ProfileFileValues(const std::vector<uint8_t>& bytes);

// For a valid profile the colour manager's image transforms cannot use (named
// colour, device link, abstract): what it is; "" for any other profile.
std::string NonImageProfileKind(const std::vector<uint8_t>& bytes);

}  // namespace teskcolor
