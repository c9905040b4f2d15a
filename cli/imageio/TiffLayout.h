// What a TIFF's tags say about its pixels, and how one of its rows becomes a
// row of the imaging library, shared by the whole-image and the banded reader.
#pragma once
#include <tiffio.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "cli/imageio/Image.h"

namespace teskcolor {

struct TiffCloser {
    void operator()(TIFF* tif) const { TIFFClose(tif); }
};
using TiffPtr = std::unique_ptr<TIFF, TiffCloser>;

struct STiffLayout {
    uint32_t width = 0, height = 0;
    uint16_t bits = 0, samples = 0, photometric = 0, planar = PLANARCONFIG_CONTIG;
    int colourChannels = 0;
    bool alpha = false;
    bool cmyk = false;
    // Float and Lab samples are read into 16-bit ones (TiffWideSamples).
    ETiffSamples samplesHeld = ETiffSamples::AsImage;
    bool signedLab = false;  // CIE Lab: a* and b* as signed numbers

    bool Wide() const { return samplesHeld != ETiffSamples::AsImage; }
    EVPixelFormat Format() const;
    bool SeparatePlanes() const { return planar == PLANARCONFIG_SEPARATE && samples > 1; }
};

// Throws CCliError (Corrupt, Unsupported) for tags that make no usable image.
STiffLayout ReadTiffLayout(TIFF* tif, const std::string& name, const SReadOptions& options);
// A row as the file stores it, in place: min-is-white inverted, R,G,B to B,G,R.
void ToImageRow(const STiffLayout& layout, uint8_t* row);
// The embedded ICC profile, taken as TakeEmbeddedProfile does; empty when
// there is none.
std::vector<uint8_t> TiffIccProfile(TIFF* tif, const std::string& name, const STiffLayout& layout);

[[noreturn]] void TiffCorrupt(const std::string& name, const std::string& what);

}  // namespace teskcolor
