// What CheckBitmapBits needs of a transform: lcms2's gamut check against the
// transform's last profile, made on first use for each input format.
#pragma once
#include <windows.h>

#include <icm.h>
#include <lcms2.h>

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

namespace tesk::mscms {

class ChainTransforms;

// lcms2 only reports a gamut check through its alarm colour, which an
// in-gamut colour may equal. The same chain is therefore built twice, in two
// contexts with different alarm colours: a pixel is out of gamut exactly
// when both give their alarm colour, since an in-gamut pixel gives the same
// colour in both. The second is asked only about the pixels the first marks.
class GamutCheck {
public:
    // Work memory for one thread checking rows of up to `width` pixels.
    struct Scratch {
        Scratch(uint32_t width, size_t bytesPerPixel);
        std::vector<uint16_t> first, second;  // colours out of each side
        std::vector<uint8_t> marked;          // the input pixels the first side marked
        std::vector<uint32_t> where;          // and where they came from
    };

    // Null when lcms2 refuses the chain, with `error` set.
    static std::unique_ptr<GamutCheck> Make(const ChainTransforms& chain, cmsUInt32Number inputFormat,
                                            size_t bytesPerPixel, DWORD& error);
    ~GamutCheck();
    GamutCheck(const GamutCheck&) = delete;
    GamutCheck& operator=(const GamutCheck&) = delete;

    // One result byte per pixel: 0 in gamut, 255 out.
    void Run(const uint8_t* pixels, uint8_t* results, uint32_t count, Scratch& scratch) const;

private:
    GamutCheck() = default;
    struct Side {
        cmsContext context = nullptr;
        cmsHTRANSFORM transform = nullptr;
    };
    Side first_, second_;
    size_t bytesPerPixel_ = 0;
};

// A transform handle's gamut checks, one per input format.
class GamutChecks {
public:
    std::shared_ptr<const GamutCheck> For(const ChainTransforms& chain, cmsUInt32Number inputFormat,
                                          size_t bytesPerPixel, DWORD& error);

private:
    std::mutex mutex_;
    std::map<cmsUInt32Number, std::shared_ptr<const GamutCheck>> checks_;
};

}  // namespace tesk::mscms
