// Untrusted profile bytes through MSCMS's profile side: open from memory,
// read the header and every tag, judge validity, edit, serialize, and check
// that the serialized profile opens again to the same bytes.
#include <windows.h>

#include <icm.h>

#include <cstdint>
#include <cstdlib>
#include <vector>

namespace {

std::vector<uint8_t> Serialized(HPROFILE profile) {
    DWORD size = 0;
    GetColorProfileFromHandle(profile, nullptr, &size);
    std::vector<uint8_t> bytes(size);
    if (size == 0 || !GetColorProfileFromHandle(profile, bytes.data(), &size)) abort();
    return bytes;
}

HPROFILE OpenMemory(const uint8_t* data, size_t size, DWORD access) {
    PROFILE record{PROFILE_MEMBUFFER, const_cast<uint8_t*>(data), static_cast<DWORD>(size)};
    return OpenColorProfileW(&record, access, FILE_SHARE_READ, OPEN_EXISTING);
}

void WalkTags(HPROFILE profile) {
    DWORD count = 0;
    if (!GetCountColorProfileElements(profile, &count)) abort();
    std::vector<uint8_t> buffer;
    for (DWORD i = 1; i <= count; ++i) {
        TAGTYPE tag = 0;
        if (!GetColorProfileElementTag(profile, i, &tag)) abort();
        DWORD size = 0;
        BOOL reference = FALSE;
        // A size query fails by design and reports the size.
        if (GetColorProfileElement(profile, tag, 0, &size, nullptr, &reference) ||
            GetLastError() != ERROR_INSUFFICIENT_BUFFER)
            abort();
        buffer.assign(size + 1, 0);
        DWORD read = size + 1;  // more than the tag holds: only the tag comes back
        if (!GetColorProfileElement(profile, tag, 0, &read, buffer.data(), &reference) || read != size) abort();
        read = 4;
        GetColorProfileElement(profile, tag, size / 2, &read, buffer.data(), &reference);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size > (1u << 24)) return 0;
    HPROFILE profile = OpenMemory(data, size, PROFILE_READWRITE);
    if (!profile) return 0;
    PROFILEHEADER header{};
    if (!GetColorProfileHeader(profile, &header)) abort();
    WalkTags(profile);
    BOOL valid = FALSE;
    IsColorProfileValid(profile, &valid);

    // The serialized form is a fixed point: it reopens to the same bytes.
    const std::vector<uint8_t> first = Serialized(profile);
    HPROFILE again = OpenMemory(first.data(), first.size(), PROFILE_READ);
    if (!again || Serialized(again) != first) abort();
    BOOL validAgain = FALSE;
    IsColorProfileValid(again, &validAgain);
    if (validAgain != valid) abort();
    CloseColorProfile(again);

    // Edits driven by the input's last bytes, then everything once more.
    DWORD count = 0;
    GetCountColorProfileElements(profile, &count);
    if (count > 0) {
        TAGTYPE tag = 0;
        GetColorProfileElementTag(profile, 1 + data[size - 1] % count, &tag);
        SetColorProfileElementReference(profile, 'fzR0' + data[size - 2] % 4, tag);
        SetColorProfileElementSize(profile, tag, data[size - 3] * 7u);
        DWORD written = 2;
        SetColorProfileElement(profile, 'fzR0', data[size - 4], &written, const_cast<uint8_t*>(data));
    }
    SetColorProfileHeader(profile, &header);
    WalkTags(profile);
    IsColorProfileValid(profile, &valid);
    const std::vector<uint8_t> edited = Serialized(profile);
    again = OpenMemory(edited.data(), edited.size(), PROFILE_READ);
    if (!again || Serialized(again) != edited) abort();
    CloseColorProfile(again);
    if (!CloseColorProfile(profile)) abort();
    return 0;
}
