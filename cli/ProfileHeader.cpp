#include "cli/ProfileHeader.h"

namespace teskcolor {

namespace {
uint32_t Be32(const uint8_t* p) { return uint32_t(p[0]) << 24 | uint32_t(p[1]) << 16 | uint32_t(p[2]) << 8 | p[3]; }
uint16_t Be16(const uint8_t* p) { return uint16_t(p[0] << 8 | p[1]); }
double S15Fixed16(const uint8_t* p) { return int32_t(Be32(p)) / 65536.0; }
}  // namespace

std::optional<SProfileHeader> ParseProfileHeader(const uint8_t* data, size_t size) {
    if (!data || size < 128) return std::nullopt;
    SProfileHeader header;
    header.size = Be32(data);
    header.cmmType = Be32(data + 4);
    header.version = Be32(data + 8);
    header.deviceClass = Be32(data + 12);
    header.dataColorSpace = Be32(data + 16);
    header.connectionSpace = Be32(data + 20);
    for (int i = 0; i < 6; ++i) header.dateTime[i] = Be16(data + 24 + 2 * i);
    header.signature = Be32(data + 36);
    header.platform = Be32(data + 40);
    header.flags = Be32(data + 44);
    header.manufacturer = Be32(data + 48);
    header.model = Be32(data + 52);
    header.attributes = uint64_t(Be32(data + 56)) << 32 | Be32(data + 60);
    header.renderingIntent = Be32(data + 64);
    for (int i = 0; i < 3; ++i) header.illuminant[i] = S15Fixed16(data + 68 + 4 * i);
    header.creator = Be32(data + 80);
    return header;
}

std::string SignatureText(uint32_t signature) {
    if (signature == 0) return "";
    std::string text;
    for (int shift = 24; shift >= 0; shift -= 8) {
        const char c = char((signature >> shift) & 0xFF);
        text += (c >= 0x20 && c < 0x7F) ? c : '.';
    }
    return text;
}

std::string VersionText(uint32_t version) {
    return std::to_string(version >> 24) + "." + std::to_string((version >> 20) & 0xF) + "." +
           std::to_string((version >> 16) & 0xF);
}

}  // namespace teskcolor
