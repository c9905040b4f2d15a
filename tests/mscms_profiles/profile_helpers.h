// Handles and raw bytes of the MSCMS profile tests.
#pragma once
#include <windows.h>

#include <icm.h>

#include <cstdint>
#include <string>
#include <vector>

#include "support/big_endian.h"
#include "support/frame_fails_with.h"
#include "support/lcms_profiles.h"

namespace tesk::test {

inline HPROFILE OpenMemory(const Bytes& bytes, DWORD access = PROFILE_READ) {
    PROFILE record{PROFILE_MEMBUFFER, const_cast<uint8_t*>(bytes.data()), static_cast<DWORD>(bytes.size())};
    return OpenColorProfileW(&record, access, FILE_SHARE_READ, OPEN_EXISTING);
}

inline HPROFILE OpenFile(const std::wstring& path, DWORD access, DWORD creation) {
    PROFILE record{PROFILE_FILENAME, const_cast<wchar_t*>(path.c_str()), static_cast<DWORD>(2 * path.size() + 2)};
    return OpenColorProfileW(&record, access, FILE_SHARE_READ, creation);
}

// The profile as GetColorProfileFromHandle gives it; empty on failure.
inline Bytes BytesOf(HPROFILE profile) {
    DWORD size = 0;
    if (GetColorProfileFromHandle(profile, nullptr, &size) || GetLastError() != ERROR_INSUFFICIENT_BUFFER) return {};
    Bytes bytes(size);
    if (!GetColorProfileFromHandle(profile, bytes.data(), &size) || size != bytes.size()) return {};
    return bytes;
}

inline Bytes TagOf(HPROFILE profile, TAGTYPE tag) {
    DWORD size = 0;
    BOOL reference = FALSE;
    if (GetColorProfileElement(profile, tag, 0, &size, nullptr, &reference) ||
        GetLastError() != ERROR_INSUFFICIENT_BUFFER)
        return {};
    Bytes data(size);
    if (!GetColorProfileElement(profile, tag, 0, &size, data.data(), &reference)) return {};
    data.resize(size);
    return data;
}

inline bool IsValid(const Bytes& bytes) {
    HPROFILE profile = OpenMemory(bytes);
    BOOL valid = TRUE;
    const bool result = profile && IsColorProfileValid(profile, &valid) && valid;
    if (profile) CloseColorProfile(profile);
    return result;
}

// The offset of a tag's table entry in raw profile bytes; false when absent.
inline bool FindTagEntry(const Bytes& bytes, uint32_t signature, size_t& entry) {
    for (uint32_t i = 0; i < BE32(bytes, 128); ++i)
        if (BE32(bytes, entry = 132 + 12 * i) == signature) return true;
    return false;
}

inline std::wstring Wide(const std::string& text) { return std::wstring(text.begin(), text.end()); }

}  // namespace tesk::test
