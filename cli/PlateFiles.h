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

// The channels of a packed 8-bit CMYK image as four plates (ink amounts, or
// 255 = no ink with `invert`); all four or none. Returns their paths.
std::vector<std::string> WritePlatesOfPacked(const std::string& pattern, const SImage& cmyk, bool invert);

}  // namespace teskcolor
