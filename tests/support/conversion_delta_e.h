// CIEDE2000 between two 8-bit sRGB images (B, G, R bytes), for the tests that
// send colours to a press profile and back.
#pragma once
#include <lcms2.h>

#include <algorithm>
#include <utility>

#include "host/imaging/RowIterator.h"

namespace tesk::test {

// Worst and mean difference over the pixels of `a` (b is at least as large).
inline std::pair<double, double> DeltaE2000(const CRowIterator& a, const CRowIterator& b) {
    cmsHPROFILE srgb = cmsCreate_sRGBProfile();
    cmsHPROFILE lab = cmsCreateLab4Profile(nullptr);
    cmsHTRANSFORM toLab = cmsCreateTransform(srgb, TYPE_BGR_8, lab, TYPE_Lab_DBL, INTENT_RELATIVE_COLORIMETRIC, 0);
    cmsCloseProfile(srgb);
    cmsCloseProfile(lab);
    double worst = 0, sum = 0;
    for (int y = 0; y < a.GetHeight(); ++y)
        for (int x = 0; x < a.GetWidth(); ++x) {
            cmsCIELab la, lb;
            cmsDoTransform(toLab, a.GetRow(y) + x * 3, &la, 1);
            cmsDoTransform(toLab, b.GetRow(y) + x * 3, &lb, 1);
            const double d = cmsCIE2000DeltaE(&la, &lb, 1, 1, 1);
            worst = std::max(worst, d);
            sum += d;
        }
    cmsDeleteTransform(toLab);
    return {worst, sum / std::max(1.0, double(a.GetWidth()) * a.GetHeight())};
}

}  // namespace tesk::test
