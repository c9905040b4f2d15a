#include "cli/ProfileDescription.h"

#include <lcms2.h>
#include <tesk/path.h>

#include <algorithm>
#include <memory>

#include "cli/Errors.h"

namespace teskcolor {

namespace {

void PutBE32(std::vector<uint8_t>& out, uint32_t value) {
    for (int shift = 24; shift >= 0; shift -= 8) out.push_back(uint8_t(value >> shift));
}

void PutBE16(std::vector<uint8_t>& out, uint32_t value) {
    out.push_back(uint8_t(value >> 8));
    out.push_back(uint8_t(value));
}

bool IsSevenBit(const std::string& text) {
    return std::all_of(text.begin(), text.end(), [](char c) { return (unsigned char)c < 0x80; });
}

std::vector<uint16_t> Utf16(const std::string& utf8) {
    std::vector<uint16_t> units;
    for (wchar_t c : tesk::path::Wide(utf8)) {
        const uint32_t code = uint32_t(c);
        if (code >= 0x10000) {
            units.push_back(uint16_t(0xD800 + ((code - 0x10000) >> 10)));
            units.push_back(uint16_t(0xDC00 + ((code - 0x10000) & 0x3FF)));
        } else {
            units.push_back(uint16_t(code));
        }
    }
    return units;
}

// textDescriptionType of a 7-bit text: ASCII part, Unicode part (UTF-16BE), empty ScriptCode part.
std::vector<uint8_t> TextDescriptionTag(const std::string& ascii) {
    std::vector<uint8_t> tag = {'d', 'e', 's', 'c', 0, 0, 0, 0};
    PutBE32(tag, uint32_t(ascii.size() + 1));
    tag.insert(tag.end(), ascii.begin(), ascii.end());
    tag.push_back(0);
    PutBE32(tag, 0);  // Unicode language code: none stated
    PutBE32(tag, uint32_t(ascii.size() + 1));
    for (char c : ascii) PutBE16(tag, uint8_t(c));
    PutBE16(tag, 0);
    PutBE16(tag, 0);   // ScriptCode code
    tag.push_back(0);  // ScriptCode count
    tag.resize(tag.size() + 67, 0);
    return tag;
}

// multiLocalizedUnicodeType with one record, en-US.
std::vector<uint8_t> MlucTag(const std::string& utf8) {
    const std::vector<uint16_t> units = Utf16(utf8);
    std::vector<uint8_t> tag = {'m', 'l', 'u', 'c', 0, 0, 0, 0};
    PutBE32(tag, 1);   // records
    PutBE32(tag, 12);  // record size
    tag.insert(tag.end(), {'e', 'n', 'U', 'S'});
    PutBE32(tag, uint32_t(2 * units.size()));
    PutBE32(tag, 28);  // the string follows the one record
    for (uint16_t unit : units) PutBE16(tag, unit);
    return tag;
}

struct SProfileCloser {
    void operator()(void* profile) const { cmsCloseProfile(profile); }
};

bool WriteRaw(cmsHPROFILE profile, cmsTagSignature signature, const std::vector<uint8_t>& tag) {
    return cmsWriteRawTag(profile, signature, tag.data(), cmsUInt32Number(tag.size()));
}

}  // namespace

std::vector<uint8_t> WithTexts(const std::vector<uint8_t>& bytes, const std::string& description,
                               const std::string& copyright) {
    std::unique_ptr<void, SProfileCloser> profile(cmsOpenProfileFromMem(bytes.data(), cmsUInt32Number(bytes.size())));
    bool ok = profile != nullptr;
    if (ok && IsSevenBit(description) && IsSevenBit(copyright)) {
        ok = WriteRaw(profile.get(), cmsSigProfileDescriptionTag, TextDescriptionTag(description));
    } else if (ok) {
        cmsSetProfileVersion(profile.get(), 4.3);
        ok = WriteRaw(profile.get(), cmsSigProfileDescriptionTag, MlucTag(description)) &&
             WriteRaw(profile.get(), cmsSigCopyrightTag, MlucTag(copyright)) && cmsMD5computeID(profile.get());
    }
    cmsUInt32Number size = 0;
    if (!ok || !cmsSaveProfileToMem(profile.get(), nullptr, &size))
        throw CCliError(EExit::Failed, "the profile's description could not be written");
    std::vector<uint8_t> out(size);
    if (!cmsSaveProfileToMem(profile.get(), out.data(), &size))
        throw CCliError(EExit::Failed, "the profile's description could not be written");
    out.resize(size);
    return out;
}

}  // namespace teskcolor
