// Names of profiles in the colour directory. A name given on the command line
// or made from a profile's description never reaches outside that directory,
// never hides a file, and never replaces another profile.
#pragma once
#include <cstdint>
#include <string>
#include <vector>

namespace teskcolor {

// Throws CCliError(Usage) for a name holding '/', '\\', "..", a control
// character, or starting with a dot.
void RequireSafeProfileName(const std::string& name);

// A file name made from a description: the characters that could make a
// path or hide the file are replaced, the length kept reasonable, and
// `extension` (".icc") appended. Never empty.
std::string ProfileFileNameFrom(const std::string& description, const std::string& extension);

// `fileName` in `folder`, or "name (2).icc", "name (3).icc", ... when another
// file holds that name already. A file with exactly `bytes` is reused.
std::string FreeProfilePath(const std::string& folder, const std::string& fileName, const std::vector<uint8_t>& bytes);

}  // namespace teskcolor
