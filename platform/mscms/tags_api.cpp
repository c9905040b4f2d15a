// Tag access: count, enumeration, read, write, resize, delete, reference.
#include <windows.h>

#include <icm.h>
#include <tesk/export_guard.h>

#include <algorithm>
#include <cstring>
#include <new>

#include "profile_handles.h"

using namespace tesk::mscms;

namespace {

BOOL Fail(DWORD error) {
    SetLastError(error);
    return FALSE;
}

// Whether the profile may grow by `growth` bytes.
bool FitsAfterGrowth(const IccContainer& container, size_t growth) {
    return growth <= kMaxProfileSize && SerializedSize(container) + growth + 3 <= kMaxProfileSize;
}

}  // namespace

BOOL WINAPI GetCountColorProfileElements(HPROFILE hProfile, PDWORD pnElementCount) try {
    std::shared_ptr<OpenProfile> profile = LookupProfile(hProfile);
    if (!profile) return FALSE;
    if (!pnElementCount) return Fail(ERROR_INVALID_PARAMETER);
    std::lock_guard lock(profile->mutex);
    *pnElementCount = static_cast<DWORD>(profile->container.tags.size());
    return TRUE;
} catch (...) {
    return tesk::FailAtBoundary(BOOL{FALSE});
}

BOOL WINAPI IsColorProfileTagPresent(HPROFILE hProfile, TAGTYPE tag, PBOOL pbPresent) try {
    std::shared_ptr<OpenProfile> profile = LookupProfile(hProfile);
    if (!profile) return FALSE;
    if (!pbPresent) return Fail(ERROR_INVALID_PARAMETER);
    std::lock_guard lock(profile->mutex);
    *pbPresent = profile->container.Find(tag) ? TRUE : FALSE;
    return TRUE;
} catch (...) {
    return tesk::FailAtBoundary(BOOL{FALSE});
}

// dwIndex counts from 1, in tag-table order.
BOOL WINAPI GetColorProfileElementTag(HPROFILE hProfile, DWORD dwIndex, PTAGTYPE pTagType) try {
    std::shared_ptr<OpenProfile> profile = LookupProfile(hProfile);
    if (!profile) return FALSE;
    if (!pTagType) return Fail(ERROR_INVALID_PARAMETER);
    std::lock_guard lock(profile->mutex);
    const auto& tags = profile->container.tags;
    if (dwIndex == 0 || dwIndex > tags.size()) return Fail(ERROR_INVALID_PARAMETER);
    *pTagType = tags[dwIndex - 1].signature;
    return TRUE;
} catch (...) {
    return tesk::FailAtBoundary(BOOL{FALSE});
}

// A null buffer asks for the tag's whole size, which comes back with FALSE and
// ERROR_INSUFFICIENT_BUFFER. A missing tag reports 0 bytes.
BOOL WINAPI GetColorProfileElement(HPROFILE hProfile, TAGTYPE tag, DWORD dwOffset, PDWORD pcbElement,
                                   PVOID pElement, PBOOL pbReference) try {
    std::shared_ptr<OpenProfile> profile = LookupProfile(hProfile);
    if (!profile) return FALSE;
    if (!pcbElement || !pbReference) return Fail(ERROR_INVALID_PARAMETER);
    std::lock_guard lock(profile->mutex);
    const IccTag* found = profile->container.Find(tag);
    if (!found) {
        *pcbElement = 0;
        return Fail(ERROR_TAG_NOT_FOUND);
    }
    *pbReference = profile->container.IsShared(*found) ? TRUE : FALSE;
    const Bytes& data = *found->data;
    if (!pElement) {
        *pcbElement = static_cast<DWORD>(data.size());
        return Fail(ERROR_INSUFFICIENT_BUFFER);
    }
    if (dwOffset > data.size()) return Fail(ERROR_INVALID_PARAMETER);
    const size_t count = std::min<size_t>(*pcbElement, data.size() - dwOffset);
    if (count) std::memcpy(pElement, data.data() + dwOffset, count);
    *pcbElement = static_cast<DWORD>(count);
    return TRUE;
} catch (...) {
    return tesk::FailAtBoundary(BOOL{FALSE});
}

