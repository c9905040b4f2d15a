// Big-endian bytes as ICC profiles hold them. A reader is given the bytes it
// may read and never leaves them: a byte past the end reads as zero, so a
// parser can follow the counts and offsets a file states and check lengths
// where it decides to, without touching memory outside the data.
#pragma once
#include <cstdint>
#include <span>

namespace tesk {

class BigEndianReader {
public:
    BigEndianReader(const uint8_t* data, uint64_t size) : m_pData(data), m_nSize(data ? size : 0) {}
    explicit BigEndianReader(std::span<const uint8_t> bytes) : BigEndianReader(bytes.data(), bytes.size()) {}

    uint64_t Size() const { return m_nSize; }
    uint8_t U8(uint64_t offset) const { return At(offset, 0); }
    uint16_t U16(uint64_t offset) const { return static_cast<uint16_t>((At(offset, 0) << 8) | At(offset, 1)); }
    uint32_t U32(uint64_t offset) const {
        return (uint32_t{At(offset, 0)} << 24) | (uint32_t{At(offset, 1)} << 16) | (uint32_t{At(offset, 2)} << 8) |
               At(offset, 3);
    }

private:
    // Byte `index` of the field at `offset`; no sum here can wrap around.
    uint8_t At(uint64_t offset, uint64_t index) const {
        return offset < m_nSize && index < m_nSize - offset ? m_pData[offset + index] : 0;
    }

    const uint8_t* m_pData;
    uint64_t m_nSize;
};

// Writers into a buffer the caller has sized.
inline void PutBE16(uint8_t* place, uint16_t value) {
    place[0] = static_cast<uint8_t>(value >> 8);
    place[1] = static_cast<uint8_t>(value);
}

inline void PutBE32(uint8_t* place, uint32_t value) {
    PutBE16(place, static_cast<uint16_t>(value >> 16));
    PutBE16(place + 2, static_cast<uint16_t>(value));
}

}  // namespace tesk
