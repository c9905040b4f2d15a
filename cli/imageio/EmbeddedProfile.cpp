#include "cli/imageio/EmbeddedProfile.h"

#include "cli/Errors.h"
#include "cli/imageio/Image.h"

namespace teskcolor {

namespace {

constexpr size_t kHeaderBytes = 128;

uint32_t BigEndian32(const uint8_t* p) { return uint32_t(p[0]) << 24 | uint32_t(p[1]) << 16 | uint32_t(p[2]) << 8 | p[3]; }

std::string SignatureText(uint32_t signature) {
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8) {
        const char c = char((signature >> shift) & 0xFF);
        text += c >= 0x20 && c < 0x7F ? c : '?';
    }
    while (!text.empty() && text.back() == ' ') text.pop_back();
    return text;
}

}  // namespace

std::vector<uint8_t> TakeEmbeddedProfile(const std::string& name, const uint8_t* data, size_t size,
                                         EVPixelFormat format, bool cmyk) {
    const auto damaged = [&](const std::string& why) {
        return CCliError(EExit::Corrupt, name + ": the embedded ICC profile is damaged (" + why + ")");
    };
    if (size < kHeaderBytes) throw damaged(std::to_string(size) + " bytes, shorter than a profile header");
    const uint32_t declared = BigEndian32(data);
    if (declared < kHeaderBytes || declared > size)
        throw damaged("its header says " + std::to_string(declared) + " bytes, the file holds " + std::to_string(size));
    if (BigEndian32(data + 36) != 0x61637370) throw damaged("no 'acsp' signature");
    const uint32_t space = BigEndian32(data + 16);
    const uint32_t needed = cmyk ? 0x434D594B : CVPixelFormat::IsGreyscale(format) ? 0x47524159 : 0x52474220;
    if (space != needed)
        throw CCliError(EExit::WrongProfile, name + ": the embedded profile is " + SignatureText(space) +
                                                 ", which does not fit its " + DescribeLayout(format, cmyk) + " pixels");
    return {data, data + size};
}

}  // namespace teskcolor
