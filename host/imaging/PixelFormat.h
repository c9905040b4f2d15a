// Pixel formats of the imaging library and their memory layouts.
#pragma once
#include "host/imaging/ImagingApi.h"

// Multi-byte samples are native (little-endian) 16-bit words. Colour channels
// are stored blue first, as the platform's bitmap formats expect.
enum EVPixelFormat : int {
    VPF_UNKNOWN = 0,
    VPF_INDEXED_1 = 1,    // 1 bit a pixel, palette of 2; leftmost pixel in the high bit
    VPF_INDEXED_2 = 2,    // 2 bits a pixel, palette of 4
    VPF_INDEXED_4 = 3,    // 4 bits a pixel, palette of 16
    VPF_INDEXED_8 = 4,    // 1 byte a pixel, palette of 256
    VPF_GREY_8 = 5,       // grey
    VPF_GREY_ALPHA_8 = 6, // grey, alpha
    VPF_RGB_8 = 7,        // B, G, R (BM_RGBTRIPLETS)
    VPF_RGBA_8 = 8,       // B, G, R, A (BM_xRGBQUADS; a CMYK image keeps its C, M, Y, K here)
    VPF_RGB_555 = 9,      // one word: x1 R5 G5 B5 (BM_x555RGB)
    VPF_GREY_16 = 10,     // grey word (BM_16b_GRAY)
    VPF_GREY_ALPHA_16 = 11,
    VPF_RGB_16 = 12,      // B, G, R words (BM_16b_RGB)
    VPF_RGBA_16 = 13,     // B, G, R, A words
};

constexpr int kVPixelFormatCount = 14;

class VIMAGING_API CVPixelFormat {
public:
    constexpr CVPixelFormat(EVPixelFormat format = VPF_UNKNOWN) : m_eFormat(format) {}
    constexpr operator EVPixelFormat() const { return m_eFormat; }

    static bool IsValid(EVPixelFormat format);
    static bool IsIndexed(EVPixelFormat format);
    // 16 bits a channel.
    static bool Is16bit(EVPixelFormat format);
    static bool IsAlphaChannelPresent(EVPixelFormat format);
    static bool IsGreyscale(EVPixelFormat format);
    // The format with the same channels at 8 bits; other formats map to themselves.
    static EVPixelFormat Get8bitFormat(EVPixelFormat format);
    // The format with the same channels at 16 bits, or VPF_UNKNOWN when there is none.
    static EVPixelFormat Get16bitFormat(EVPixelFormat format);
    static int GetBitsPerPixel(EVPixelFormat format);
    // Channels stored a pixel, alpha included (an index counts as one).
    static int GetChannelCount(EVPixelFormat format);
    // Entries a palette of this format holds at most, 0 for direct formats.
    static int GetPaletteSize(EVPixelFormat format);
    // Bytes of `width` pixels without padding.
    static long long GetRowBytes(EVPixelFormat format, long long width);

    bool IsValid() const { return IsValid(m_eFormat); }
    bool IsIndexed() const { return IsIndexed(m_eFormat); }
    bool Is16bit() const { return Is16bit(m_eFormat); }
    bool IsAlphaChannelPresent() const { return IsAlphaChannelPresent(m_eFormat); }
    bool IsGreyscale() const { return IsGreyscale(m_eFormat); }
    EVPixelFormat Get8bitFormat() const { return Get8bitFormat(m_eFormat); }
    int GetBitsPerPixel() const { return GetBitsPerPixel(m_eFormat); }
    int GetChannelCount() const { return GetChannelCount(m_eFormat); }

private:
    EVPixelFormat m_eFormat;
};
