#include "cli/ProfileHeader.h"

#include <tesk/big_endian.h>

namespace teskcolor {

std::optional<SProfileHeader> ParseProfileHeader(const uint8_t* data, size_t size) {
    if (!data || size < 128) return std::nullopt;
    const tesk::BigEndianReader bytes(data, 128);
    SProfileHeader header;
    header.size = bytes.U32(0);
    header.cmmType = bytes.U32(4);
    header.version = bytes.U32(8);
    header.deviceClass = bytes.U32(12);
    header.dataColorSpace = bytes.U32(16);
    header.connectionSpace = bytes.U32(20);
    for (int i = 0; i < 6; ++i) header.dateTime[i] = bytes.U16(24 + 2 * i);
    header.signature = bytes.U32(36);
    header.platform = bytes.U32(40);
    header.flags = bytes.U32(44);
    header.manufacturer = bytes.U32(48);
    header.model = bytes.U32(52);
    header.attributes = uint64_t{bytes.U32(56)} << 32 | bytes.U32(60);
    header.renderingIntent = bytes.U32(64);
    for (int i = 0; i < 3; ++i) header.illuminant[i] = static_cast<int32_t>(bytes.U32(68 + 4 * i)) / 65536.0;
    header.creator = bytes.U32(80);
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
