#include "profile_validity.h"

#include <lcms2.h>

#include <algorithm>
#include <initializer_list>

#include <tesk/big_endian.h>

namespace tesk::mscms {

namespace {

bool TextEndsInside(std::span<const uint8_t> text) { return std::find(text.begin(), text.end(), 0) != text.end(); }

// Well-formedness of the tag types that required tags carry.
bool IsWellFormed(uint32_t signature, const Bytes& data) {
    const std::span<const uint8_t> tag(data);
    const BigEndianReader reader(tag);
    const uint32_t type = reader.U32(0);
    if (tag.size() < 8) return false;
    switch (signature) {
        case 'desc':
            if (type == 'mluc') break;
            if (type != 'desc' || tag.size() < 12) return false;
            {
                const uint32_t count = reader.U32(8);
                if (count > tag.size() - 12) return false;
                return count == 0 || TextEndsInside(tag.subspan(12, count));
            }
        case 'cprt':
            if (type == 'mluc') break;
            return type == 'text' && TextEndsInside(tag.subspan(8));
        case 'wtpt':
        case 'rXYZ':
        case 'gXYZ':
        case 'bXYZ':
            return type == 'XYZ ' && tag.size() >= 20;
        case 'rTRC':
        case 'gTRC':
        case 'bTRC':
        case 'kTRC':
            if (type == 'curv') {
                if (tag.size() < 12) return false;
                const uint64_t count = reader.U32(8);
                return tag.size() >= 12 + 2 * count;
            }
            if (type == 'para') {
                static constexpr size_t kParameters[] = {1, 3, 4, 5, 7};
                const uint16_t function = reader.U16(8);
                return function < 5 && tag.size() >= 12 + 4 * kParameters[function];
            }
            return false;
        case 'A2B0':
            return (type == 'mft1' || type == 'mft2' || type == 'mAB ') && tag.size() >= 32;
        case 'B2A0':
            return (type == 'mft1' || type == 'mft2' || type == 'mBA ') && tag.size() >= 32;
        case 'ncl2':
            return type == 'ncl2' && tag.size() >= 84;
        default:
            return true;
    }
    // mluc: a record table inside the tag, each string inside the tag.
    const uint32_t records = reader.U32(8);
    const uint32_t recordSize = reader.U32(12);
    if (tag.size() < 16 || recordSize < 12 || records > (tag.size() - 16) / recordSize) return false;
    for (uint32_t i = 0; i < records; ++i) {
        const size_t record = 16 + size_t{i} * recordSize;
        const uint32_t length = reader.U32(record + 4);
        const uint32_t offset = reader.U32(record + 8);
        if (offset > tag.size() || length > tag.size() - offset) return false;
    }
    return true;
}

bool HasAll(const IccContainer& c, std::initializer_list<uint32_t> signatures) {
    return std::all_of(signatures.begin(), signatures.end(), [&](uint32_t s) {
        const IccTag* tag = c.Find(s);
        return tag && IsWellFormed(s, *tag->data);
    });
}

// ICC.1's required tags by class. Output, colour-space and link profiles are
// asked for their first (perceptual) tables only: the colorimetric and
// saturation tables and the gamut tag are often left out of real profiles,
// and the engine falls back to the perceptual table when they are.
bool HasRequiredTags(const IccContainer& c, uint32_t profileClass, uint32_t dataSpace) {
    if (!HasAll(c, {'desc', 'cprt'})) return false;
    if (profileClass != 'link' && !HasAll(c, {'wtpt'})) return false;
    const bool matrixRgb = HasAll(c, {'rXYZ', 'gXYZ', 'bXYZ', 'rTRC', 'gTRC', 'bTRC'});
    switch (profileClass) {
        case 'scnr':
        case 'mntr':
            if (dataSpace == 'GRAY') return HasAll(c, {'kTRC'}) || HasAll(c, {'A2B0'});
            if (dataSpace == 'RGB ') return matrixRgb || HasAll(c, {'A2B0'});
            return HasAll(c, {'A2B0'});
        case 'prtr':
            if (dataSpace == 'GRAY') return HasAll(c, {'kTRC'}) || HasAll(c, {'A2B0', 'B2A0'});
            return HasAll(c, {'A2B0', 'B2A0'});
        case 'spac':
            return HasAll(c, {'A2B0', 'B2A0'}) || (dataSpace == 'RGB ' && matrixRgb);
        case 'link':
        case 'abst':
            return HasAll(c, {'A2B0'});
        case 'nmcl':
            return HasAll(c, {'ncl2'});
        default:
            return false;
    }
}

}  // namespace

bool IsKnownClass(uint32_t profileClass) {
    for (uint32_t known : {'scnr', 'mntr', 'prtr', 'link', 'spac', 'abst', 'nmcl'})
        if (profileClass == known) return true;
    return false;
}

bool IsKnownColorSpace(uint32_t space) {
    for (uint32_t known : {'XYZ ', 'Lab ', 'Luv ', 'YCbr', 'Yxy ', 'RGB ', 'GRAY', 'HSV ', 'HLS ', 'CMYK', 'CMY ',
                           'MCH1', 'MCH2', 'MCH3', 'MCH4', 'MCH5', 'MCH6', 'MCH7', 'MCH8', 'MCH9', 'MCHA', 'MCHB',
                           'MCHC', 'MCHD', 'MCHE', 'MCHF'})
        if (space == known) return true;
    // 2CLR .. FCLR: n-colour spaces
    const uint32_t digit = space >> 24;
    return (space & 0x00FFFFFF) == 'CLR' && ((digit >= '2' && digit <= '9') || (digit >= 'A' && digit <= 'F'));
}

bool IsProfileFile(const IccContainer& container) {
    const uint32_t major = container.header[8];
    return major >= 2 && major <= 4 && BigEndianReader(container.header).U32(36) == 'acsp';
}

bool IsValidProfile(const IccContainer& container) {
    const BigEndianReader header(container.header);
    if (!IsProfileFile(container)) return false;
    const uint32_t profileClass = header.U32(12);
    const uint32_t dataSpace = header.U32(16);
    const uint32_t connectionSpace = header.U32(20);
    if (!IsKnownClass(profileClass) || !IsKnownColorSpace(dataSpace)) return false;
    // A device link connects two device spaces; every other class meets at the PCS.
    if (profileClass == 'link' ? !IsKnownColorSpace(connectionSpace)
                               : connectionSpace != 'XYZ ' && connectionSpace != 'Lab ')
        return false;
    if (!HasRequiredTags(container, profileClass, dataSpace)) return false;

    const Bytes bytes = SerializeIccContainer(container);
    cmsHPROFILE profile = cmsOpenProfileFromMemTHR(nullptr, bytes.data(), static_cast<cmsUInt32Number>(bytes.size()));
    if (!profile) return false;
    // Have the engine decode the tags it will need, so that damage inside a
    // table shows here rather than when a transform is made.
    bool decoded = true;
    for (uint32_t signature : {'desc', 'cprt', 'wtpt', 'rXYZ', 'gXYZ', 'bXYZ', 'rTRC', 'gTRC', 'bTRC', 'kTRC',
                               'A2B0', 'B2A0'}) {
        const auto tag = static_cast<cmsTagSignature>(signature);
        if (cmsIsTag(profile, tag) && !cmsReadTag(profile, tag)) {
            decoded = false;
            break;
        }
    }
    cmsCloseProfile(profile);
    return decoded;
}

}  // namespace tesk::mscms
