// Moving samples between the files' channel order (R,G,B / C,M,Y,K, big- or
// little-endian words as the codec gives them) and the imaging library's.
#pragma once
#include <cstddef>
#include <cstdint>

#include "host/imaging/PixelFormat.h"

namespace teskcolor {

// Swaps the first and third channel of every pixel in place (R,G,B <-> B,G,R);
// `channels` is 3 or 4, samples of 1 or 2 bytes. Other channels stay.
void SwapRedBlue(uint8_t* row, size_t pixels, int channels, int bytesPerSample);
// Converts `count` 16-bit samples between big-endian and the host order, in place.
void SwapBytes16(uint8_t* samples, size_t count);

// Channels a pixel of `format` stores and the bytes of one sample.
int ChannelsOf(EVPixelFormat format);
int BytesPerSampleOf(EVPixelFormat format);
// The format of `channels` 8- or 16-bit samples (1 grey, 2 grey+alpha, 3 RGB,
// 4 RGBA or CMYK); VPF_UNKNOWN for anything else.
EVPixelFormat FormatFor(int channels, int bitsPerSample);

}  // namespace teskcolor
