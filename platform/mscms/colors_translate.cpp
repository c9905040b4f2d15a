// TranslateColors: COLOR values are packed into a dense buffer, translated in
// one lcms2 call, and unpacked into the output array.
#include <windows.h>

#include <icm.h>
#include <tesk/export_guard.h>

#include <algorithm>
#include <cstring>
#include <new>
#include <vector>

#include "bitmap_format.h"
#include "transform_handles.h"

namespace tesk::mscms {
namespace {

struct ColorLayout {
    cmsUInt32Number lcmsFormat;
    size_t bytes;  // leading bytes of a COLOR that hold the channels
};

constexpr cmsUInt32Number Generic(int channels, int bytes) {
    return COLORSPACE_SH(PT_ANY) | CHANNELS_SH(channels) | BYTES_SH(bytes);
}

// Channels are 16-bit words in the order the COLOR members declare them; XYZ
// and Lab use ICC's 16-bit encodings (XYZ u1Fixed15, 0x8000 for 1.0; Lab as in
// version 4, L 0xFFFF for 100 and a, b 0x8080 for 0). The 5- to 8-channel
// colours are HiFiCOLOR bytes.
bool LookUpColorLayout(COLORTYPE type, ColorLayout& layout, DWORD& error) {
    switch (type) {
    case COLOR_GRAY: layout = {TYPE_GRAY_16, 2}; return true;
    case COLOR_RGB: layout = {TYPE_RGB_16, 6}; return true;
    case COLOR_XYZ: layout = {TYPE_XYZ_16, 6}; return true;
    case COLOR_Yxy: layout = {TYPE_Yxy_16, 6}; return true;
    case COLOR_Lab: layout = {TYPE_Lab_16, 6}; return true;
    case COLOR_3_CHANNEL: layout = {Generic(3, 2), 6}; return true;
    case COLOR_CMYK: layout = {TYPE_CMYK_16, 8}; return true;
    case COLOR_5_CHANNEL: layout = {Generic(5, 1), 5}; return true;
    case COLOR_6_CHANNEL: layout = {Generic(6, 1), 6}; return true;
    case COLOR_7_CHANNEL: layout = {Generic(7, 1), 7}; return true;
    case COLOR_8_CHANNEL: layout = {Generic(8, 1), 8}; return true;
    case COLOR_NAMED: error = ERROR_NOT_SUPPORTED; return false;
    default: error = ERROR_INVALID_PARAMETER; return false;
    }
}

}  // namespace
}  // namespace tesk::mscms

using namespace tesk::mscms;

BOOL WINAPI TranslateColors(HTRANSFORM hColorTransform, PCOLOR paInputColors, DWORD nColors, COLORTYPE ctInput,
                            PCOLOR paOutputColors, COLORTYPE ctOutput) try {
    auto transform = FindTransform(hColorTransform);
    if (!transform) return FALSE;
    ColorLayout input, output;
    DWORD error = ERROR_SUCCESS;
    if (!LookUpColorLayout(ctInput, input, error) || !LookUpColorLayout(ctOutput, output, error)) {
        SetLastError(error);
        return FALSE;
    }
    if (nColors != 0 && (!paInputColors || !paOutputColors)) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    const ChainTransforms& chain = *transform->chain;
    if (!FormatFitsColorSpace(input.lcmsFormat, chain.EntrySpace()) ||
        !FormatFitsColorSpace(output.lcmsFormat, chain.ExitSpace())) {
        SetLastError(ERROR_COLORSPACE_MISMATCH);
        return FALSE;
    }
    if (nColors == 0) return TRUE;
    auto lcms = transform->chain->For(input.lcmsFormat, output.lcmsFormat);
    if (!lcms) {
        SetLastError(ERROR_INVALID_TRANSFORM);
        return FALSE;
    }

    // Slices keep the work buffers small whatever the count. Input and output
    // may be the same array: a slice's input is read before its output is written.
    constexpr DWORD kSlice = 4096;
    const DWORD sliceColors = std::min(nColors, kSlice);
    std::vector<uint8_t> packedIn(size_t{sliceColors} * input.bytes), packedOut(size_t{sliceColors} * output.bytes);
    for (DWORD first = 0; first < nColors;) {
        const DWORD count = std::min(kSlice, nColors - first);
        for (DWORD i = 0; i < count; ++i)
            std::memcpy(packedIn.data() + i * input.bytes, &paInputColors[first + i], input.bytes);
        cmsDoTransform(lcms->Get(), packedIn.data(), packedOut.data(), count);
        for (DWORD i = 0; i < count; ++i) {
            std::memset(&paOutputColors[first + i], 0, sizeof(COLOR));
            std::memcpy(&paOutputColors[first + i], packedOut.data() + i * output.bytes, output.bytes);
        }
        first += count;
    }
    return TRUE;
} catch (...) {
    return tesk::FailAtBoundary(BOOL{FALSE});
}
