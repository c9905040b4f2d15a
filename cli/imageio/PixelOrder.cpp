#include "cli/imageio/PixelOrder.h"

#include <utility>

namespace teskcolor {

namespace {

// The step is a constant here, so each swap compiles to plain loads and stores.
template <size_t kStep>
void SwapFirstAndThirdBytes(uint8_t* row, size_t pixels) {
    for (uint8_t* p = row; p != row + pixels * kStep; p += kStep) std::swap(p[0], p[2]);
}

template <size_t kStep>
void SwapFirstAndThirdWords(uint8_t* row, size_t pixels) {
    for (uint8_t* p = row; p != row + pixels * kStep; p += kStep) {
        std::swap(p[0], p[4]);
        std::swap(p[1], p[5]);
    }
}

}  // namespace

void SwapRedBlue(uint8_t* row, size_t pixels, int channels, int bytesPerSample) {
    if (bytesPerSample == 1)
        channels == 3 ? SwapFirstAndThirdBytes<3>(row, pixels) : SwapFirstAndThirdBytes<4>(row, pixels);
    else
        channels == 3 ? SwapFirstAndThirdWords<6>(row, pixels) : SwapFirstAndThirdWords<8>(row, pixels);
}

void SwapBytes16(uint8_t* samples, size_t count) {
    for (size_t i = 0; i < count; ++i) std::swap(samples[2 * i], samples[2 * i + 1]);
}

int ChannelsOf(EVPixelFormat format) { return CVPixelFormat::GetChannelCount(format); }

int BytesPerSampleOf(EVPixelFormat format) { return CVPixelFormat::Is16bit(format) ? 2 : 1; }

EVPixelFormat FormatFor(int channels, int bitsPerSample) {
    static constexpr EVPixelFormat k8[] = {VPF_GREY_8, VPF_GREY_ALPHA_8, VPF_RGB_8, VPF_RGBA_8};
    static constexpr EVPixelFormat k16[] = {VPF_GREY_16, VPF_GREY_ALPHA_16, VPF_RGB_16, VPF_RGBA_16};
    if (channels < 1 || channels > 4) return VPF_UNKNOWN;
    if (bitsPerSample == 8) return k8[channels - 1];
    if (bitsPerSample == 16) return k16[channels - 1];
    return VPF_UNKNOWN;
}

}  // namespace teskcolor
