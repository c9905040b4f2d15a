// CreateColorTransformW, CreateMultiProfileTransform, DeleteColorTransform,
// and the extensions a host asks for on every transform it creates.
#include <windows.h>

#include <icm.h>
#include <tesk/export_guard.h>

#include "profile_access.h"
#include "transform_cache.h"
#include "transform_handles.h"

#include <atomic>

namespace tesk::mscms {
namespace {

constexpr DWORD kExtensionFlags = TESK_BLACK_POINT_COMPENSATION;
std::atomic<DWORD> g_extensions{0};

HTRANSFORM MakeTransform(std::vector<ChainMember> members, DWORD flags) {
    ChainKey key;
    DWORD error = ERROR_SUCCESS;
    if (!MakeChainKey(std::move(members), flags | g_extensions.load(), key, error)) {
        SetLastError(error);
        return nullptr;
    }
    auto chain = AcquireChain(std::move(key), error);
    if (!chain) {
        SetLastError(error);
        return nullptr;
    }
    auto transform = std::make_shared<ColorTransform>();
    transform->chain = std::move(chain);
    return RegisterTransform(std::move(transform));
}

// The rendering intent a logical colour space asks for.
bool IntentOfLogColorSpace(LONG gamutMatch, DWORD& intent) {
    switch (gamutMatch) {
    case LCS_GM_IMAGES: intent = INTENT_PERCEPTUAL; return true;
    case LCS_GM_GRAPHICS: intent = INTENT_RELATIVE_COLORIMETRIC; return true;
    case LCS_GM_BUSINESS: intent = INTENT_SATURATION; return true;
    case LCS_GM_ABS_COLORIMETRIC: intent = INTENT_ABSOLUTE_COLORIMETRIC; return true;
    default: return false;
    }
}

}  // namespace
}  // namespace tesk::mscms

using namespace tesk::mscms;

// Source, then the target when proofing, then the destination. The proofing
// leg (target to destination) shows the target's paper white, i.e. absolute
// colorimetric, unless USE_RELATIVE_COLORIMETRIC asks otherwise.
HTRANSFORM WINAPI CreateColorTransformW(LPLOGCOLORSPACEW pLogColorSpace, HPROFILE hDestProfile,
                                        HPROFILE hTargetProfile, DWORD dwFlags) try {
    DWORD intent = 0;
    if (!pLogColorSpace || !IntentOfLogColorSpace(static_cast<LONG>(pLogColorSpace->lcsIntent), intent)) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    std::vector<ChainMember> members(1);
    if (!ProfileBytesFromLogColorSpace(*pLogColorSpace, members[0].bytes)) return nullptr;
    members[0].intentAsSource = intent;

    const DWORD proofIntent = INTENT_ABSOLUTE_COLORIMETRIC;
    if (hTargetProfile) {
        ChainMember target;
        if (!ProfileBytes(hTargetProfile, target.bytes)) return nullptr;
        target.intentAsDestination = intent;
        target.intentAsSource = proofIntent;
        members.push_back(std::move(target));
    }
    ChainMember destination;
    if (!ProfileBytes(hDestProfile, destination.bytes)) return nullptr;
    destination.intentAsDestination = hTargetProfile ? proofIntent : intent;
    members.push_back(std::move(destination));
    return MakeTransform(std::move(members), dwFlags);
} catch (...) {
    return tesk::FailAtBoundary(HTRANSFORM{});
}

// Any number of profiles with one intent each, or one intent for all. The
// preferred CMM is a hint; lcms2 is the only one.
HTRANSFORM WINAPI CreateMultiProfileTransform(PHPROFILE pahProfiles, DWORD nProfiles, PDWORD padwIntent,
                                              DWORD nIntents, DWORD dwFlags, DWORD /*indexPreferredCMM*/) try {
    // Little CMS chains at most 255 profiles; the count is checked before anything is allocated for it.
    constexpr DWORD kMostProfiles = 255;
    if (!pahProfiles || nProfiles == 0 || nProfiles > kMostProfiles || !padwIntent ||
        (nIntents != 1 && nIntents != nProfiles)) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    std::vector<ChainMember> members(nProfiles);
    for (DWORD i = 0; i < nProfiles; ++i) {
        if (!ProfileBytes(pahProfiles[i], members[i].bytes)) return nullptr;
        const DWORD intent = padwIntent[nIntents == 1 ? 0 : i];
        members[i].intentAsDestination = members[i].intentAsSource = intent;
    }
    return MakeTransform(std::move(members), dwFlags);
} catch (...) {
    return tesk::FailAtBoundary(HTRANSFORM{});
}

BOOL WINAPI TeskSetTransformExtensions(DWORD flags) {
    if (flags & ~kExtensionFlags) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    g_extensions.store(flags);
    return TRUE;
}

BOOL WINAPI DeleteColorTransform(HTRANSFORM hxform) try {
    return UnregisterTransform(hxform) ? TRUE : FALSE;
} catch (...) {
    return tesk::FailAtBoundary(BOOL{FALSE});
}
