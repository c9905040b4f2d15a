#include "cli/imageio/Encoding.h"

#include <tiffio.h>

namespace teskcolor {

namespace {
SEncoding g_encoding;
}  // namespace

std::optional<ETiffCompression> TiffCompressionNamed(const std::string& name) {
    for (int i = 0; i < 4; ++i)
        if (name == kTiffCompressionNames[i]) return ETiffCompression(i);
    return std::nullopt;
}

uint16_t TiffCompressionTag(ETiffCompression compression) {
    switch (compression) {
        case ETiffCompression::Lzw: return COMPRESSION_LZW;
        case ETiffCompression::Deflate: return COMPRESSION_ADOBE_DEFLATE;
        case ETiffCompression::Zstd: return COMPRESSION_ZSTD;
        case ETiffCompression::None: break;
    }
    return COMPRESSION_NONE;
}

bool CanWriteTiffCompression(ETiffCompression compression) {
    return TIFFIsCODECConfigured(TiffCompressionTag(compression)) != 0;
}

const SEncoding& RunEncoding() { return g_encoding; }
SEncoding& ChangeRunEncoding() { return g_encoding; }

}  // namespace teskcolor
