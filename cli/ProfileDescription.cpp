#include "cli/ProfileDescription.h"

#include <lcms2.h>
#include <tesk/path.h>

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

// textDescriptionType: ASCII part, Unicode part (UTF-16BE), empty ScriptCode part.
std::vector<uint8_t> TextDescriptionTag(const std::string& utf8) {
    const std::wstring wide = tesk::path::Wide(utf8);
    std::string ascii;
    std::vector<uint16_t> utf16;
    for (wchar_t c : wide) {
        const uint32_t code = uint32_t(c);
        ascii += code < 0x80 ? char(code) : '?';
        if (code >= 0x10000) {
            utf16.push_back(uint16_t(0xD800 + ((code - 0x10000) >> 10)));
            utf16.push_back(uint16_t(0xDC00 + ((code - 0x10000) & 0x3FF)));
        } else {
            utf16.push_back(uint16_t(code));
        }
    }
    std::vector<uint8_t> tag = {'d', 'e', 's', 'c', 0, 0, 0, 0};
    PutBE32(tag, uint32_t(ascii.size() + 1));
    tag.insert(tag.end(), ascii.begin(), ascii.end());
    tag.push_back(0);
    PutBE32(tag, 0);  // Unicode language code: none stated
    PutBE32(tag, uint32_t(utf16.size() + 1));
    for (uint16_t unit : utf16) PutBE16(tag, unit);
    PutBE16(tag, 0);
    PutBE16(tag, 0);      // ScriptCode code
    tag.push_back(0);     // ScriptCode count
    tag.resize(tag.size() + 67, 0);
    return tag;
}

struct SProfileCloser {
    void operator()(void* profile) const { cmsCloseProfile(profile); }
};

}  // namespace

std::vector<uint8_t> WithDescription(const std::vector<uint8_t>& bytes, const std::string& utf8) {
    std::unique_ptr<void, SProfileCloser> profile(cmsOpenProfileFromMem(bytes.data(), cmsUInt32Number(bytes.size())));
    const std::vector<uint8_t> tag = TextDescriptionTag(utf8);
    cmsUInt32Number size = 0;
    if (!profile || !cmsWriteRawTag(profile.get(), cmsSigProfileDescriptionTag, tag.data(), cmsUInt32Number(tag.size())) ||
        !cmsSaveProfileToMem(profile.get(), nullptr, &size))
        throw CCliError(EExit::Failed, "the profile's description could not be written");
    std::vector<uint8_t> out(size);
    if (!cmsSaveProfileToMem(profile.get(), out.data(), &size))
        throw CCliError(EExit::Failed, "the profile's description could not be written");
    out.resize(size);
    return out;
}

}  // namespace teskcolor
