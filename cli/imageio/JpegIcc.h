// An ICC profile carried by a JPEG: split over APP2 markers, each starting
// with "ICC_PROFILE\0", its 1-based sequence number and the marker count.
#pragma once
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace teskcolor {

struct SMarkerBytes {
    const uint8_t* data;
    size_t size;
};

inline constexpr size_t kIccMarkerHeader = 14;
inline constexpr size_t kIccMarkerPayload = 65533 - kIccMarkerHeader;

// The profile joined from the APP2 markers in any order; markers of other
// kinds are skipped. Nothing when no marker carries a profile; an empty
// profile when the chunks do not form one complete profile (a count that
// disagrees, a missing or repeated chunk).
std::optional<std::vector<uint8_t>> JoinIccMarkers(const std::vector<SMarkerBytes>& app2Markers);
// The APP2 marker bodies that carry `profile`; empty for an empty profile or
// one too large for 255 markers.
std::vector<std::vector<uint8_t>> SplitIccProfile(const std::vector<uint8_t>& profile);

}  // namespace teskcolor
