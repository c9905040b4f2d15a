// What CheckBitmapBits needs of a transform: lcms2's gamut check against the
// transform's last profile, made on first use for each input format.
#pragma once
#include <icm.h>
#include <lcms2.h>

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>

namespace tesk::mscms {

class ChainTransforms;

// lcms2 only reports a gamut check through its alarm colour, which an
// in-gamut colour may equal. The same chain is therefore built twice, in two
// contexts with opposite alarm colours: a pixel is out of gamut exactly when
// the two results differ, since an in-gamut pixel gives the same colour in
// both and an out-of-gamut one the two alarm colours.
class GamutCheck {
public:
    // Null when lcms2 refuses the chain, with `error` set.
    static std::unique_ptr<GamutCheck> Make(const ChainTransforms& chain, cmsUInt32Number inputFormat,
                                            DWORD& error);
    ~GamutCheck();
    GamutCheck(const GamutCheck&) = delete;
    GamutCheck& operator=(const GamutCheck&) = delete;

    // One result byte per pixel: 0 in gamut, 255 out. `scratch` holds
    // 2 x 3 x `count` 16-bit values; each thread brings its own.
    void Run(const uint8_t* pixels, uint8_t* results, uint32_t count, uint16_t* scratch) const;

private:
    GamutCheck() = default;
    struct Side {
        cmsContext context = nullptr;
        cmsHTRANSFORM transform = nullptr;
    };
    Side low_, high_;
};

// A transform handle's gamut checks, one per input format.
class GamutChecks {
public:
    std::shared_ptr<const GamutCheck> For(const ChainTransforms& chain, cmsUInt32Number inputFormat, DWORD& error);

private:
    std::mutex mutex_;
    std::map<cmsUInt32Number, std::shared_ptr<const GamutCheck>> checks_;
};

}  // namespace tesk::mscms
