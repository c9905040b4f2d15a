// The platform's own paths for 8-bit pixels, used where they give lcms2's
// result to within one code value at a fraction of its cost: 8-bit input
// through a colour lookup table (RGB to CMYK, CMYK to RGB) and 8-bit
// matrix-shaper RGB to RGB. Everything else stays with lcms2.
#pragma once
#include <lcms2.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>

namespace tesk::mscms {

class ChainTransforms;
struct ChainKey;

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

// How output bytes are written: three colour bytes, four, or three and an
// extra byte copied from the input's extra byte or left as it was.
enum class Output { Three, Four, ExtraFromInput, ExtraKept };

inline Output OutputKind(const PixelBytes& in, const PixelBytes& out) {
    if (out.size == 3) return Output::Three;
    if (!out.hasExtra) return Output::Four;
    return in.hasExtra ? Output::ExtraFromInput : Output::ExtraKept;
}

// Writes one pixel's output bytes (colour in the low bytes of `bytes`).
template <Output kind>
inline void Store(const uint8_t* in, uint8_t* out, uint32_t bytes) {
    if constexpr (kind == Output::Three) {
        std::memcpy(out, &bytes, 2);
        out[2] = static_cast<uint8_t>(bytes >> 16);
        return;
    } else if constexpr (kind == Output::ExtraFromInput) {
        bytes = (bytes & 0xFFFFFF) | uint32_t{in[3]} << 24;  // both pixels are four bytes
    } else if constexpr (kind == Output::ExtraKept) {
        bytes = (bytes & 0xFFFFFF) | uint32_t{out[3]} << 24;
    }
    std::memcpy(out, &bytes, 4);
}

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

// RGB to RGB between two matrix-shaper profiles, in lcms2's integer steps;
// null unless it agrees with lcms2's own transform between these formats.
std::unique_ptr<EightBitPath> MakeMatrixShaperPath(ChainTransforms& chain, cmsUInt32Number inputFormat,
                                                   cmsUInt32Number outputFormat, const PixelBytes& in,
                                                   const PixelBytes& out);

// Whether the chain is two RGB matrix-shaper profiles that MakeMatrixShaperPath
// would take, before it builds and checks its tables.
bool JoinsTwoMatrixShapers(const ChainKey& key);

// Whether lcms2 is sure to join the chain's two matrix shapers: every
// colorant and curve reads and neither matrix is near singular.
bool MatrixShapersSurelyJoin(const ChainKey& key);

// Whether to run the AVX2 code: the CPU has it (asked once) and
// TESK_TRANSLATE_SIMD=sse2 does not ask for the baseline code, as tests and
// benchmarks of that code do.
bool UseAvx2();

}  // namespace tesk::mscms
