#include "transform_chain.h"

#include <windows.h>

#include <cstring>

#include <tesk/big_endian.h>

#include "profile_validity.h"

namespace tesk::mscms {
namespace {

// A fast 64-bit mix over 8-byte words: the cache key must cost far less than
// building a transform, and a full comparison guards against collisions.
uint64_t Mix(uint64_t hash, uint64_t word) {
    hash ^= word;
    hash *= 0x9E3779B97F4A7C15ull;
    return hash ^ (hash >> 29);
}

uint64_t HashBytes(uint64_t hash, const uint8_t* data, size_t size) {
    size_t i = 0;
    for (; i + 8 <= size; i += 8) {
        uint64_t word;
        std::memcpy(&word, data + i, 8);
        hash = Mix(hash, word);
    }
    uint64_t tail = 0;
    std::memcpy(&tail, data + i, size - i);
    return Mix(Mix(hash, tail), size);
}

struct HeaderInfo {
    cmsProfileClassSignature deviceClass;
    cmsColorSpaceSignature space;
    cmsColorSpaceSignature pcs;
};

constexpr size_t kHeaderSize = 128;

HeaderInfo ReadHeader(const std::vector<uint8_t>& bytes) {
    const BigEndianReader header(bytes);
    return {static_cast<cmsProfileClassSignature>(header.U32(12)),
            static_cast<cmsColorSpaceSignature>(header.U32(16)),
            static_cast<cmsColorSpaceSignature>(header.U32(20))};
}

bool IsPcs(cmsColorSpaceSignature space) { return space == cmsSigXYZData || space == cmsSigLabData; }

// USE_RELATIVE_COLORIMETRIC: the white point is not preserved, so a leg asked
// for absolute colorimetric is made relative colorimetric.
cmsUInt32Number LcmsIntent(DWORD intent, DWORD windowsFlags) {
    if (intent == INTENT_ABSOLUTE_COLORIMETRIC && (windowsFlags & USE_RELATIVE_COLORIMETRIC))
        return INTENT_RELATIVE_COLORIMETRIC;
    return intent;
}

cmsUInt32Number PrecisionFlags(DWORD windowsFlags) {
    switch (windowsFlags & 0xFFFF) {
    case BEST_MODE: return cmsFLAGS_HIGHRESPRECALC;
    case PROOF_MODE: return cmsFLAGS_LOWRESPRECALC;
    default: return 0;  // NORMAL_MODE, and lcms2's own choice for anything else
    }
}

}  // namespace

void ChainKey::Seal() {
    uint64_t h = 0x243F6A8885A308D3ull;
    for (const auto& profile : profiles) h = HashBytes(h, profile.data(), profile.size());
    for (const ProfileUse& use : uses) h = Mix(Mix(h, use.profile), use.intent);
    hash = Mix(h, lcmsFlags);
}

bool ChainKey::operator==(const ChainKey& other) const {
    return hash == other.hash && lcmsFlags == other.lcmsFlags && uses == other.uses && profiles == other.profiles;
}

bool MakeChainKey(std::vector<ChainMember> members, DWORD windowsFlags, ChainKey& key, DWORD& error) {
    key = {};
    if (members.empty()) {
        error = ERROR_INVALID_PARAMETER;
        return false;
    }
    for (const ChainMember& member : members) {
        if (member.intentAsDestination > INTENT_ABSOLUTE_COLORIMETRIC ||
            member.intentAsSource > INTENT_ABSOLUTE_COLORIMETRIC) {
            error = ERROR_INVALID_PARAMETER;
            return false;
        }
        // Signatures outside ICC.1 never become lcms2's enumerations.
        const BigEndianReader header(member.bytes);
        if (header.Size() < kHeaderSize || !IsKnownClass(header.U32(12)) || !IsKnownColorSpace(header.U32(16)) ||
            !IsKnownColorSpace(header.U32(20))) {
            error = ERROR_INVALID_PROFILE;
            return false;
        }
    }

    // Walk the list as lcms2 will: the first device profile is a source, a
    // later one is a destination when the data arrive in the connection
    // space, and a profile between two others is then a source again.
    cmsColorSpaceSignature current{};
    for (size_t i = 0; i < members.size(); ++i) {
        const HeaderInfo info = ReadHeader(members[i].bytes);
        const bool isLink = info.deviceClass == cmsSigLinkClass;
        const bool isAbstract = info.deviceClass == cmsSigAbstractClass;
        const bool isLast = i + 1 == members.size();
        auto use = [&](DWORD intent) { key.uses.push_back({i, LcmsIntent(intent, windowsFlags)}); };

        if (i == 0) {
            if (members.size() == 1 && !isLink && !isAbstract) {
                error = ERROR_INVALID_PARAMETER;  // one profile must be a device link
                return false;
            }
            key.entrySpace = info.space;
            use(members[i].intentAsSource);
            current = info.pcs;
            continue;
        }
        if (isLink || isAbstract) {
            if (isLink ? current != info.space : !IsPcs(current)) {
                error = ERROR_COLORSPACE_MISMATCH;
                return false;
            }
            use(members[i].intentAsSource);
            current = info.pcs;
        } else if (IsPcs(current)) {
            use(members[i].intentAsDestination);
            current = info.space;
            // Device data go on through the profile again, unless a device
            // link that takes them as they are comes next.
            const bool linkFollows = !isLast && ReadHeader(members[i + 1].bytes).deviceClass == cmsSigLinkClass;
            if (!isLast && !linkFollows && !IsPcs(info.space)) {
                use(members[i].intentAsSource);
                current = info.pcs;
            }
        } else if (current == info.space) {
            use(members[i].intentAsSource);
            current = info.pcs;
        } else {
            error = ERROR_COLORSPACE_MISMATCH;
            return false;
        }
    }
    key.exitSpace = current;

    key.lcmsFlags = PrecisionFlags(windowsFlags);
    if (windowsFlags & TESK_BLACK_POINT_COMPENSATION) key.lcmsFlags |= cmsFLAGS_BLACKPOINTCOMPENSATION;
    // Gamut checking marks what the last profile cannot reproduce with
    // lcms2's alarm colour; it needs that profile as a destination.
    if (windowsFlags & ENABLE_GAMUT_CHECKING) {
        const HeaderInfo last = ReadHeader(members.back().bytes);
        if (last.deviceClass == cmsSigLinkClass || last.deviceClass == cmsSigAbstractClass ||
            key.uses.size() < 2) {
            error = ERROR_INVALID_PARAMETER;
            return false;
        }
        key.lcmsFlags |= cmsFLAGS_GAMUTCHECK;
    }
    key.profiles.reserve(members.size());
    for (ChainMember& member : members) key.profiles.push_back(std::move(member.bytes));
    key.Seal();
    return true;
}

ChainTransforms::ChainTransforms(ChainKey key) : key_(std::move(key)) {}

std::pair<cmsUInt32Number, cmsUInt32Number> ChainTransforms::UsualFormats() const {
    auto usual = [](cmsColorSpaceSignature space) -> cmsUInt32Number {
        switch (space) {
        case cmsSigRgbData: return TYPE_BGR_8;
        case cmsSigCmykData: return TYPE_CMYK_8;
        case cmsSigGrayData: return TYPE_GRAY_8;
        case cmsSigLabData: return TYPE_Lab_16;
        case cmsSigXYZData: return TYPE_XYZ_16;
        default:
            return COLORSPACE_SH(PT_ANY) | CHANNELS_SH(cmsChannelsOf(space)) | BYTES_SH(2);
        }
    };
    return {usual(key_.entrySpace), usual(key_.exitSpace)};
}

std::shared_ptr<LcmsTransform> ChainTransforms::For(cmsUInt32Number inputFormat, cmsUInt32Number outputFormat,
                                                    DWORD* error, cmsUInt32Number extraFlags) {
    std::lock_guard lock(mutex_);
    const auto key = std::make_tuple(inputFormat, outputFormat, extraFlags);
    auto& slot = transforms_[key];
    if (slot) return slot;

    std::vector<cmsHPROFILE> opened;
    for (const auto& bytes : key_.profiles) {
        cmsHPROFILE profile = cmsOpenProfileFromMem(bytes.data(), static_cast<cmsUInt32Number>(bytes.size()));
        if (!profile) break;
        opened.push_back(profile);
    }
    cmsHTRANSFORM made = nullptr;
    if (opened.size() == key_.profiles.size()) {
        std::vector<cmsHPROFILE> list;
        std::vector<cmsUInt32Number> intents;
        std::vector<cmsBool> blackPoint(key_.uses.size(),
                                        (key_.lcmsFlags & cmsFLAGS_BLACKPOINTCOMPENSATION) ? TRUE : FALSE);
        std::vector<cmsFloat64Number> adaptation(key_.uses.size(), 1.0);
        for (const ProfileUse& use : key_.uses) {
            list.push_back(opened[use.profile]);
            intents.push_back(use.intent);
        }
        cmsUInt32Number flags = key_.lcmsFlags | extraFlags;
        if (T_EXTRA(inputFormat) && T_EXTRA(outputFormat)) flags |= cmsFLAGS_COPY_ALPHA;
        const bool gamut = flags & cmsFLAGS_GAMUTCHECK;
        made = cmsCreateExtendedTransform(nullptr, static_cast<cmsUInt32Number>(list.size()), list.data(),
                                          blackPoint.data(), intents.data(), adaptation.data(),
                                          gamut ? list.back() : nullptr,
                                          gamut ? static_cast<cmsUInt32Number>(list.size() - 1) : 0,
                                          inputFormat, outputFormat, flags);
    }
    const bool allOpened = opened.size() == key_.profiles.size();
    for (cmsHPROFILE profile : opened) cmsCloseProfile(profile);
    if (!made) {
        if (error) *error = allOpened ? ERROR_INVALID_TRANSFORM : ERROR_INVALID_PROFILE;
        transforms_.erase(key);
        return nullptr;
    }
    slot = std::make_shared<LcmsTransform>(made);
    return slot;
}

}  // namespace tesk::mscms
