#include "gamma_resample.h"

namespace tesk::display {

void ResampleRamp(const uint16_t* from, size_t fromCount, uint16_t* to, size_t toCount) {
    if (toCount == 0) return;
    if (fromCount == 0) {
        for (size_t i = 0; i < toCount; ++i) to[i] = 0;
        return;
    }
    if (fromCount == 1 || toCount == 1) {
        for (size_t i = 0; i < toCount; ++i) to[i] = from[0];
        return;
    }
    // Position of entry i in `from`, in units of 1 / (toCount - 1), kept integral.
    const uint64_t span = toCount - 1;
    for (size_t i = 0; i < toCount; ++i) {
        uint64_t scaled = uint64_t(i) * (fromCount - 1);
        size_t below = size_t(scaled / span);
        uint64_t fraction = scaled % span;
        if (fraction == 0 || below + 1 >= fromCount) {
            to[i] = from[below];
            continue;
        }
        int64_t a = from[below], b = from[below + 1];
        int64_t value = a + ((b - a) * int64_t(fraction) + int64_t(span / 2) * (b >= a ? 1 : -1)) / int64_t(span);
        to[i] = uint16_t(value < 0 ? 0 : value > 65535 ? 65535 : value);
    }
}

}  // namespace tesk::display
