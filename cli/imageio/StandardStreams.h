// "-" as a file name: an image read from standard input or written to
// standard output. Input is taken whole into memory and told by its bytes;
// output needs --format, is written complete to a private temporary first,
// and never goes to a terminal. While standard output carries an image,
// everything the program prints goes to standard error instead.
#pragma once
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "cli/imageio/Image.h"

namespace teskcolor {

bool IsStandardStream(const std::string& path);
// What "-" reads as in messages.
inline constexpr const char* kStandardInputName = "standard input";

// All of standard input, read once; refused (CCliError) from a terminal or
// past what an image within `maxPixels` can take.
const std::vector<uint8_t>& StandardInputBytes(long long maxPixels);

// --format: the format of an image written to "-" (and of files named for
// the user, as --output-dir does).
void SetStandardOutputFormat(EImageType type);
std::optional<EImageType> ChosenOutputFormat();
// The chosen format; throws CCliError(Usage) when none was given.
EImageType StandardOutputFormat();

// Takes standard output for the image bytes and sends the program's own
// printing to standard error. Throws CCliError(Usage) when standard output
// is a terminal. Further calls do nothing.
void ClaimStandardOutput();
// Copies a completed file to the claimed standard output.
void CopyToStandardOutput(const std::string& path);

}  // namespace teskcolor
