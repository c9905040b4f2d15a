// A profile's description and copyright, stored so that every reader gets the
// text back exactly.
#pragma once
#include <cstdint>
#include <string>
#include <vector>

namespace teskcolor {

// The profile `bytes` with its description and copyright replaced by the
// UTF-8 texts given. 7-bit texts keep a version-2 profile (the description's
// ASCII and Unicode parts both hold it); any other text makes the profile
// version 4, whose 'mluc' tags hold the texts as UTF-16, because lcms2 reads
// only the ASCII part of a version-2 description. Throws CCliError(Failed)
// when the profile cannot be rewritten.
std::vector<uint8_t> WithTexts(const std::vector<uint8_t>& bytes, const std::string& description,
                               const std::string& copyright);

}  // namespace teskcolor
