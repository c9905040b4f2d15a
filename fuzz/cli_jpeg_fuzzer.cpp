// The JPEG reader of teskcolor on arbitrary bytes: an image or a CCliError,
// never a crash, a hang or a read outside the data.
#include <cstddef>
#include <algorithm>
#include <cstdint>
#include <vector>

#include "cli/Errors.h"
#include "cli/imageio/Codecs.h"
#include "cli/imageio/JpegIcc.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    teskcolor::SReadOptions options;
    options.maxPixels = 1 << 22;
    try {
        const teskcolor::SImage image = teskcolor::ReadJpegMemory(data, size, options);
        (void)image;
    } catch (const teskcolor::CCliError&) {
    }
    // The same bytes as a run of APP2 marker bodies, each preceded by a length byte.
    std::vector<teskcolor::SMarkerBytes> markers;
    for (size_t at = 0; at < size;) {
        const size_t length = std::min<size_t>(data[at], size - at - 1);
        markers.push_back({data + at + 1, length});
        at += 1 + length;
    }
    const std::vector<uint8_t> profile = teskcolor::JoinIccMarkers(markers).value_or(std::vector<uint8_t>{});
    if (!profile.empty() && teskcolor::SplitIccProfile(profile).empty() && profile.size() <= 255 * teskcolor::kIccMarkerPayload)
        __builtin_trap();
    return 0;
}
