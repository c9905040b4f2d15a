// The writer's tags: each is composed in a zeroed buffer of exactly its
// length and stored through WriteTagToProfile (or the platform directly).
#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>
#include <memory>
#include <new>

#include <tesk/big_endian.h>

#include "icc/ICCWriteColorProfile.h"

namespace {

using tesk::PutBE16;
using tesk::PutBE32;

using TagBuffer = std::unique_ptr<uint8_t[]>;

// Null when the size cannot be had; tags are written from these, never
// from a partly built buffer.
TagBuffer ZeroedBuffer(size_t size) { return TagBuffer(new (std::nothrow) uint8_t[size]()); }

// Nearest s15Fixed16Number, saturating at the ends of its range.
uint32_t ToS15Fixed16(double value) {
    if (std::isnan(value)) return 0;
    const double scaled = std::clamp(value * 65536.0, double{INT32_MIN}, double{INT32_MAX});
    return static_cast<uint32_t>(static_cast<int32_t>(std::lround(scaled)));
}

// The parametric curve's own encoding: the integer part truncated to 16
// signed bits above the truncated fraction x 65536.
uint32_t ToParametricWord(double value) {
    value = std::isnan(value) ? 0.0 : std::clamp(value, -1e9, 1e9);
    const double whole = std::trunc(value);
    const auto high = static_cast<uint16_t>(static_cast<int64_t>(whole));
    const auto low = static_cast<uint16_t>(static_cast<int32_t>((value - whole) * 65536.0));
    return (uint32_t{high} << 16) | low;
}

// u8Fixed8Number: integer part in the high byte, the fraction x 256
// truncated in the low one.
uint16_t ToU8Fixed8(float gamma) {
    const double value = std::isnan(gamma) ? 0.0 : std::clamp(static_cast<double>(gamma), 0.0, 255.0);
    const double whole = std::trunc(value);
    return static_cast<uint16_t>((static_cast<unsigned>(whole) << 8) |
                                 static_cast<unsigned>((value - whole) * 256.0));
}

bool FitsTagSize(size_t size) { return size <= static_cast<size_t>(INT_MAX); }

}  // namespace

bool CICCWriteColorProfile::WriteTagPreamble(unsigned long signature, void* place) {
    if (!place) return false;
    PutBE32(static_cast<uint8_t*>(place), static_cast<uint32_t>(signature));
    return true;
}

bool CICCWriteColorProfile::SetTRCCurveType(unsigned long tag, SICCCurveType& curve) {
    const size_t count = curve.m_nCount;
    if (count >= 2 && !curve.m_pEntries) return false;
    const size_t size = 12 + 2 * count;
    if (!FitsTagSize(size)) return false;
    TagBuffer data = ZeroedBuffer(size);
    if (!data) return false;
    WriteTagPreamble('curv', data.get());
    PutBE32(data.get() + 8, curve.m_nCount);
    if (count == 1) {
        PutBE16(data.get() + 12, ToU8Fixed8(curve.m_fGamma));
    } else {
        for (size_t i = 0; i < count; ++i) PutBE16(data.get() + 12 + 2 * i, curve.m_pEntries[i]);
    }
    return WriteTagToProfile(tag, data.get(), static_cast<int>(size)) == static_cast<int>(size);
}

bool CICCWriteColorProfile::SetTRCParametricCurveType(unsigned long tag, SICCParametricCurveType& curve) {
    // The program's own parametric layout, which readers of files made by
    // earlier versions expect: the tag length follows the parameter count,
    // the function type sits at byte 16 and the values from byte 20, so of
    // the values only g reaches the file, and only with five parameters.
    static constexpr int kTagLength[] = {4, 12, 16, 20, 24};
    if (curve.m_nParamCount < 1 || curve.m_nParamCount > 5) return false;
    const int length = kTagLength[curve.m_nParamCount - 1];

    // Room for every value the function type asks for, so that no word lands
    // outside the buffer whatever the count and the type say.
    uint8_t composed[4 * 24] = {};
    const unsigned type = curve.m_nFunctionType;
    PutBE16(composed + 16, static_cast<uint16_t>(type));
    const double values[] = {curve.m_dG, curve.m_dA, curve.m_dB, curve.m_dC, curve.m_dD, curve.m_dE};
    const unsigned words = std::min<unsigned>(type + 1 + (type != 0 ? 1 : 0) + 1, 6);
    for (unsigned i = 0; i < words; ++i) PutBE32(composed + 20 + 4 * i, ToParametricWord(values[i]));
    return WriteTagToProfile(tag, composed, length) == length;
}

