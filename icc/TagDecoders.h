// Decoders of raw ICC tag bytes. Pure functions over one tag's bytes: every
// read goes through TagBytes, which never leaves the tag and reads a byte past
// its end as zero, so counts, offsets and lengths taken from the file can be
// followed as written without touching memory outside the tag.
#pragma once
#include <cstddef>
#include <cstdint>
#include <string>

#include <tesk/big_endian.h>

#include "icc/ICCTypes.h"

namespace tesk::icc {

// One tag's bytes; its first word is the tag's type.
class TagBytes : public BigEndianReader {
public:
    using BigEndianReader::BigEndianReader;
    uint32_t TypeSignature() const { return U32(0); }
};

inline constexpr uint32_t kDescTypeSignature = IccSignature("desc");
inline constexpr uint32_t kMlucTypeSignature = IccSignature("mluc");
inline constexpr uint32_t kTextTypeSignature = IccSignature("text");
inline constexpr uint32_t kXYZTypeSignature = IccSignature("XYZ ");

// More values than this in a 'vcgt' table cannot be allocated here.
inline constexpr uint64_t kMaxVCGTValues = uint64_t{1} << 24;

// A short 'curv' tag claiming more entries than this is not allocated.
inline constexpr uint32_t kMaxCurveEntries = uint32_t{1} << 24;

// 'curv': count, then the single gamma or the entries (new[]). A tag shorter
// than its count needs throws CVException(202) after its entries were
// allocated and filled (zeros past the end): the caller still owns them. A
// short tag claiming more than kMaxCurveEntries throws with the entries null.
bool DecodeCurve(const TagBytes& tag, SICCCurveType& curve);

// 'para': function type and parameter count, then DecodeParametricWords.
bool DecodeParametricCurve(const TagBytes& tag, SICCParametricCurveType& curve);
// Reads type + 1 (+1 unless type 0) words from the tag's first byte on into
// g, a, b, c, d, e, each as unsigned / 65536 clamped to 0..1; false when a
// seventh word would be needed.
bool DecodeParametricWords(const TagBytes& tag, SICCParametricCurveType& curve, uint16_t functionType);

// Weighted log-log gamma of a sampled curve; 2.2 when nothing can be fitted.
double FitGamma(const SICCCurveType& curve);
// Whether a sampled curve follows the sRGB curve (RMS error below 4.4e-6).
bool IsSrgbCurve(const SICCCurveType& curve);
// Whether a profile's three curves agree; curves of different lengths count
// as agreeing.
bool CurvesAgree(const SICCCurveType& red, const SICCCurveType& green, const SICCCurveType& blue);

// 'vcgt' in table or formula form. False only when the table is too large to
// allocate (kMaxVCGTValues).
bool DecodeVCGT(const TagBytes& tag, SVCGTGamma& gamma);

// 'XYZ ': false for another type or when the tag ends before Z; X and Y are
// still filled when the tag reaches them.
bool DecodeXYZ(const TagBytes& tag, SMyXYZNumber& xyz);
// Nine s15Fixed16 words from byte 8, read as unsigned / 65536.
void DecodeMatrix(const TagBytes& tag, double matrix[9]);

// 'desc': up to `count` ASCII bytes from byte 12, ending at the first NUL.
std::string DecodeDescAscii(const TagBytes& tag);
// 'desc' ASCII text from byte 12 to its NUL, a byte per character.
std::wstring DecodeDescWide(const TagBytes& tag);
// 'mluc': the first record's UTF-16BE string up to its first NUL, with
// surrogate pairs joined. False when the tag holds no record.
bool DecodeMlucFirstRecord(const TagBytes& tag, std::wstring& text);
// 'text': ASCII from byte 8 to its NUL, a byte per character.
std::wstring DecodeTextType(const TagBytes& tag);

// UTF-16 code units to wide characters; a lone surrogate becomes U+FFFD.
std::wstring Utf16ToWide(const std::u16string& units);

}  // namespace tesk::icc
