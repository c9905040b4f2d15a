#include "gamut_check.h"

#include <windows.h>

#include <algorithm>
#include <cstring>
#include <future>

#include <tesk/big_endian.h>

#include "transform_chain.h"

namespace tesk::mscms {
namespace {

constexpr cmsUInt32Number kCheckedFormat = TYPE_Lab_16;
constexpr unsigned kCheckedChannels = 3;
// The two alarm colours differ in every channel, so the first one decides.
constexpr uint16_t kFirstAlarm = 0;
constexpr uint16_t kSecondAlarm = 0xFFFF;

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

struct MadeSide {
    cmsContext context = nullptr;
    cmsHTRANSFORM transform = nullptr;
    DWORD error = ERROR_SUCCESS;
};

// The chain up to the connection space, then Lab in place of the last
// profile: lcms2 checks the colour reaching the connection space against
// the last profile, and Lab is the cheapest way out.
MadeSide MakeSide(const ChainKey& key, cmsUInt32Number inputFormat, uint16_t alarmValue) {
    MadeSide side;
    side.context = cmsCreateContext(nullptr, nullptr);
    if (!side.context) {
        side.error = ERROR_NOT_ENOUGH_MEMORY;
        return side;
    }
    cmsUInt16Number alarm[cmsMAXCHANNELS];
    std::fill(std::begin(alarm), std::end(alarm), alarmValue);
    cmsSetAlarmCodesTHR(side.context, alarm);

    std::vector<cmsHPROFILE> opened;
    for (const auto& bytes : key.profiles) {
        cmsHPROFILE profile =
            cmsOpenProfileFromMemTHR(side.context, bytes.data(), static_cast<cmsUInt32Number>(bytes.size()));
        if (!profile) break;
        opened.push_back(profile);
    }
    cmsHPROFILE lab = cmsCreateLab4ProfileTHR(side.context, nullptr);
    const bool allOpened = opened.size() == key.profiles.size();
    if (allOpened && lab) {
        std::vector<cmsHPROFILE> list;
        std::vector<cmsUInt32Number> intents;
        for (size_t i = 0; i + 1 < key.uses.size(); ++i) {
            list.push_back(opened[key.uses[i].profile]);
            intents.push_back(key.uses[i].intent);
        }
        list.push_back(lab);
        intents.push_back(INTENT_RELATIVE_COLORIMETRIC);
        std::vector<cmsBool> blackPoint(list.size(), (key.lcmsFlags & cmsFLAGS_BLACKPOINTCOMPENSATION) ? TRUE : FALSE);
        std::vector<cmsFloat64Number> adaptation(list.size(), 1.0);
        side.transform = cmsCreateExtendedTransform(
            side.context, static_cast<cmsUInt32Number>(list.size()), list.data(), blackPoint.data(), intents.data(),
            adaptation.data(), opened[key.uses.back().profile], static_cast<cmsUInt32Number>(list.size() - 1),
            inputFormat, kCheckedFormat, key.lcmsFlags | cmsFLAGS_GAMUTCHECK);
    }
    for (cmsHPROFILE profile : opened) cmsCloseProfile(profile);
    if (lab) cmsCloseProfile(lab);
    if (!side.transform) side.error = allOpened ? ERROR_INVALID_TRANSFORM : ERROR_INVALID_PROFILE;
    return side;
}

}  // namespace

GamutCheck::Scratch::Scratch(uint32_t width, size_t bytesPerPixel)
    : first(size_t{width} * kCheckedChannels), second(size_t{width} * kCheckedChannels),
      marked(size_t{width} * bytesPerPixel), where(width) {}

std::unique_ptr<GamutCheck> GamutCheck::Make(const ChainTransforms& chain, cmsUInt32Number inputFormat,
                                             size_t bytesPerPixel, DWORD& error) {
    const ChainKey& key = chain.Key();
    if (!EndsInDeviceGamut(key)) {
        error = ERROR_INVALID_TRANSFORM;
        return nullptr;
    }
    std::unique_ptr<GamutCheck> check(new GamutCheck);
    check->bytesPerPixel_ = bytesPerPixel;
    // Building a gamut check samples the profiles for a while: the two sides
    // are built side by side.
    auto second = std::async(std::launch::async, [&] { return MakeSide(key, inputFormat, kSecondAlarm); });
    const MadeSide first = MakeSide(key, inputFormat, kFirstAlarm);
    check->first_ = {first.context, first.transform};
    const MadeSide made = second.get();
    check->second_ = {made.context, made.transform};
    if (first.error != ERROR_SUCCESS || made.error != ERROR_SUCCESS) {
        error = first.error != ERROR_SUCCESS ? first.error : made.error;
        return nullptr;
    }
    return check;
}

GamutCheck::~GamutCheck() {
    for (Side* side : {&first_, &second_}) {
        if (side->transform) cmsDeleteTransform(side->transform);
        if (side->context) cmsDeleteContext(side->context);
    }
}

void GamutCheck::Run(const uint8_t* pixels, uint8_t* results, uint32_t count, Scratch& scratch) const {
    cmsDoTransform(first_.transform, pixels, scratch.first.data(), count);
    uint32_t marked = 0;
    for (uint32_t i = 0; i < count; ++i) {
        const bool alarm = scratch.first[size_t{i} * kCheckedChannels] == kFirstAlarm;
        results[i] = 0;
        if (!alarm) continue;
        std::memcpy(&scratch.marked[marked * bytesPerPixel_], pixels + i * bytesPerPixel_, bytesPerPixel_);
        scratch.where[marked++] = i;
    }
    if (marked == 0) return;
    cmsDoTransform(second_.transform, scratch.marked.data(), scratch.second.data(), marked);
    for (uint32_t j = 0; j < marked; ++j)
        if (scratch.second[size_t{j} * kCheckedChannels] == kSecondAlarm) results[scratch.where[j]] = 255;
}

std::shared_ptr<const GamutCheck> GamutChecks::For(const ChainTransforms& chain, cmsUInt32Number inputFormat,
                                                   size_t bytesPerPixel, DWORD& error) {
    std::lock_guard lock(mutex_);
    if (auto found = checks_.find(inputFormat); found != checks_.end()) return found->second;
    std::shared_ptr<const GamutCheck> made = GamutCheck::Make(chain, inputFormat, bytesPerPixel, error);
    if (made) checks_.emplace(inputFormat, made);
    return made;
}

}  // namespace tesk::mscms
