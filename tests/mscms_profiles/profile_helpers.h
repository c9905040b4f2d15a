// Profiles made with Little CMS (not by the code under test) and raw-byte
// helpers for the MSCMS profile tests.
#pragma once
#include <icm.h>
#include <lcms2.h>
#include <windows.h>

#include <cstdint>
#include <string>
#include <vector>

#include "support/frame_fails_with.h"

namespace tesk::test {

using Bytes = std::vector<uint8_t>;

inline Bytes LcmsSrgbProfile() {
    cmsHPROFILE profile = cmsCreate_sRGBProfile();
    cmsUInt32Number size = 0;
    cmsSaveProfileToMem(profile, nullptr, &size);
    Bytes bytes(size);
    cmsSaveProfileToMem(profile, bytes.data(), &size);
    cmsCloseProfile(profile);
    return bytes;
}

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

inline uint32_t BE32(const Bytes& bytes, size_t offset) {
    return uint32_t{bytes.at(offset)} << 24 | uint32_t{bytes.at(offset + 1)} << 16 |
           uint32_t{bytes.at(offset + 2)} << 8 | bytes.at(offset + 3);
}

inline void PutBE32(Bytes& bytes, size_t offset, uint32_t value) {
    for (int i = 0; i < 4; ++i) bytes.at(offset + i) = static_cast<uint8_t>(value >> (24 - 8 * i));
}

// The offset of a tag's table entry in raw profile bytes; false when absent.
inline bool FindTagEntry(const Bytes& bytes, uint32_t signature, size_t& entry) {
    for (uint32_t i = 0; i < BE32(bytes, 128); ++i)
        if (BE32(bytes, entry = 132 + 12 * i) == signature) return true;
    return false;
}

inline std::wstring Wide(const std::string& text) { return std::wstring(text.begin(), text.end()); }

}  // namespace tesk::test
