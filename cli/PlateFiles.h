// File names of the four plates: "out/chart.tif" stands for
// out/chart-cyan.tif, -magenta, -yellow and -black.
#pragma once
#include <array>
#include <string>
#include <vector>

#include "cli/imageio/Image.h"

class CStatusControl;

namespace teskcolor {

inline constexpr const char* kInkNames[4] = {"cyan", "magenta", "yellow", "black"};

std::array<std::string, 4> PlatePaths(const std::string& pattern);
class COutputTransaction;

// Writes the four plates into `transaction`: they appear when it commits.
std::vector<std::string> WritePlates(const std::string& pattern, const std::array<SImage, 4>& plates,
                                     COutputTransaction& transaction, CStatusControl* status);

}  // namespace teskcolor
