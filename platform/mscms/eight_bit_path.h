// The platform's own paths for 8-bit pixels, used where they give lcms2's
// hi-res result to within one code value at a fraction of its cost: 8-bit
// input through a colour lookup table (RGB to CMYK, CMYK to RGB) and 8-bit
// matrix-shaper RGB to RGB. Everything else stays with lcms2.
#pragma once
#include <lcms2.h>

#include <cstddef>
#include <cstdint>
#include <memory>

namespace tesk::mscms {

class ChainTransforms;

// Where the bytes of a pixel are: colour channels in lcms2's order at
// `offsets`, then, when `hasExtra`, one byte that is not colour, last.
struct PixelBytes {
    unsigned channels = 0;
    unsigned size = 0;
    unsigned offsets[4] = {};
    bool hasExtra = false;
};

// The layout of an 8-bit lcms2 format a fast path takes; false for others.
bool EightBitPixelBytes(cmsUInt32Number format, PixelBytes& bytes);

class EightBitPath {
public:
    virtual ~EightBitPath() = default;
    // `count` pixels from `in` to `out`, one pixel after another, each read
    // whole before it is written: in place works wherever it does for lcms2.
    virtual void Run(const uint8_t* in, uint8_t* out, size_t count) const = 0;
};

// Null where lcms2 stays the path: formats other than the 8-bit ones above,
// a gamut check, or a chain that is neither of the two kinds.
std::unique_ptr<EightBitPath> MakeEightBitPath(ChainTransforms& chain, cmsUInt32Number inputFormat,
                                               cmsUInt32Number outputFormat);

// Interpolation in a grid sampled once from lcms2's transform of `chain`,
// which takes 3 or 4 channels and gives 3 or 4; made by MakeEightBitPath.
std::unique_ptr<EightBitPath> MakeClutPath(ChainTransforms& chain, const PixelBytes& in, const PixelBytes& out);

// Whether to run the AVX2 code: the CPU has it (asked once) and
// TESK_TRANSLATE_SIMD=sse2 does not ask for the baseline code, as tests and
// benchmarks of that code do.
bool UseAvx2();

}  // namespace tesk::mscms