// Writes *pcbElement bytes at dwOffset, creating the tag or growing it
// (zero-filled) as needed. Tags sharing the data see the change. Writing
// nothing to an existing tag succeeds and changes nothing.
BOOL WINAPI SetColorProfileElement(HPROFILE hProfile, TAGTYPE tag, DWORD dwOffset, PDWORD pcbElement,
                                   PVOID pElement) try {
    std::shared_ptr<OpenProfile> profile = LookupWritableProfile(hProfile);
    if (!profile) return FALSE;
    if (!pcbElement || (*pcbElement != 0 && !pElement)) return Fail(ERROR_INVALID_PARAMETER);
    std::lock_guard lock(profile->mutex);
    IccContainer& container = profile->container;
    const size_t end = size_t{dwOffset} + *pcbElement;
    IccTag* found = container.Find(tag);
    if (!found && *pcbElement == 0) return Fail(ERROR_TAG_NOT_FOUND);  // nothing to create a tag from
    const size_t current = found ? found->data->size() : 0;
    if (end > current && !FitsAfterGrowth(container, end - current)) return Fail(ERROR_NOT_ENOUGH_MEMORY);
    if (!found) {
        container.tags.push_back({tag, std::make_shared<Bytes>()});
        found = &container.tags.back();
    }
    Bytes& data = *found->data;
    if (end > data.size()) data.resize(end, 0);
    if (*pcbElement) std::memcpy(data.data() + dwOffset, pElement, *pcbElement);
    profile->modified = true;
    return TRUE;
} catch (...) {
    return tesk::FailAtBoundary(BOOL{FALSE});
}

// Creates a missing tag, keeps existing bytes up to the new size, zero-fills
// growth, and deletes the tag at size 0. A tag that shares its data with
// another gets data of its own; the other tag keeps the old data.
BOOL WINAPI SetColorProfileElementSize(HPROFILE hProfile, TAGTYPE tagType, DWORD pcbElement) try {
    std::shared_ptr<OpenProfile> profile = LookupWritableProfile(hProfile);
    if (!profile) return FALSE;
    std::lock_guard lock(profile->mutex);
    IccContainer& container = profile->container;
    IccTag* found = container.Find(tagType);
    if (pcbElement == 0) {
        if (!found) return Fail(ERROR_TAG_NOT_FOUND);
        container.tags.erase(container.tags.begin() + (found - container.tags.data()));
        profile->modified = true;
        return TRUE;
    }
    const bool shared = found && container.IsShared(*found);
    const size_t current = found && !shared ? found->data->size() : 0;
    if (pcbElement > current && !FitsAfterGrowth(container, pcbElement - current))
        return Fail(ERROR_NOT_ENOUGH_MEMORY);
    if (!found) {
        container.tags.push_back({tagType, std::make_shared<Bytes>(pcbElement, 0)});
    } else if (shared) {
        auto own = std::make_shared<Bytes>(*found->data);
        own->resize(pcbElement, 0);
        found->data = std::move(own);
    } else {
        found->data->resize(pcbElement, 0);
    }
    profile->modified = true;
    return TRUE;
} catch (...) {
    return tesk::FailAtBoundary(BOOL{FALSE});
}

// newTag comes to share refTag's data; it must not exist yet.
BOOL WINAPI SetColorProfileElementReference(HPROFILE hProfile, TAGTYPE newTag, TAGTYPE refTag) try {
    std::shared_ptr<OpenProfile> profile = LookupWritableProfile(hProfile);
    if (!profile) return FALSE;
    std::lock_guard lock(profile->mutex);
    IccContainer& container = profile->container;
    const IccTag* referenced = container.Find(refTag);
    if (!referenced) return Fail(ERROR_TAG_NOT_FOUND);
    if (container.Find(newTag)) return Fail(ERROR_DUPLICATE_TAG);
    container.tags.push_back({newTag, referenced->data});
    profile->modified = true;
    return TRUE;
} catch (...) {
    return tesk::FailAtBoundary(BOOL{FALSE});
}
