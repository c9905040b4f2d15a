#include "gamut_check.h"

#include <windows.h>

#include <algorithm>
#include <vector>

#include <tesk/big_endian.h>

#include "transform_chain.h"

namespace tesk::mscms {
namespace {

constexpr cmsUInt32Number kCheckedFormat = TYPE_Lab_16;
constexpr unsigned kCheckedChannels = 3;

// Only a device profile reached from the connection space has a gamut to
// check against: not a device link, not an abstract profile, and not a
// profile the chain leaves through its connection side.
bool EndsInDeviceGamut(const ChainKey& key) {
    if (key.uses.size() < 2) return false;
    const BigEndianReader header(key.profiles[key.uses.back().profile]);
    const uint32_t deviceClass = header.U32(12);
    return deviceClass != cmsSigLinkClass && deviceClass != cmsSigAbstractClass &&
           static_cast<cmsColorSpaceSignature>(header.U32(16)) == key.exitSpace;
}

}  // namespace

std::unique_ptr<GamutCheck> GamutCheck::Make(const ChainTransforms& chain, cmsUInt32Number inputFormat,
                                             DWORD& error) {
    const ChainKey& key = chain.Key();
    if (!EndsInDeviceGamut(key)) {
        error = ERROR_INVALID_TRANSFORM;
        return nullptr;
    }
    std::unique_ptr<GamutCheck> check(new GamutCheck);
    for (Side* side : {&check->low_, &check->high_}) {
        side->context = cmsCreateContext(nullptr, nullptr);
        if (!side->context) {
            error = ERROR_NOT_ENOUGH_MEMORY;
            return nullptr;
        }
        cmsUInt16Number alarm[cmsMAXCHANNELS];
        std::fill(std::begin(alarm), std::end(alarm), side == &check->low_ ? 0 : 0xFFFF);
        cmsSetAlarmCodesTHR(side->context, alarm);

        std::vector<cmsHPROFILE> opened;
        for (const auto& bytes : key.profiles) {
            cmsHPROFILE profile = cmsOpenProfileFromMemTHR(side->context, bytes.data(),
                                                           static_cast<cmsUInt32Number>(bytes.size()));
            if (!profile) break;
            opened.push_back(profile);
        }
        cmsHPROFILE lab = cmsCreateLab4ProfileTHR(side->context, nullptr);
        if (opened.size() == key.profiles.size() && lab) {
            // The chain up to the connection space, then Lab in place of the
            // last profile: lcms2 checks the colour reaching the connection
            // space against the last profile, and Lab is the cheapest way out.
            std::vector<cmsHPROFILE> list;
            std::vector<cmsUInt32Number> intents;
            for (size_t i = 0; i + 1 < key.uses.size(); ++i) {
                list.push_back(opened[key.uses[i].profile]);
                intents.push_back(key.uses[i].intent);
            }
            list.push_back(lab);
            intents.push_back(INTENT_RELATIVE_COLORIMETRIC);
            std::vector<cmsBool> blackPoint(list.size(),
                                            (key.lcmsFlags & cmsFLAGS_BLACKPOINTCOMPENSATION) ? TRUE : FALSE);
            std::vector<cmsFloat64Number> adaptation(list.size(), 1.0);
            side->transform = cmsCreateExtendedTransform(
                side->context, static_cast<cmsUInt32Number>(list.size()), list.data(), blackPoint.data(),
                intents.data(), adaptation.data(), opened[key.uses.back().profile],
                static_cast<cmsUInt32Number>(list.size() - 1), inputFormat, kCheckedFormat,
                key.lcmsFlags | cmsFLAGS_GAMUTCHECK);
        }
        const bool allOpened = opened.size() == key.profiles.size();
        for (cmsHPROFILE profile : opened) cmsCloseProfile(profile);
        if (lab) cmsCloseProfile(lab);
        if (!side->transform) {
            error = allOpened ? ERROR_INVALID_TRANSFORM : ERROR_INVALID_PROFILE;
            return nullptr;
        }
    }
    return check;
}

GamutCheck::~GamutCheck() {
    for (Side* side : {&low_, &high_}) {
        if (side->transform) cmsDeleteTransform(side->transform);
        if (side->context) cmsDeleteContext(side->context);
    }
}

void GamutCheck::Run(const uint8_t* pixels, uint8_t* results, uint32_t count, uint16_t* scratch) const {
    uint16_t* low = scratch;
    uint16_t* high = scratch + size_t{kCheckedChannels} * count;
    cmsDoTransform(low_.transform, pixels, low, count);
    cmsDoTransform(high_.transform, pixels, high, count);
    // The alarm colours differ in every channel, so the first one decides.
    for (uint32_t i = 0; i < count; ++i)
        results[i] = low[size_t{i} * kCheckedChannels] != high[size_t{i} * kCheckedChannels] ? 255 : 0;
}

std::shared_ptr<const GamutCheck> GamutChecks::For(const ChainTransforms& chain, cmsUInt32Number inputFormat,
                                                   DWORD& error) {
    std::lock_guard lock(mutex_);
    if (auto found = checks_.find(inputFormat); found != checks_.end()) return found->second;
    std::shared_ptr<const GamutCheck> made = GamutCheck::Make(chain, inputFormat, error);
    if (made) checks_.emplace(inputFormat, made);
    return made;
}

}  // namespace tesk::mscms
