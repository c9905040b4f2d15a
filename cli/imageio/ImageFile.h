// Image files by name: the format is told by the file's first bytes when
// reading and by the extension when writing. "-" is standard input or output.
#pragma once
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "cli/imageio/Image.h"

class CStatusControl;

namespace teskcolor {

// By extension (.tif/.tiff, .png, .jpg/.jpeg, any case); nothing for others.
// "-" is standard output, in the format --format chose.
std::optional<EImageType> ImageTypeForPath(const std::string& path);
// By signature; nothing when the bytes are none of the three.
std::optional<EImageType> DetectImageType(const uint8_t* head, size_t size);

// Throws CCliError: NotFound for a missing file, Corrupt for a damaged one,
// Unsupported for a format or layout that is not handled.
SImage ReadImage(const std::string& path, CStatusControl* status = nullptr, const SReadOptions& options = {});
// The header and the embedded profile only: the pixels are not read.
SImageHeader ReadImageHeader(const std::string& path, const SReadOptions& options = {});
SImage ReadImageMemory(const uint8_t* data, size_t size, const SReadOptions& options = {});
// Writes through a temporary file; on failure the destination is untouched.
void WriteImage(const std::string& path, const SImage& image, CStatusControl* status = nullptr,
                const SWriteOptions& options = {});

}  // namespace teskcolor
