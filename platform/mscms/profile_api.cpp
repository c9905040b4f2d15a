// Opening, closing, validity, headers and whole-profile bytes.
#include <windows.h>

#include <icm.h>
#include <tesk/big_endian.h>
#include <tesk/path.h>
#include <tesk/export_guard.h>

#include <cstring>
#include <filesystem>
#include <new>

#include "color_directory.h"
#include "profile_access.h"
#include "profile_file_cache.h"
#include "profile_handles.h"
#include "profile_validity.h"

namespace fs = std::filesystem;
using namespace tesk::mscms;

namespace {

// PROFILEHEADER is the ICC header word by word in host order, up to the
// reserved bytes, which are copied as they stand.
constexpr size_t kHeaderWords = offsetof(PROFILEHEADER, phReserved) / sizeof(DWORD);
static_assert(offsetof(PROFILEHEADER, phReserved) == 84 && sizeof(PROFILEHEADER) == kIccHeaderSize);

void HeaderToHost(const IccContainer& container, PROFILEHEADER& header) {
    DWORD words[kHeaderWords];
    const tesk::BigEndianReader bytes(container.header);
    for (size_t i = 0; i < kHeaderWords; ++i) words[i] = bytes.U32(4 * i);
    std::memcpy(&header, words, sizeof(words));
    std::memcpy(header.phReserved, container.header.data() + 84, sizeof(header.phReserved));
}

void HeaderFromHost(const PROFILEHEADER& header, IccContainer& container) {
    DWORD words[kHeaderWords];
    std::memcpy(words, &header, sizeof(words));
    for (size_t i = 0; i < kHeaderWords; ++i) tesk::PutBE32(container.header.data() + 4 * i, words[i]);
    std::memcpy(container.header.data() + 84, header.phReserved, sizeof(header.phReserved));
}

// A PROFILE_FILENAME path ends at its terminator. It is never looked for past
// cbDataSize / 2 characters: callers written for Windows count two bytes a
// character, and that bound is always beyond the terminator of a caller that
// counts this platform's WCHAR.
std::wstring PathOfRecord(const PROFILE& record) {
    const auto* text = static_cast<const wchar_t*>(record.pProfileData);
    const size_t limit = record.cbDataSize / 2;
    size_t length = 0;
    while (length < limit && text[length] != L'\0') ++length;
    return std::wstring(text, length);
}

bool StartsEmpty(DWORD creationMode, bool exists) {
    return creationMode == CREATE_ALWAYS || creationMode == CREATE_NEW || creationMode == TRUNCATE_EXISTING ||
           (creationMode == OPEN_ALWAYS && !exists);
}

bool LoadContainer(std::span<const uint8_t> bytes, OpenProfile& profile) {
    std::optional<IccContainer> container = ParseIccContainer(bytes);
    if (!container) {
        SetLastError(ERROR_INVALID_PROFILE);
        return false;
    }
    profile.container = std::move(*container);
    return true;
}

bool OpenFromFile(const PROFILE& record, DWORD creationMode, OpenProfile& profile) {
    const std::wstring name = PathOfRecord(record);
    if (name.empty()) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return false;
    }
    const std::string path = ProfilePath(name);
    std::error_code error;
    const bool exists = fs::is_regular_file(path, error);
    if (creationMode == CREATE_NEW && exists) {
        SetLastError(ERROR_FILE_EXISTS);
        return false;
    }
    if ((creationMode == OPEN_EXISTING || creationMode == TRUNCATE_EXISTING) && !exists) {
        SetLastError(ERROR_FILE_NOT_FOUND);
        return false;
    }
    const bool empty = StartsEmpty(creationMode, exists);
    if (!empty) {
        Bytes bytes;
        if (!ReadProfileFile(path, bytes) || !LoadContainer(bytes, profile)) return false;
    }
    if (profile.writable) {
        const fs::path folder = fs::path(path).parent_path();
        if (!folder.empty() && !fs::is_directory(folder, error)) {
            SetLastError(ERROR_PATH_NOT_FOUND);
            return false;
        }
        profile.writeBackPath = path;
        profile.modified = empty;  // a created file exists once the profile is closed
    }
    return true;
}

bool OpenFromMemory(const PROFILE& record, DWORD creationMode, OpenProfile& profile) {
    if (StartsEmpty(creationMode, true)) return true;
    if (!record.pProfileData || record.cbDataSize == 0) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return false;
    }
    // A private copy: the caller's buffer is never written.
    return LoadContainer({static_cast<const uint8_t*>(record.pProfileData), record.cbDataSize}, profile);
}

}  // namespace

