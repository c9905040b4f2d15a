// The 128-byte ICC profile header read straight from a profile's bytes, for
// reporting and for telling a profile's class before the module is asked.
#pragma once
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace teskcolor {

struct SProfileHeader {
    uint32_t size = 0;
    uint32_t cmmType = 0;
    uint32_t version = 0;
    uint32_t deviceClass = 0;
    uint32_t dataColorSpace = 0;
    uint32_t connectionSpace = 0;
    uint16_t dateTime[6] = {};  // year, month, day, hours, minutes, seconds
    uint32_t signature = 0;     // 'acsp'
    uint32_t platform = 0;
    uint32_t flags = 0;
    uint32_t manufacturer = 0;
    uint32_t model = 0;
    uint64_t attributes = 0;
    uint32_t renderingIntent = 0;
    double illuminant[3] = {};
    uint32_t creator = 0;
};

// Nothing when fewer than 128 bytes are given; no other check is made.
std::optional<SProfileHeader> ParseProfileHeader(const uint8_t* data, size_t size);
// A four-character signature as text ("mntr"); unprintable bytes become '.'; "" for 0.
std::string SignatureText(uint32_t signature);
// "4.3.0" from the version field.
std::string VersionText(uint32_t version);

}  // namespace teskcolor
