#include "cli/imageio/JpegIcc.h"

#include <algorithm>
#include <cstring>

namespace teskcolor {

namespace {
constexpr char kIccIdentifier[12] = {'I', 'C', 'C', '_', 'P', 'R', 'O', 'F', 'I', 'L', 'E', '\0'};
}

std::optional<std::vector<uint8_t>> JoinIccMarkers(const std::vector<SMarkerBytes>& app2Markers) {
    std::vector<const SMarkerBytes*> chunks;
    int count = 0;
    bool present = false;
    for (const SMarkerBytes& marker : app2Markers) {
        if (marker.size < sizeof kIccIdentifier || std::memcmp(marker.data, kIccIdentifier, sizeof kIccIdentifier) != 0)
            continue;
        present = true;
        if (marker.size < kIccMarkerHeader) return std::vector<uint8_t>{};
        const int sequence = marker.data[12];
        const int total = marker.data[13];
        if (total == 0 || sequence == 0 || sequence > total) return std::vector<uint8_t>{};
        if (count == 0) {
            count = total;
            chunks.assign(size_t(count), nullptr);
        }
        if (total != count || chunks[size_t(sequence - 1)]) return std::vector<uint8_t>{};
        chunks[size_t(sequence - 1)] = &marker;
    }
    if (!present) return std::nullopt;
    std::vector<uint8_t> profile;
    for (const SMarkerBytes* chunk : chunks) {
        if (!chunk) return std::vector<uint8_t>{};
        profile.insert(profile.end(), chunk->data + kIccMarkerHeader, chunk->data + chunk->size);
    }
    return profile;
}

std::vector<std::vector<uint8_t>> SplitIccProfile(const std::vector<uint8_t>& profile) {
    const size_t count = (profile.size() + kIccMarkerPayload - 1) / kIccMarkerPayload;
    if (count == 0 || count > 255) return {};
    std::vector<std::vector<uint8_t>> markers;
    for (size_t i = 0; i < count; ++i) {
        const size_t first = i * kIccMarkerPayload;
        const size_t length = std::min(kIccMarkerPayload, profile.size() - first);
        std::vector<uint8_t> body(kIccIdentifier, kIccIdentifier + sizeof kIccIdentifier);
        body.push_back(uint8_t(i + 1));
        body.push_back(uint8_t(count));
        body.insert(body.end(), profile.begin() + long(first), profile.begin() + long(first + length));
        markers.push_back(std::move(body));
    }
    return markers;
}

}  // namespace teskcolor