HPROFILE WINAPI OpenColorProfileW(PPROFILE pProfile, DWORD dwDesiredAccess, DWORD /*dwShareMode*/,
                                  DWORD dwCreationMode) try {
    const bool knownAccess = dwDesiredAccess == PROFILE_READ || dwDesiredAccess == PROFILE_READWRITE;
    const bool knownCreation = dwCreationMode >= CREATE_NEW && dwCreationMode <= TRUNCATE_EXISTING;
    if (!pProfile || !knownAccess || !knownCreation) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return nullptr;
    }
    auto profile = std::make_shared<OpenProfile>();
    profile->writable = dwDesiredAccess == PROFILE_READWRITE;
    bool opened = false;
    if (pProfile->dwType == PROFILE_FILENAME && pProfile->pProfileData) {
        opened = OpenFromFile(*pProfile, dwCreationMode, *profile);
    } else if (pProfile->dwType == PROFILE_MEMBUFFER) {
        opened = OpenFromMemory(*pProfile, dwCreationMode, *profile);
    } else {
        SetLastError(ERROR_INVALID_PARAMETER);
    }
    return opened ? RegisterProfile(std::move(profile)) : nullptr;
} catch (...) {
    return tesk::FailAtBoundary(HPROFILE{});
}

BOOL WINAPI CloseColorProfile(HPROFILE hProfile) try {
    std::shared_ptr<OpenProfile> profile = LookupProfile(hProfile);
    if (!profile) return FALSE;
    {
        std::lock_guard lock(profile->mutex);
        if (!profile->writeBackPath.empty() && profile->modified) {
            const Bytes bytes = SerializeIccContainer(profile->container);
            // On failure the handle stays open so that the caller's changes are not lost unseen.
            if (!tesk::path::WriteFileAtomically(profile->writeBackPath, std::string(bytes.begin(), bytes.end()))) {
                SetLastError(ERROR_WRITE_FAULT);
                return FALSE;
            }
            profile->modified = false;
        }
    }
    if (!UnregisterProfile(hProfile)) {
        SetLastError(ERROR_INVALID_HANDLE);
        return FALSE;
    }
    return TRUE;
} catch (...) {
    return tesk::FailAtBoundary(BOOL{FALSE});
}

BOOL WINAPI IsColorProfileValid(HPROFILE hProfile, PBOOL pbValid) try {
    std::shared_ptr<OpenProfile> profile = LookupProfile(hProfile);
    if (!profile) return FALSE;
    if (!pbValid) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    std::lock_guard lock(profile->mutex);
    // Judged as it would be serialized, so a stale size field does not count against it.
    const bool valid = IsValidProfile(profile->container);
    *pbValid = valid ? TRUE : FALSE;
    if (!valid) SetLastError(ERROR_INVALID_PROFILE);
    return *pbValid;
} catch (...) {
    return tesk::FailAtBoundary(BOOL{FALSE});
}

BOOL WINAPI GetColorProfileHeader(HPROFILE hProfile, PPROFILEHEADER pHeader) try {
    std::shared_ptr<OpenProfile> profile = LookupProfile(hProfile);
    if (!profile) return FALSE;
    if (!pHeader) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    std::lock_guard lock(profile->mutex);
    // The header as the file or the last SetColorProfileHeader left it; the
    // size field becomes the true size only when the profile is written.
    HeaderToHost(profile->container, *pHeader);
    return TRUE;
} catch (...) {
    return tesk::FailAtBoundary(BOOL{FALSE});
}

BOOL WINAPI SetColorProfileHeader(HPROFILE hProfile, PPROFILEHEADER pHeader) try {
    std::shared_ptr<OpenProfile> profile = LookupWritableProfile(hProfile);
    if (!profile) return FALSE;
    if (!pHeader) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    std::lock_guard lock(profile->mutex);
    HeaderFromHost(*pHeader, profile->container);
    profile->modified = true;
    return TRUE;
} catch (...) {
    return tesk::FailAtBoundary(BOOL{FALSE});
}

BOOL WINAPI GetColorProfileFromHandle(HPROFILE hProfile, PBYTE pProfileData, PDWORD pcbSize) try {
    std::shared_ptr<OpenProfile> profile = LookupProfile(hProfile);
    if (!profile) return FALSE;
    if (!pcbSize) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    std::lock_guard lock(profile->mutex);
    const size_t needed = SerializedSize(profile->container);
    if (!pProfileData || *pcbSize < needed) {
        *pcbSize = static_cast<DWORD>(needed);
        SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return FALSE;
    }
    const Bytes bytes = SerializeIccContainer(profile->container);
    std::memcpy(pProfileData, bytes.data(), bytes.size());
    *pcbSize = static_cast<DWORD>(bytes.size());
    return TRUE;
} catch (...) {
    return tesk::FailAtBoundary(BOOL{FALSE});
}

namespace tesk::mscms {

bool ProfileBytes(HPROFILE handle, std::vector<uint8_t>& bytes) {
    std::shared_ptr<OpenProfile> profile = LookupProfile(handle);
    if (!profile) return false;
    std::lock_guard lock(profile->mutex);
    bytes = SerializeIccContainer(profile->container);
    return true;
}

}  // namespace tesk::mscms
