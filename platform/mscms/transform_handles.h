// HTRANSFORM values: counters, not addresses, looked up in a table, so a
// closed or foreign handle is recognised and never dereferenced.
#pragma once
#include "gamut_check.h"
#include "transform_chain.h"

#include <memory>

namespace tesk::mscms {

struct ColorTransform {
    std::shared_ptr<ChainTransforms> chain;
    GamutChecks gamutChecks;  // made by the first CheckBitmapBits
};

HTRANSFORM RegisterTransform(std::shared_ptr<ColorTransform> transform);
// Null, with last error ERROR_INVALID_HANDLE, for a handle that is not open.
std::shared_ptr<ColorTransform> FindTransform(HTRANSFORM handle);
bool UnregisterTransform(HTRANSFORM handle);

}  // namespace tesk::mscms
