#include "profile_helpers.h"

#include <lcms2.h>

namespace tesk::test {

Bytes LcmsSrgbProfile() {
    cmsHPROFILE profile = cmsCreate_sRGBProfile();
    cmsUInt32Number size = 0;
    cmsSaveProfileToMem(profile, nullptr, &size);
    Bytes bytes(size);
    cmsSaveProfileToMem(profile, bytes.data(), &size);
    cmsCloseProfile(profile);
    return bytes;
}

HPROFILE OpenMemory(const Bytes& bytes, DWORD access) {
    PROFILE record{PROFILE_MEMBUFFER, const_cast<uint8_t*>(bytes.data()), static_cast<DWORD>(bytes.size())};
    return OpenColorProfileW(&record, access, FILE_SHARE_READ, OPEN_EXISTING);
}

HPROFILE OpenFile(const std::wstring& path, DWORD access, DWORD creation) {
    PROFILE record{PROFILE_FILENAME, const_cast<wchar_t*>(path.c_str()), static_cast<DWORD>(2 * path.size() + 2)};
    return OpenColorProfileW(&record, access, FILE_SHARE_READ, creation);
}

Bytes BytesOf(HPROFILE profile) {
    DWORD size = 0;
    if (GetColorProfileFromHandle(profile, nullptr, &size) || GetLastError() != ERROR_INSUFFICIENT_BUFFER) return {};
    Bytes bytes(size);
    if (!GetColorProfileFromHandle(profile, bytes.data(), &size) || size != bytes.size()) return {};
    return bytes;
}

Bytes TagOf(HPROFILE profile, TAGTYPE tag) {
    DWORD size = 0;
    BOOL reference = FALSE;
    if (!GetColorProfileElement(profile, tag, 0, &size, nullptr, &reference)) return {};
    Bytes data(size);
    if (!GetColorProfileElement(profile, tag, 0, &size, data.data(), &reference)) return {};
    data.resize(size);
    return data;
}

bool IsValid(const Bytes& bytes) {
    HPROFILE profile = OpenMemory(bytes);
    if (!profile) return false;
    BOOL valid = TRUE;
    const BOOL result = IsColorProfileValid(profile, &valid);
    CloseColorProfile(profile);
    return result && valid;
}

uint32_t BE32(const Bytes& bytes, size_t offset) {
    return uint32_t{bytes.at(offset)} << 24 | uint32_t{bytes.at(offset + 1)} << 16 |
           uint32_t{bytes.at(offset + 2)} << 8 | bytes.at(offset + 3);
}

void PutBE32(Bytes& bytes, size_t offset, uint32_t value) {
    for (int i = 0; i < 4; ++i) bytes.at(offset + i) = static_cast<uint8_t>(value >> (24 - 8 * i));
}

bool FindTagEntry(const Bytes& bytes, uint32_t signature, size_t& entry) {
    const uint32_t count = BE32(bytes, 128);
    for (uint32_t i = 0; i < count; ++i) {
        entry = 132 + 12 * i;
        if (BE32(bytes, entry) == signature) return true;
    }
    return false;
}

std::wstring Wide(const std::string& text) { return std::wstring(text.begin(), text.end()); }

}  // namespace tesk::test
