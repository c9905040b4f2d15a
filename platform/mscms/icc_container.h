// The ICC profile container: header, tag table and tag data, parsed from
// untrusted bytes and laid out again on serialization.
#pragma once
#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace tesk::mscms {

using Bytes = std::vector<uint8_t>;

inline constexpr size_t kIccHeaderSize = 128;
inline constexpr size_t kIccTagEntrySize = 12;

// Tags that reference one another hold the same data object.
struct IccTag {
    uint32_t signature = 0;
    std::shared_ptr<Bytes> data;
};

struct IccContainer {
    std::array<uint8_t, kIccHeaderSize> header{};
    std::vector<IccTag> tags;

    IccTag* Find(uint32_t signature);
    const IccTag* Find(uint32_t signature) const;
    // Whether another tag holds the same data as `tag`.
    bool IsShared(const IccTag& tag) const;
};

// Nothing when the bytes are not a container: shorter than header and tag
// count, a tag table running past the end, a tag whose data lie outside the
// bytes or inside the header and tag table, or a signature given twice.
// Entries with identical offset and size become one shared data object.
std::optional<IccContainer> ParseIccContainer(std::span<const uint8_t> bytes);

// Header, tag table, then each data object once at a 4-byte aligned offset;
// the header's size field holds the true size (a multiple of 4).
Bytes SerializeIccContainer(const IccContainer& container);
size_t SerializedSize(const IccContainer& container);

}  // namespace tesk::mscms
