// Separation of an image file a band of rows at a time, written as it goes:
// a large image never sits whole in memory, and its pages are not faulted in
// and zeroed once for the input and again for every output.
#pragma once
#include <string>
#include <vector>

class CColorManager;
class CStatusControl;

namespace teskcolor {

// The four plates named from `pattern` as PlatePaths names them; all four or
// none. Returns their paths.
std::vector<std::string> SeparateFileToPlates(CColorManager& manager, const std::string& input,
                                              const std::string& pattern, bool invert, CStatusControl* status);
// One CMYK file (ink amounts) carrying the CMYK profile; 8 bits a channel, or 16.
void SeparateFileToPacked(CColorManager& manager, const std::string& input, const std::string& output,
                          bool sixteenBit, CStatusControl* status);

}  // namespace teskcolor
