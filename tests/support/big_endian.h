// Big-endian words in raw profile bytes. Reads past the end give zero, so a
// test can look at a truncated profile; writes past the end grow the bytes.
#pragma once
#include <cstddef>
#include <cstdint>
#include <vector>

namespace tesk::test {

using Bytes = std::vector<uint8_t>;

inline uint32_t BE32(const Bytes& bytes, size_t offset) {
    uint32_t value = 0;
    for (size_t i = 0; i < 4; ++i) value = (value << 8) | (offset + i < bytes.size() ? bytes[offset + i] : 0);
    return value;
}
inline uint16_t BE16(const Bytes& bytes, size_t offset) { return static_cast<uint16_t>(BE32(bytes, offset) >> 16); }

inline void PutBE16(Bytes& bytes, size_t offset, uint16_t value) {
    if (bytes.size() < offset + 2) bytes.resize(offset + 2);
    bytes[offset] = static_cast<uint8_t>(value >> 8);
    bytes[offset + 1] = static_cast<uint8_t>(value);
}
inline void PutBE32(Bytes& bytes, size_t offset, uint32_t value) {
    PutBE16(bytes, offset, static_cast<uint16_t>(value >> 16));
    PutBE16(bytes, offset + 2, static_cast<uint16_t>(value));
}

}  // namespace tesk::test
