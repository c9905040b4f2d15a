// The TIFF reader of teskcolor on arbitrary bytes: an image or a CCliError,
// never a crash, a hang or a read outside the data.
#include <cstddef>
#include <cstdint>

#include "cli/Errors.h"
#include "cli/imageio/Codecs.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    teskcolor::SReadOptions options;
    options.maxPixels = 1 << 22;
    try {
        const teskcolor::SImage image = teskcolor::ReadTiffMemory(data, size, options);
        (void)image;
    } catch (const teskcolor::CCliError&) {
    }
    return 0;
}
