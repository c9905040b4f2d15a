// What `view` and `print` hand to a colour-managed device context: the image
// in the working space, without alpha, and the device-context object released
// on every way out.
#pragma once
#include <memory>
#include <string>

#include "cli/ProgressBar.h"
#include "device/VDeviceContext.h"
#include "host/imaging/RowIterator.h"

class CColorManager;

namespace teskcolor {

// The image at `path` in the working space at 8 or 16 bits (8 when
// `eightBit`), without alpha, its reading and conversion shown on `progress`.
// CMYK images are refused.
CRowIterator DrawableImage(CColorManager& manager, const std::string& path, bool eightBit, CProgressBar& progress);

// The image scaled by `zoom` (nearest pixel), at least one pixel each way;
// the same image when `zoom` is 1.
CRowIterator ScaledImage(const CRowIterator& image, double zoom);

struct SDeviceReleaser {
    void operator()(CVDeviceContext* device) const { device->Release(); }
};
using DevicePtr = std::unique_ptr<CVDeviceContext, SDeviceReleaser>;

}  // namespace teskcolor
