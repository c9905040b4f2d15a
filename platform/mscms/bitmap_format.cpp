#include "bitmap_format.h"

#include <windows.h>

namespace tesk::mscms {
namespace {

constexpr cmsUInt32Number Generic(int channels, int bytes, bool reversed) {
    return COLORSPACE_SH(PT_ANY) | CHANNELS_SH(channels) | BYTES_SH(bytes) | DOSWAP_SH(reversed ? 1 : 0);
}

// Windows names a format's channels from the most significant down within a
// little-endian unit, so memory holds them in the reverse of the name's order:
// BM_RGBTRIPLETS is B,G,R, BM_CMYKQUADS is K,Y,M,C, BM_16b_RGB is three words
// B,G,R. The Lab and XYZ formats follow the same rule (b,a,L and Z,Y,X); their
// 16-bit encodings are ICC's: Lab as in version 4 (L 0..0xFFFF for 0..100,
// a and b 0x8080 for 0), XYZ as u1Fixed15 (0x8000 for 1.0).
constexpr cmsUInt32Number kLab8Reversed = TYPE_Lab_8 | DOSWAP_SH(1);
constexpr cmsUInt32Number kLab16Reversed = TYPE_Lab_16 | DOSWAP_SH(1);
constexpr cmsUInt32Number kXyz16Reversed = TYPE_XYZ_16 | DOSWAP_SH(1);

struct Entry {
    BMFORMAT format;
    cmsUInt32Number lcmsFormat;  // 0: a Windows format without an lcms2 equivalent
    size_t bytesPerPixel;
};

constexpr Entry kLayouts[] = {
    {BM_RGBTRIPLETS, TYPE_BGR_8, 3},
    {BM_BGRTRIPLETS, TYPE_RGB_8, 3},
    {BM_xRGBQUADS, TYPE_BGRA_8, 4},
    {BM_xBGRQUADS, TYPE_RGBA_8, 4},
    {BM_KYMCQUADS, TYPE_CMYK_8, 4},
    {BM_CMYKQUADS, TYPE_KYMC_8, 4},
    {BM_GRAY, TYPE_GRAY_8, 1},
    {BM_16b_RGB, TYPE_BGR_16, 6},
    {BM_16b_GRAY, TYPE_GRAY_16, 2},
    {BM_LabTRIPLETS, kLab8Reversed, 3},
    {BM_16b_Lab, kLab16Reversed, 6},
    {BM_16b_XYZ, kXyz16Reversed, 6},
    {BM_G3CHTRIPLETS, Generic(3, 1, true), 3},
    {BM_xG3CHQUADS, Generic(3, 1, true) | EXTRA_SH(1) | SWAPFIRST_SH(1), 4},
    {BM_16b_G3CH, Generic(3, 2, true), 6},
    // The n-channel formats are not named by channel, so channel 1 comes first.
    {BM_5CHANNEL, Generic(5, 1, false), 5},
    {BM_6CHANNEL, Generic(6, 1, false), 6},
    {BM_7CHANNEL, Generic(7, 1, false), 7},
    {BM_8CHANNEL, Generic(8, 1, false), 8},
    // 8-bit XYZ has no encoding in lcms2; Yxy bitmaps and packed words are not
    // offered either.
    {BM_XYZTRIPLETS, 0, 0},
    {BM_YxyTRIPLETS, 0, 0},
    {BM_16b_Yxy, 0, 0},
    {BM_x555RGB, 0, 0},
    {BM_x555XYZ, 0, 0},
    {BM_x555Yxy, 0, 0},
    {BM_x555Lab, 0, 0},
    {BM_x555G3CH, 0, 0},
    {BM_565RGB, 0, 0},
    {BM_10b_RGB, 0, 0},
    {BM_10b_XYZ, 0, 0},
    {BM_10b_Yxy, 0, 0},
    {BM_10b_Lab, 0, 0},
    {BM_10b_G3CH, 0, 0},
    {BM_NAMED_INDEX, 0, 0},
};

}  // namespace

bool LookUpBitmapLayout(BMFORMAT format, BitmapLayout& layout, DWORD& error) {
    for (const Entry& entry : kLayouts) {
        if (entry.format != format) continue;
        if (entry.lcmsFormat == 0) {
            error = ERROR_NOT_SUPPORTED;
            return false;
        }
        layout = {entry.lcmsFormat, entry.bytesPerPixel};
        return true;
    }
    error = ERROR_INVALID_PARAMETER;
    return false;
}

bool FormatFitsColorSpace(cmsUInt32Number lcmsFormat, cmsColorSpaceSignature space) {
    const cmsUInt32Number model = T_COLORSPACE(lcmsFormat);
    if (model == PT_ANY) return T_CHANNELS(lcmsFormat) == cmsChannelsOf(space);
    if (model == PT_LabV2) return space == cmsSigLabData;
    return static_cast<int>(model) == _cmsLCMScolorSpace(space);
}

}  // namespace tesk::mscms
