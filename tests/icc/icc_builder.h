// Byte-level ICC profiles for the reader tests: every header field and tag
// byte under the test's control, so malformed cases can be made on purpose.
#pragma once
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "support/big_endian.h"

namespace tesk::test::icc {

using tesk::test::Bytes;
using tesk::test::PutBE16;
using tesk::test::PutBE32;

inline uint32_t S15(double v) { return uint32_t(int32_t(std::lround(v * 65536.0))); }

inline void PutWords(Bytes& b, size_t at, std::initializer_list<uint32_t> words) {
    for (uint32_t word : words) PutBE32(b, std::exchange(at, at + 4), word);
}
inline void PutText(Bytes& b, size_t at, const std::string& text) {
    std::copy(text.begin(), text.end(), b.begin() + long(at));
}
// A tag of `size` bytes: its type, then `words` from byte 8.
inline Bytes TypeHeader(uint32_t type, size_t size, std::initializer_list<uint32_t> words = {}) {
    Bytes b(size, 0);
    PutBE32(b, 0, type);
    PutWords(b, 8, words);
    return b;
}

inline Bytes CurvGamma(uint16_t u8Fixed8) {
    Bytes b = TypeHeader('curv', 14, {1});
    PutBE16(b, 12, u8Fixed8);
    return b;
}
inline Bytes CurvIdentity() { return TypeHeader('curv', 12); }
inline Bytes CurvSampled(const std::vector<uint16_t>& entries) {
    Bytes b = TypeHeader('curv', 12 + 2 * entries.size(), {uint32_t(entries.size())});
    for (size_t i = 0; i < entries.size(); ++i) PutBE16(b, 12 + 2 * i, entries[i]);
    return b;
}
inline std::vector<uint16_t> PowerCurve(size_t count, double gamma) {
    std::vector<uint16_t> e(count);
    for (size_t i = 0; i < count; ++i) e[i] = uint16_t(std::lround(std::pow(double(i) / (count - 1), gamma) * 65535));
    return e;
}
// ICC parameter counts per function type: 1, 3, 4, 5, 7.
inline Bytes Para(uint16_t functionType, const std::vector<double>& params) {
    Bytes b = TypeHeader('para', 12 + 4 * params.size(), {uint32_t(functionType) << 16});
    for (size_t i = 0; i < params.size(); ++i) PutBE32(b, 12 + 4 * i, S15(params[i]));
    return b;
}
inline Bytes XYZ(double x, double y, double z) { return TypeHeader('XYZ ', 20, {S15(x), S15(y), S15(z)}); }
// textDescriptionType with an empty Unicode part and ScriptCode part.
inline Bytes Desc(const std::string& ascii, uint32_t countOverride = UINT32_MAX) {
    Bytes b = TypeHeader('desc', 12 + ascii.size() + 1 + 8 + 3 + 67,
                         {countOverride != UINT32_MAX ? countOverride : uint32_t(ascii.size() + 1)});
    PutText(b, 12, ascii);
    return b;
}
inline Bytes Text(const std::string& ascii) {
    Bytes b = TypeHeader('text', 8 + ascii.size() + 1);
    PutText(b, 8, ascii);
    return b;
}
// One en-US record per string; `lengthDelta` is added to every record's byte length.
inline Bytes Mluc(const std::vector<std::u16string>& strings, int lengthDelta = 0) {
    size_t at = 16 + 12 * strings.size();
    Bytes b = TypeHeader('mluc', at, {uint32_t(strings.size()), 12});
    for (size_t r = 0; r < strings.size(); ++r) {
        PutBE32(b, 16 + 12 * r, 'enUS');
        PutBE32(b, 20 + 12 * r, uint32_t(int(2 * strings[r].size()) + lengthDelta));
        PutBE32(b, 24 + 12 * r, uint32_t(at));
        for (char16_t unit : strings[r]) PutBE16(b, std::exchange(at, at + 2), unit);
    }
    return b;
}
inline Bytes VcgtTable(uint16_t channels, uint16_t entries, uint16_t entrySize, const Bytes& data) {
    Bytes b = TypeHeader('vcgt', 18 + data.size(), {0, uint32_t(channels) << 16 | entries});
    PutBE16(b, 16, entrySize);
    std::copy(data.begin(), data.end(), b.begin() + 18);
    return b;
}
inline Bytes Sf32(const std::vector<double>& nine) {
    Bytes b = TypeHeader('sf32', 8 + 36);
    for (size_t i = 0; i < nine.size(); ++i) PutBE32(b, 8 + 4 * i, S15(nine[i]));
    return b;
}

class ProfileBuilder {
public:
    uint32_t version = 0x02200000;
    uint32_t profileClass = 'mntr';

    ProfileBuilder& Set(uint32_t signature, Bytes data) {
        for (auto& tag : tags_)
            if (tag.first == signature) {
                tag.second = std::move(data);
                return *this;
            }
        tags_.emplace_back(signature, std::move(data));
        return *this;
    }
    ProfileBuilder& Remove(uint32_t signature) {
        std::erase_if(tags_, [&](const auto& tag) { return tag.first == signature; });
        return *this;
    }
    size_t TagCount() const { return tags_.size(); }

    Bytes Build() const {
        Bytes b(128, 0);
        // CMM, version, class, colour and connection spaces, date 2026-11-21, 'acsp'; D50 and creator.
        PutWords(b, 4, {'lcms', version, profileClass, 'RGB ', 'XYZ ', 2026 << 16 | 11, 21 << 16, 0, 'acsp'});
        PutWords(b, 68, {0xF6D6, 0x10000, 0xD32D, 'test'});
        PutBE32(b, 128, uint32_t(tags_.size()));
        size_t at = 132 + 12 * tags_.size();
        b.resize(at, 0);
        for (size_t i = 0; i < tags_.size(); ++i) {
            while (b.size() % 4) b.push_back(0);
            const size_t offset = b.size();
            PutBE32(b, 132 + 12 * i, tags_[i].first);
            PutBE32(b, 136 + 12 * i, uint32_t(offset));
            PutBE32(b, 140 + 12 * i, uint32_t(tags_[i].second.size()));
            b.insert(b.end(), tags_[i].second.begin(), tags_[i].second.end());
        }
        while (b.size() % 4) b.push_back(0);
        PutBE32(b, 0, uint32_t(b.size()));
        return b;
    }

private:
    std::vector<std::pair<uint32_t, Bytes>> tags_;
};

// A valid matrix/TRC display profile with the same curve on all channels.
inline ProfileBuilder MatrixDisplay(const Bytes& curve = CurvGamma(0x0233), const std::string& name = "Test RGB") {
    ProfileBuilder p;
    p.Set('desc', Desc(name))
        .Set('cprt', Text("No copyright, use freely"))
        .Set('wtpt', XYZ(0.9642, 1.0, 0.8249))
        .Set('rXYZ', XYZ(0.4361, 0.2225, 0.0139))
        .Set('gXYZ', XYZ(0.3851, 0.7169, 0.0971))
        .Set('bXYZ', XYZ(0.1431, 0.0606, 0.7141))
        .Set('rTRC', curve)
        .Set('gTRC', curve)
        .Set('bTRC', curve);
    return p;
}

}  // namespace tesk::test::icc
