// How image files are encoded: TIFF compression, JPEG quality, and whether the
// profile goes into the file. A run chooses once (--compression, --quality,
// --no-embed) and every file it writes follows.
#pragma once
#include <cstdint>
#include <optional>
#include <string>

namespace teskcolor {

enum class ETiffCompression { None, Lzw, Deflate, Zstd };

struct SEncoding {
    // Deflate with the horizontal predictor: a packed CMYK chart shrinks from
    // 96 MB to 1.7 MB for half a second more; LZW and zstd are larger or rarer.
    ETiffCompression tiffCompression = ETiffCompression::Deflate;
    int jpegQuality = 92;
    bool embedProfile = true;
};

inline constexpr const char* kTiffCompressionNames[4] = {"none", "lzw", "deflate", "zstd"};
std::optional<ETiffCompression> TiffCompressionNamed(const std::string& name);
// Whether this build of libtiff has the codec (zstd is optional there).
bool CanWriteTiffCompression(ETiffCompression compression);
uint16_t TiffCompressionTag(ETiffCompression compression);

// What SWriteOptions start from.
const SEncoding& RunEncoding();
SEncoding& ChangeRunEncoding();

}  // namespace teskcolor
