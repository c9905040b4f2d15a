// The profiles, intents and flags of a colour transform, and the lcms2
// transforms made from them: one per (input format, output format) pair,
// made on first use and shared by every handle with the same chain.
#pragma once
#include <windows.h>

#include <icm.h>
#include <lcms2.h>

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <tuple>
#include <utility>
#include <vector>

namespace tesk::mscms {

// One place of a profile in the lcms2 profile list. A profile between two
// others serves first as destination and then as source, so it appears twice.
struct ProfileUse {
    size_t profile = 0;  // index into ChainKey::profiles
    cmsUInt32Number intent = INTENT_PERCEPTUAL;
    bool operator==(const ProfileUse&) const = default;
};

struct ChainKey {
    std::vector<std::vector<uint8_t>> profiles;
    std::vector<ProfileUse> uses;
    cmsUInt32Number lcmsFlags = 0;  // precision, gamut check, black-point compensation
    uint64_t hash = 0;              // of all the above; set by Seal()
    // Derived from the profiles: what the transform takes and gives.
    cmsColorSpaceSignature entrySpace = cmsSigRgbData;
    cmsColorSpaceSignature exitSpace = cmsSigRgbData;

    void Seal();
    bool operator==(const ChainKey& other) const;
};

// A profile of the Windows list with the intent it is used with on each side.
struct ChainMember {
    std::vector<uint8_t> bytes;
    DWORD intentAsDestination = INTENT_PERCEPTUAL;
    DWORD intentAsSource = INTENT_PERCEPTUAL;
};

// Lays `members` out as an lcms2 profile list, checking that each profile
// takes the colour space the previous one gives. False with `error` set
// (ERROR_INVALID_PROFILE, ERROR_COLORSPACE_MISMATCH, ERROR_INVALID_PARAMETER).
bool MakeChainKey(std::vector<ChainMember> members, DWORD windowsFlags, ChainKey& key, DWORD& error);

class LcmsTransform {
public:
    explicit LcmsTransform(cmsHTRANSFORM handle) : handle_(handle) {}
    ~LcmsTransform() { cmsDeleteTransform(handle_); }
    LcmsTransform(const LcmsTransform&) = delete;
    LcmsTransform& operator=(const LcmsTransform&) = delete;
    cmsHTRANSFORM Get() const { return handle_; }

private:
    cmsHTRANSFORM handle_;
};

class EightBitPath;

class ChainTransforms {
public:
    explicit ChainTransforms(ChainKey key);

    const ChainKey& Key() const { return key_; }
    cmsColorSpaceSignature EntrySpace() const { return key_.entrySpace; }
    cmsColorSpaceSignature ExitSpace() const { return key_.exitSpace; }

    // The lcms2 transform for this pair of formats, made on first use, with
    // `extraFlags` added to the chain's own. Null when lcms2 refuses it, with
    // `error` (if given) ERROR_INVALID_PROFILE when a profile cannot be read,
    // else ERROR_INVALID_TRANSFORM. Safe to call from several threads.
    std::shared_ptr<LcmsTransform> For(cmsUInt32Number inputFormat, cmsUInt32Number outputFormat,
                                       DWORD* error = nullptr, cmsUInt32Number extraFlags = 0);

    // The platform's own path for this pair of 8-bit formats, made on first
    // use; null where lcms2 is the path. Safe to call from several threads.
    std::shared_ptr<const EightBitPath> EightBitPathFor(cmsUInt32Number inputFormat, cmsUInt32Number outputFormat);

    // The pair of 8-bit (or, for PCS ends, 16-bit) formats most callers use;
    // making it proves that the profiles can be joined.
    std::pair<cmsUInt32Number, cmsUInt32Number> UsualFormats() const;

private:
    ChainKey key_;
    std::mutex mutex_;
    std::map<std::tuple<cmsUInt32Number, cmsUInt32Number, cmsUInt32Number>, std::shared_ptr<LcmsTransform>>
        transforms_;
    std::mutex eightBitMutex_;
    std::map<std::pair<cmsUInt32Number, cmsUInt32Number>, std::shared_ptr<const EightBitPath>> eightBitPaths_;
};

}  // namespace tesk::mscms
