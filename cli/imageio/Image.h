// An image as the command-line host holds it between files and the module:
// pixels in the imaging library's layouts plus the embedded ICC profile.
#pragma once
#include <cstdint>
#include <string>
#include <vector>

#include "cli/imageio/Encoding.h"
#include "host/imaging/RowIterator.h"

namespace teskcolor {

enum class EImageType { Tiff, Png, Jpeg };

// Pixel layouts used: 5/10 grey, 6/11 grey+alpha, 7/12 B,G,R, 8/13 B,G,R,A.
// A CMYK image keeps C,M,Y,K (ink amounts, 0 = no ink) in format 8 or 13.
struct SImage {
    CRowIterator pixels;
    bool cmyk = false;
    std::vector<uint8_t> iccProfile;  // empty when the file carries none
};

// An image without its pixels: what a file of it needs before the first row.
struct SImageHeader {
    int width = 0, height = 0;
    EVPixelFormat format = VPF_UNKNOWN;
    bool cmyk = false;
    std::vector<uint8_t> iccProfile;
    // Grey samples that are ink amounts (0 = no ink): a TIFF records them as
    // PhotometricInterpretation MinIsWhite, which readers turn back into grey.
    bool inkAmounts = false;
};

long long DefaultPixelBudget();

struct SReadOptions {
    // Larger images are refused before any pixel memory is taken.
    long long maxPixels = DefaultPixelBudget();
    // Set by the readers of headers: no pixel memory is taken, so no size is refused.
    bool headerOnly = false;
};

class COutputTransaction;

// What a TIFF's samples hold: the image's own, 32-bit floating point (0..1),
// or ICC L*a*b* (D50) of the image's depth, converted from its profile.
enum class ETiffSamples { AsImage, Float, Lab };

struct SWriteOptions {
    SEncoding encoding = RunEncoding();
    ETiffSamples tiffSamples = ETiffSamples::AsImage;
    // Set: the file becomes visible when the transaction commits, with the others.
    COutputTransaction* transaction = nullptr;
};

// Short name of an image's layout for messages: "8-bit RGB", "16-bit CMYK", ...
std::string DescribeLayout(const SImage& image);
std::string DescribeLayout(EVPixelFormat format, bool cmyk);

}  // namespace teskcolor
