// The readers and writers of each file format. Readers take a whole file in
// memory or a path; both report a bad file as CCliError(Corrupt/Unsupported)
// with one line of text and never read outside the data they were given.
#pragma once
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "cli/imageio/Image.h"
#include "cli/imageio/ImageBands.h"

class CStatusControl;

namespace teskcolor {

SImage ReadTiffFile(const std::string& path, const SReadOptions& options, CStatusControl* status);
SImageHeader ReadTiffHeader(const std::string& path, const SReadOptions& options);
SImage ReadTiffMemory(const uint8_t* data, size_t size, const SReadOptions& options);
void WriteTiff(const std::string& path, const SImage& image, const SWriteOptions& options, CStatusControl* status);
// Null, with the header still filled, for a TIFF that has to be read whole
// (tiles, separate planes) and when only the header is asked for.
std::unique_ptr<IImageRowSource> OpenTiffRowSource(const std::string& path, const SReadOptions& options,
                                                   SImageHeader& header);
// Whether a TIFF of this image is past what 32-bit offsets reach (BigTIFF then).
bool NeedsBigTiff(const SImageHeader& header);
std::unique_ptr<IImageBandWriter> OpenTiffBandWriter(const std::string& path, const SImageHeader& header,
                                                   const SWriteOptions& options);

SImage ReadPngFile(const std::string& path, const SReadOptions& options, CStatusControl* status);
SImageHeader ReadPngHeader(const std::string& path, const SReadOptions& options);
SImage ReadPngMemory(const uint8_t* data, size_t size, const SReadOptions& options);
void WritePng(const std::string& path, const SImage& image, const SWriteOptions& options, CStatusControl* status);

SImage ReadJpegFile(const std::string& path, const SReadOptions& options, CStatusControl* status);
// The header and the embedded profile only, without the pixels.
SImageHeader ReadJpegHeader(const std::string& path, const SReadOptions& options);
SImage ReadJpegMemory(const uint8_t* data, size_t size, const SReadOptions& options);
void WriteJpeg(const std::string& path, const SImage& image, const SWriteOptions& options, CStatusControl* status);

}  // namespace teskcolor
