#include "eight_bit_path.h"

#include <cstdlib>
#include <cstring>
#include <new>

#include "transform_chain.h"

namespace tesk::mscms {

bool EightBitPixelBytes(cmsUInt32Number format, PixelBytes& bytes) {
    // Colour first, in memory order or reversed, then at most one extra byte.
    switch (format) {
    case TYPE_RGB_8: bytes = {3, 3, {0, 1, 2}, false}; return true;
    case TYPE_BGR_8: bytes = {3, 3, {2, 1, 0}, false}; return true;
    case TYPE_RGBA_8: bytes = {3, 4, {0, 1, 2}, true}; return true;
    case TYPE_BGRA_8: bytes = {3, 4, {2, 1, 0}, true}; return true;
    case TYPE_CMYK_8: bytes = {4, 4, {0, 1, 2, 3}, false}; return true;
    case TYPE_KYMC_8: bytes = {4, 4, {3, 2, 1, 0}, false}; return true;
    default: return false;
    }
}

bool UseAvx2() {
    static const bool avx2 = __builtin_cpu_supports("avx2");
    if (!avx2) return false;
    const char* simd = std::getenv("TESK_TRANSLATE_SIMD");
    return !simd || std::strcmp(simd, "sse2") != 0;
}

std::unique_ptr<EightBitPath> MakeEightBitPath(ChainTransforms& chain, cmsUInt32Number inputFormat,
                                               cmsUInt32Number outputFormat) {
    PixelBytes in, out;
    if (!EightBitPixelBytes(inputFormat, in) || !EightBitPixelBytes(outputFormat, out)) return nullptr;
    if (chain.Key().lcmsFlags & cmsFLAGS_GAMUTCHECK) return nullptr;
    const cmsColorSpaceSignature from = chain.EntrySpace(), to = chain.ExitSpace();
    if ((from == cmsSigRgbData && to == cmsSigCmykData) || (from == cmsSigCmykData && to == cmsSigRgbData))
        return MakeClutPath(chain, in, out);
    if (from == cmsSigRgbData && to == cmsSigRgbData)
        return MakeMatrixShaperPath(chain, inputFormat, outputFormat, in, out);
    return nullptr;
}

std::shared_ptr<const EightBitPath> ChainTransforms::EightBitPathFor(cmsUInt32Number inputFormat,
                                                                    cmsUInt32Number outputFormat) {
    std::lock_guard lock(eightBitMutex_);
    const auto key = std::make_pair(inputFormat, outputFormat);
    auto found = eightBitPaths_.find(key);
    if (found != eightBitPaths_.end()) return found->second;
    std::shared_ptr<const EightBitPath> path;
    try {
        path = MakeEightBitPath(*this, inputFormat, outputFormat);
        eightBitPaths_.emplace(key, path);
    } catch (const std::bad_alloc&) {
        return nullptr;  // lcms2 does the work; the tables are tried again next time
    }
    return path;
}

}  // namespace tesk::mscms