bool CICCWriteColorProfile::SetVCGTInformation(SVCGTGamma& gamma) {
    if (gamma.m_nGammaType == kVCGTFormula) {
        constexpr int kSize = 48;
        uint8_t data[kSize] = {};
        WriteTagPreamble('vcgt', data);
        PutBE32(data + 8, kVCGTFormula);
        const SVCGTFormula& f = gamma.m_formula;
        const uint32_t values[] = {f.m_nRedGamma,   f.m_nRedMin,   f.m_nRedMax,  f.m_nGreenGamma, f.m_nGreenMin,
                                   f.m_nGreenMax,   f.m_nBlueGamma, f.m_nBlueMin, f.m_nBlueMax};
        for (int i = 0; i < 9; ++i) PutBE32(data + 12 + 4 * i, values[i]);
        return WriteTagToProfile('vcgt', data, kSize) == kSize;
    }
    if (gamma.m_nGammaType != kVCGTTable) return false;

    const SVCGTTable& table = gamma.m_table;
    if (!table.m_pData) return false;
    const size_t entries = size_t{table.m_nChannels} * table.m_nEntryCount;
    const size_t size = size_t{table.m_nEntrySize} * entries * 2 + 18;
    if (size < 1 || !FitsTagSize(size)) return false;
    TagBuffer data = ZeroedBuffer(size);
    if (!data) return false;
    WriteTagPreamble('vcgt', data.get());
    PutBE32(data.get() + 8, kVCGTTable);
    PutBE16(data.get() + 12, table.m_nChannels);
    PutBE16(data.get() + 14, table.m_nEntryCount);
    PutBE16(data.get() + 16, table.m_nEntrySize);
    // The entries go out in host order, as the files this writer has always
    // made carry them; an entry size of 0 leaves no room for any.
    std::memcpy(data.get() + 18, table.m_pData, std::min(entries * 2, size - 18));
    return WriteTagToProfile('vcgt', data.get(), static_cast<int>(size)) == static_cast<int>(size);
}

bool CICCWriteColorProfile::SetXYZColorant(SMyXYZNumber& xyz, unsigned long tag) {
    constexpr int kSize = 20;
    uint8_t data[kSize] = {};
    WriteTagPreamble('XYZ ', data);
    PutBE32(data + 8, ToS15Fixed16(xyz.X));
    PutBE32(data + 12, ToS15Fixed16(xyz.Y));
    PutBE32(data + 16, ToS15Fixed16(xyz.Z));
    if (StoreTagBytes(tag, data, kSize) != kSize) return false;
    AccountTag(kSize);
    return true;
}

bool CICCWriteColorProfile::SetMediaWhitePoint(SMyXYZNumber& xyz) { return SetXYZColorant(xyz, 'wtpt'); }

bool CICCWriteColorProfile::SetMediaBlackPoint(SMyXYZNumber& xyz) { return SetXYZColorant(xyz, 'bkpt'); }

bool CICCWriteColorProfile::SetChromaticAdaptationTag(double* matrix) {
    if (!matrix) return false;
    constexpr int kSize = 8 + 9 * 4;
    uint8_t data[kSize] = {};
    WriteTagPreamble('sf32', data);
    for (int i = 0; i < 9; ++i) PutBE32(data + 8 + 4 * i, ToS15Fixed16(matrix[i]));
    return WriteTagToProfile('chad', data, kSize) == kSize;
}

bool CICCWriteColorProfile::SetStringTag(unsigned long tag, std::list<std::string>& strings) {
    size_t total = 0;
    for (const std::string& text : strings) total += text.size();

    if (tag == 'mluc') {
        // The record's bytes (language "EN", country 0x0348, length 12,
        // offset 24) are fixed: files written before carry exactly these. The
        // strings follow the record back to back, so every byte lies inside
        // the tag's total + 28 bytes whatever the strings' lengths.
        const size_t size = total + 28;
        if (!FitsTagSize(size)) return false;
        TagBuffer data = ZeroedBuffer(size);
        if (!data) return false;
        WriteTagPreamble('mluc', data.get());
        PutBE32(data.get() + 8, static_cast<uint32_t>(strings.size()));
        PutBE32(data.get() + 12, 12);
        const uint8_t languageAndCountry[] = {0x45, 0x4E, 0x03, 0x48};
        std::memcpy(data.get() + 16, languageAndCountry, sizeof languageAndCountry);
        PutBE32(data.get() + 20, 12);
        PutBE32(data.get() + 24, 24);
        size_t place = 28;
        for (const std::string& text : strings) {
            std::memcpy(data.get() + place, text.data(), text.size());
            place += text.size();
        }
        return WriteTagToProfile(tag, data.get(), static_cast<int>(size)) == static_cast<int>(size);
    }

    // 'desc' and every other text tag: a version-2 profile's description
    // tags (dmnd, dmdd, vued, scrd) are all of this type, so the tag stays
    // well-formed whichever of them is asked for. ASCII text, its NUL, empty
    // Unicode and ScriptCode parts: total + 91 bytes.
    const size_t size = total + 91;
    if (!FitsTagSize(size)) return false;
    TagBuffer data = ZeroedBuffer(size);
    if (!data) return false;
    WriteTagPreamble('desc', data.get());
    PutBE32(data.get() + 8, static_cast<uint32_t>(total + 1));
    if (!strings.empty()) std::memcpy(data.get() + 12, strings.front().data(), strings.front().size());
    return WriteTagToProfile(tag, data.get(), static_cast<int>(size)) == static_cast<int>(size);
}

bool CICCWriteColorProfile::SetCopyrightTag(unsigned long /*tag*/, std::list<std::string>& strings) {
    // The copyright always goes under 'cprt', whatever signature is passed.
    if (strings.empty()) return WriteTagToProfile('cprt', nullptr, 0) == 0;
    const std::string& text = strings.front();
    const size_t size = text.size() + 9;
    if (!FitsTagSize(size)) return false;
    TagBuffer data = ZeroedBuffer(size);
    if (!data) return false;
    WriteTagPreamble('text', data.get());
    std::memcpy(data.get() + 8, text.data(), text.size());
    return WriteTagToProfile('cprt', data.get(), static_cast<int>(size)) == static_cast<int>(size);
}
