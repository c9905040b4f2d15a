#include "icc/TagDecoders.h"

#include <cmath>
#include <new>

#include "host/VException.h"

namespace tesk::icc {
namespace {

constexpr double kFixed16 = 1.52587890625e-5;  // 1 / 65536
constexpr int kShortCurveTag = 202;

uint64_t CurveBytesNeeded(uint32_t count) {
    if (count == 0) return 12;
    if (count == 1) return 14;
    return 12 + 2 * uint64_t{count};
}

}  // namespace

bool DecodeCurve(const TagBytes& tag, SICCCurveType& curve) {
    const uint32_t count = tag.U32(8);
    curve.m_nCount = count;
    curve.m_pEntries = nullptr;
    const bool shortTag = tag.Size() < CurveBytesNeeded(count);
    if (count >= 2) {
        // The entries are read as far as the count says, zeros past the tag's
        // end, and only then is the length checked; a short tag claiming more
        // than kMaxCurveEntries is refused before anything is allocated.
        if (shortTag && count > kMaxCurveEntries) throw CVException(kShortCurveTag);
        curve.m_pEntries = new (std::nothrow) uint16_t[count]();
        if (!curve.m_pEntries) throw CVException(kShortCurveTag);
        for (uint32_t i = 0; i < count; ++i) curve.m_pEntries[i] = tag.U16(12 + 2 * uint64_t{i});
    } else if (count == 1) {
        curve.m_fGamma = static_cast<float>(tag.U16(12)) * 0.00390625f;
    }
    if (shortTag) throw CVException(kShortCurveTag);
    return true;
}

bool DecodeParametricCurve(const TagBytes& tag, SICCParametricCurveType& curve) {
    const uint16_t functionType = tag.U16(8);
    curve.m_nFunctionType = functionType;
    if (functionType <= 4) curve.m_nParamCount = functionType + 1u;
    return DecodeParametricWords(tag, curve, functionType);
}

bool DecodeParametricWords(const TagBytes& tag, SICCParametricCurveType& curve, uint16_t functionType) {
    // The words are taken from the tag's first byte, signature and reserved
    // words included, so g reads as 1.0 and a as 0.0 for any real tag.
    double* const slots[] = {&curve.m_dG, &curve.m_dA, &curve.m_dB, &curve.m_dC, &curve.m_dD, &curve.m_dE};
    const uint32_t words = functionType + 1u + (functionType != 0 ? 1u : 0u);
    for (uint32_t i = 0; i < words; ++i) {
        if (i >= std::size(slots)) return false;
        double value = tag.U32(4 * uint64_t{i}) * kFixed16;
        if (value < 0.0) value = 0.0;
        if (value > 1.0) value = 1.0;
        *slots[i] = value;
    }
    return true;
}

double FitGamma(const SICCCurveType& curve) {
    constexpr double kDefaultGamma = 2.2;
    if (curve.m_nCount < 3 || !curve.m_pEntries) return kDefaultGamma;
    const uint32_t last = curve.m_nCount - 1;
    const double top = curve.m_pEntries[last];
    // Every sample of a curve ending at 0 is 0/0 or x/0: none can be used.
    if (top == 0.0) return kDefaultGamma;
    double weightSum = 0.0;
    double weightedSum = 0.0;
    for (uint32_t i = 1; i < last; ++i) {
        const double x = static_cast<double>(i) / last;
        const double y = curve.m_pEntries[i] / top;
        if (!(y > 0.0 && y < 1.0)) continue;
        const double weight = x <= 0.5 ? 2.0 * x : 2.0 * (1.0 - x);
        weightSum += weight;
        weightedSum += weight * std::log(y) / std::log(x);
    }
    return weightSum > 0.0 ? weightedSum / weightSum : kDefaultGamma;
}

bool IsSrgbCurve(const SICCCurveType& curve) {
    if (curve.m_nCount < 2 || !curve.m_pEntries) return false;
    const uint32_t last = curve.m_nCount - 1;
    const double top = curve.m_pEntries[last] != 0 ? curve.m_pEntries[last] : 1.0;
    double sumOfSquares = 0.0;
    for (uint32_t i = 0; i < curve.m_nCount; ++i) {
        const double x = static_cast<double>(i) / last;
        const double srgb = x <= 0.04045 ? x / 12.92 : std::pow((x + 0.055) / 1.055, 2.4);
        const double difference = srgb - curve.m_pEntries[i] / top;
        sumOfSquares += difference * difference;
    }
    return std::sqrt(sumOfSquares / curve.m_nCount) < 4.4e-6;
}

bool CurvesAgree(const SICCCurveType& red, const SICCCurveType& green, const SICCCurveType& blue) {
    if (red.m_nCount != green.m_nCount || red.m_nCount != blue.m_nCount) return true;
    if (red.m_nCount == 0) return true;
    if (red.m_nCount == 1) return red.m_fGamma == green.m_fGamma && red.m_fGamma == blue.m_fGamma;
    if (!red.m_pEntries || !green.m_pEntries || !blue.m_pEntries) return false;
    for (uint32_t i = 0; i < red.m_nCount; ++i) {
        if (red.m_pEntries[i] != green.m_pEntries[i] || red.m_pEntries[i] != blue.m_pEntries[i]) return false;
    }
    return true;
}

bool DecodeVCGT(const TagBytes& tag, SVCGTGamma& gamma) {
    const uint32_t type = tag.U32(8);
    const uint64_t size = tag.Size();
    // Types other than table and formula are the older layout without the type word.
    uint64_t dataStart = type == kVCGTTable || type == kVCGTFormula ? 12 : 8;

    if (type == kVCGTFormula || (type != kVCGTTable && size < 45)) {
        gamma.m_nGammaType = kVCGTFormula;
        uint32_t* const fields[] = {&gamma.m_formula.m_nRedGamma,   &gamma.m_formula.m_nRedMin,
                                    &gamma.m_formula.m_nRedMax,     &gamma.m_formula.m_nGreenGamma,
                                    &gamma.m_formula.m_nGreenMin,   &gamma.m_formula.m_nGreenMax,
                                    &gamma.m_formula.m_nBlueGamma,  &gamma.m_formula.m_nBlueMin,
                                    &gamma.m_formula.m_nBlueMax};
        for (size_t i = 0; i < std::size(fields); ++i) *fields[i] = tag.U32(dataStart + 4 * i);
        return true;
    }

    gamma.m_nGammaType = kVCGTTable;
    SVCGTTable& table = gamma.m_table;
    table.m_pData = nullptr;
    int64_t expectedLength;
    if (type == kVCGTTable) {
        table.m_nChannels = tag.U16(12);
        table.m_nEntryCount = tag.U16(14);
        table.m_nEntrySize = tag.U16(16);
        dataStart = 18;
        expectedLength = static_cast<int64_t>(size) - 18;
    } else {
        table.m_nChannels = 3;
        table.m_nEntryCount = 256;
        table.m_nEntrySize = 1;
        expectedLength = size >= 786 && size <= 1553 ? 768 : 0;
    }
    // The entry size is multiplied in on purpose: a 2-byte table gets twice
    // the room its data need, the rest zero.
    const uint64_t valueCount = uint64_t{table.m_nChannels} * table.m_nEntryCount * table.m_nEntrySize;
    if (valueCount > kMaxVCGTValues) return false;
    table.m_pData = new (std::nothrow) uint16_t[valueCount]();
    if (!table.m_pData) return false;

    if (static_cast<int64_t>(valueCount) == expectedLength && table.m_nEntrySize == 1) {
        for (uint64_t i = 0; i < valueCount; ++i) table.m_pData[i] = static_cast<uint16_t>(tag.U8(dataStart + i) << 8);
    } else {
        // A value whose last byte is the tag's last byte is not taken.
        uint64_t place = dataStart;
        for (uint64_t i = 0; i < valueCount && place + 2 < size; ++i, place += 2) table.m_pData[i] = tag.U16(place);
    }
    return true;
}

bool DecodeXYZ(const TagBytes& tag, SMyXYZNumber& xyz) {
    if (tag.TypeSignature() != kXYZTypeSignature) return false;
    // Unsigned on purpose: colorants and white points are never negative.
    if (tag.Size() <= 8) return false;
    xyz.X = tag.U32(8) * kFixed16;
    if (tag.Size() <= 12) return false;
    xyz.Y = tag.U32(12) * kFixed16;
    if (tag.Size() <= 16) return false;
    xyz.Z = tag.U32(16) * kFixed16;
    return true;
}

void DecodeMatrix(const TagBytes& tag, double matrix[9]) {
    for (int i = 0; i < 9; ++i) matrix[i] = tag.U32(8 + 4 * uint64_t(i)) * kFixed16;
}

std::string DecodeDescAscii(const TagBytes& tag) {
    const uint32_t count = tag.U32(8);
    std::string text;
    for (uint64_t i = 0; i < count; ++i) {
        const uint8_t byte = tag.U8(12 + i);
        if (byte == 0) break;
        text.push_back(static_cast<char>(byte));
    }
    return text;
}

namespace {
std::wstring WidenUntilNul(const TagBytes& tag, uint64_t start) {
    std::wstring text;
    for (uint64_t i = start; i < tag.Size() && tag.U8(i) != 0; ++i) text.push_back(static_cast<wchar_t>(tag.U8(i)));
    return text;
}
}  // namespace

std::wstring DecodeDescWide(const TagBytes& tag) { return WidenUntilNul(tag, 12); }

std::wstring DecodeTextType(const TagBytes& tag) { return WidenUntilNul(tag, 8); }

bool DecodeMlucFirstRecord(const TagBytes& tag, std::wstring& text) {
    if (tag.U32(8) == 0) return false;
    const uint32_t length = tag.U32(20);
    const uint32_t offset = tag.U32(24);
    std::u16string units;
    // Past the tag's end every unit reads as 0, which ends the string there.
    for (uint64_t i = 0; i < length / 2; ++i) {
        const uint16_t unit = tag.U16(offset + 2 * i);
        if (unit == 0) break;
        units.push_back(static_cast<char16_t>(unit));
    }
    text = Utf16ToWide(units);
    return true;
}

std::wstring Utf16ToWide(const std::u16string& units) {
    std::wstring text;
    text.reserve(units.size());
    for (size_t i = 0; i < units.size(); ++i) {
        const char32_t unit = units[i];
        if (unit >= 0xD800 && unit <= 0xDBFF && i + 1 < units.size() && units[i + 1] >= 0xDC00 &&
            units[i + 1] <= 0xDFFF) {
            // A 2-byte wchar_t is UTF-16 itself: the pair stays a pair.
            if constexpr (sizeof(wchar_t) == 2) {
                text.push_back(static_cast<wchar_t>(unit));
                text.push_back(static_cast<wchar_t>(units[i + 1]));
            } else {
                text.push_back(static_cast<wchar_t>(0x10000 + ((unit - 0xD800) << 10) + (units[i + 1] - 0xDC00)));
            }
            ++i;
        } else if (unit >= 0xD800 && unit <= 0xDFFF) {
            text.push_back(L'\xFFFD');
        } else {
            text.push_back(static_cast<wchar_t>(unit));
        }
    }
    return text;
}

}  // namespace tesk::icc
