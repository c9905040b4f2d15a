// A profile's description as a version-2 'desc' tag carries it: the 7-bit
// ASCII part and the Unicode part, each holding the text in its own form.
#pragma once
#include <cstdint>
#include <string>
#include <vector>

namespace teskcolor {

// The profile `bytes` with its description replaced by `utf8`: characters
// outside ASCII become '?' in the ASCII part; the Unicode part holds the text
// exactly. Throws CCliError(Failed) when the profile cannot be rewritten.
std::vector<uint8_t> WithDescription(const std::vector<uint8_t>& bytes, const std::string& utf8);

}  // namespace teskcolor
