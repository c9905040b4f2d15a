// Byte-level ICC profiles for the reader tests: every header field and tag
// byte under the test's control, so malformed cases can be made on purpose.
#pragma once
#include <cmath>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace tesk::test::icc {

using Bytes = std::vector<uint8_t>;

inline void PutBE16(Bytes& b, size_t at, uint16_t v) {
    if (b.size() < at + 2) b.resize(at + 2);
    b[at] = uint8_t(v >> 8);
    b[at + 1] = uint8_t(v);
}
inline void PutBE32(Bytes& b, size_t at, uint32_t v) {
    PutBE16(b, at, uint16_t(v >> 16));
    PutBE16(b, at + 2, uint16_t(v));
}
inline uint32_t S15(double v) { return uint32_t(int32_t(std::lround(v * 65536.0))); }

inline Bytes TypeHeader(uint32_t type, size_t size) {
    Bytes b(size, 0);
    PutBE32(b, 0, type);
    return b;
}

inline Bytes CurvGamma(uint16_t u8Fixed8) {
    Bytes b = TypeHeader('curv', 14);
    PutBE32(b, 8, 1);
    PutBE16(b, 12, u8Fixed8);
    return b;
}
inline Bytes CurvIdentity() { return TypeHeader('curv', 12); }
inline Bytes CurvSampled(const std::vector<uint16_t>& entries) {
    Bytes b = TypeHeader('curv', 12 + 2 * entries.size());
    PutBE32(b, 8, uint32_t(entries.size()));
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
    Bytes b = TypeHeader('para', 12 + 4 * params.size());
    PutBE16(b, 8, functionType);
    for (size_t i = 0; i < params.size(); ++i) PutBE32(b, 12 + 4 * i, S15(params[i]));
    return b;
}
inline Bytes XYZ(double x, double y, double z) {
    Bytes b = TypeHeader('XYZ ', 20);
    PutBE32(b, 8, S15(x));
    PutBE32(b, 12, S15(y));
    PutBE32(b, 16, S15(z));
    return b;
}
// textDescriptionType with an empty Unicode part and ScriptCode part.
inline Bytes Desc(const std::string& ascii, uint32_t countOverride = UINT32_MAX) {
    Bytes b = TypeHeader('desc', 12 + ascii.size() + 1 + 8 + 3 + 67);
    PutBE32(b, 8, countOverride != UINT32_MAX ? countOverride : uint32_t(ascii.size() + 1));
    for (size_t i = 0; i < ascii.size(); ++i) b[12 + i] = uint8_t(ascii[i]);
    return b;
}
inline Bytes Text(const std::string& ascii) {
    Bytes b = TypeHeader('text', 8 + ascii.size() + 1);
    for (size_t i = 0; i < ascii.size(); ++i) b[8 + i] = uint8_t(ascii[i]);
    return b;
}
// One record per string; `lengthDelta` is added to every record's byte length.
inline Bytes Mluc(const std::vector<std::u16string>& strings, int lengthDelta = 0) {
    size_t at = 16 + 12 * strings.size();
    Bytes b = TypeHeader('mluc', at);
    PutBE32(b, 8, uint32_t(strings.size()));
    PutBE32(b, 12, 12);
    for (size_t r = 0; r < strings.size(); ++r) {
        const size_t record = 16 + 12 * r;
        PutBE16(b, record, 'en');
        PutBE16(b, record + 2, 'US');
        PutBE32(b, record + 4, uint32_t(int(2 * strings[r].size()) + lengthDelta));
        PutBE32(b, record + 8, uint32_t(at));
        for (char16_t unit : strings[r]) {
            PutBE16(b, at, unit);
            at += 2;
        }
    }
    return b;
}
inline Bytes VcgtTable(uint16_t channels, uint16_t entries, uint16_t entrySize, const Bytes& data) {
    Bytes b = TypeHeader('vcgt', 18 + data.size());
    PutBE16(b, 12, channels);
    PutBE16(b, 14, entries);
    PutBE16(b, 16, entrySize);
    for (size_t i = 0; i < data.size(); ++i) b[18 + i] = data[i];
    return b;
}
inline Bytes VcgtFormula(const std::vector<uint32_t>& nine) {
    Bytes b = TypeHeader('vcgt', 48);
    PutBE32(b, 8, 1);
    for (size_t i = 0; i < nine.size(); ++i) PutBE32(b, 12 + 4 * i, nine[i]);
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
        PutBE32(b, 4, 'lcms');
        PutBE32(b, 8, version);
        PutBE32(b, 12, profileClass);
        PutBE32(b, 16, 'RGB ');
        PutBE32(b, 20, 'XYZ ');
        PutBE16(b, 24, 2026);
        PutBE16(b, 26, 11);
        PutBE16(b, 28, 21);
        PutBE32(b, 36, 'acsp');
        PutBE32(b, 68, 0xF6D6);  // D50
        PutBE32(b, 72, 0x10000);
        PutBE32(b, 76, 0xD32D);
        PutBE32(b, 80, 'test');
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
