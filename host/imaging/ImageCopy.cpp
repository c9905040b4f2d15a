// Rectangle and colour-channel copies between images.
#include <algorithm>
#include <cstring>
#include <vector>

#include "host/imaging/PixelCodec.h"
#include "host/imaging/RowIterator.h"

namespace {

bool IsDirect(EVPixelFormat format) {
    return CVPixelFormat::IsValid(format) && !CVPixelFormat::IsIndexed(format) && format != VPF_RGB_555;
}

int SampleBytes(EVPixelFormat format) { return CVPixelFormat::Is16bit(format) ? 2 : 1; }

int ColourChannels(EVPixelFormat format) { return CVPixelFormat::IsGreyscale(format) ? 1 : 3; }

// One row of direct pixels to 16-bit B, G, R, A (grey in all three).
void DecodeRow(const BYTE* src, EVPixelFormat format, int width, WORD* out) {
    const int channels = CVPixelFormat::GetChannelCount(format);
    const int colour = ColourChannels(format);
    const bool alpha = CVPixelFormat::IsAlphaChannelPresent(format);
    const bool wide = CVPixelFormat::Is16bit(format);
    for (int x = 0; x < width; ++x, out += 4) {
        WORD s[4];
        for (int c = 0; c < channels; ++c) {
            if (wide) std::memcpy(&s[c], src + 2 * (size_t(x) * channels + c), 2);
            else s[c] = WORD(src[size_t(x) * channels + c] * 257);
        }
        if (colour == 1) out[0] = out[1] = out[2] = s[0];
        else out[0] = s[0], out[1] = s[1], out[2] = s[2];
        out[3] = alpha ? s[colour] : 0xFFFF;
    }
}

void EncodeRow(const WORD* in, EVPixelFormat format, int width, BYTE* dst) {
    const int channels = CVPixelFormat::GetChannelCount(format);
    const int colour = ColourChannels(format);
    const bool alpha = CVPixelFormat::IsAlphaChannelPresent(format);
    const bool wide = CVPixelFormat::Is16bit(format);
    for (int x = 0; x < width; ++x, in += 4) {
        WORD s[4];
        if (colour == 1) s[0] = in[0] == in[1] && in[1] == in[2] ? in[0] : WORD(vimaging::Luminance16(in[2], in[1], in[0]));
        else s[0] = in[0], s[1] = in[1], s[2] = in[2];
        if (alpha) s[colour] = in[3];
        for (int c = 0; c < channels; ++c) {
            if (wide) std::memcpy(dst + 2 * (size_t(x) * channels + c), &s[c], 2);
            else dst[size_t(x) * channels + c] = BYTE(s[c] >> 8);
        }
    }
}

// The high byte of every 16-bit sample: the same channels at 8 bits.
void NarrowRow(const BYTE* src, size_t samples, BYTE* dst) {
    for (size_t i = 0; i < samples; ++i) dst[i] = src[2 * i + 1];
}

void WidenRow(const BYTE* src, size_t samples, BYTE* dst) {
    for (size_t i = 0; i < samples; ++i) {
        const WORD w = WORD(src[i] * 257);
        std::memcpy(dst + 2 * i, &w, 2);
    }
}

// Clips a copy of `source` in src to position (destX, destY) in dest. On
// return `from` is the source rectangle, (toX, toY) where it lands.
bool ClipCopy(const CRowIterator& dest, const CRowIterator& src, const RECT& source, int destX, int destY,
              RECT& from, int& toX, int& toY) {
    const long long offsetX = (long long)destX - source.left;
    const long long offsetY = (long long)destY - source.top;
    long long left = std::max<long long>(source.left, 0), top = std::max<long long>(source.top, 0);
    long long right = std::min<long long>(source.right, src.GetWidth());
    long long bottom = std::min<long long>(source.bottom, src.GetHeight());
    left = std::max(left, -offsetX);
    top = std::max(top, -offsetY);
    right = std::min(right, dest.GetWidth() - offsetX);
    bottom = std::min(bottom, dest.GetHeight() - offsetY);
    if (left >= right || top >= bottom) return false;
    from = RECT{LONG(left), LONG(top), LONG(right), LONG(bottom)};
    toX = int(left + offsetX);
    toY = int(top + offsetY);
    return true;
}

}  // namespace

namespace RowIterator {

bool CopyRect(CRowIterator& dest, const CRowIterator& src, const RECT* source, int destX, int destY) {
    if (!dest.IsAttached() || !src.IsAttached()) return false;
    const EVPixelFormat inFormat = src.GetPixelFormat(), outFormat = dest.GetPixelFormat();
    if (inFormat != outFormat && !(IsDirect(inFormat) && IsDirect(outFormat))) return false;
    RECT from;
    int toX, toY;
    if (!ClipCopy(dest, src, source ? *source : src.GetRect(), destX, destY, from, toX, toY)) return true;
    const int width = from.right - from.left, height = from.bottom - from.top;
    const int bits = CVPixelFormat::GetBitsPerPixel(inFormat);

    // Within one image a copy downwards runs from the last row up.
    const bool backwards = dest.SharesImageWith(src) && toY > from.top;
    std::vector<WORD> work;
    if (inFormat != outFormat && CVPixelFormat::Get8bitFormat(inFormat) != CVPixelFormat::Get8bitFormat(outFormat))
        work.resize(size_t(width) * 4);
    const size_t samples = size_t(width) * CVPixelFormat::GetChannelCount(inFormat);

    for (int i = 0; i < height; ++i) {
        const int row = backwards ? height - 1 - i : i;
        const BYTE* in = src.GetRow(from.top + row);
        BYTE* out = dest.GetRow(toY + row);
        if (inFormat == outFormat && bits < 8) {
            // Bit-packed indexes: whole bytes when both sides start on a byte.
            const int perByte = 8 / bits;
            if (from.left % perByte == 0 && toX % perByte == 0 && width % perByte == 0) {
                std::memmove(out + toX / perByte, in + from.left / perByte, size_t(width / perByte));
            } else if (!(dest.SharesImageWith(src) && toY == from.top && toX > from.left)) {
                for (int x = 0; x < width; ++x)
                    vimaging::SetPackedIndex(out, toX + x, bits, vimaging::GetPackedIndex(in, from.left + x, bits));
            } else {  // the same row, moved right: from the right end
                for (int x = width - 1; x >= 0; --x)
                    vimaging::SetPackedIndex(out, toX + x, bits, vimaging::GetPackedIndex(in, from.left + x, bits));
            }
        } else if (inFormat == outFormat) {
            const size_t bytesPerPixel = size_t(bits / 8);
            std::memmove(out + size_t(toX) * bytesPerPixel, in + size_t(from.left) * bytesPerPixel,
                         size_t(width) * bytesPerPixel);
        } else {
            const BYTE* inPixels = in + size_t(from.left) * size_t(bits / 8);
            BYTE* outPixels = out + size_t(toX) * size_t(CVPixelFormat::GetBitsPerPixel(outFormat) / 8);
            if (work.empty() && CVPixelFormat::Is16bit(inFormat)) NarrowRow(inPixels, samples, outPixels);
            else if (work.empty()) WidenRow(inPixels, samples, outPixels);
            else {
                DecodeRow(inPixels, inFormat, width, work.data());
                EncodeRow(work.data(), outFormat, width, outPixels);
            }
        }
    }
    return true;
}

bool CopyColor(CRowIterator& dest, const CRowIterator& src) {
    if (!dest.IsAttached() || !src.IsAttached()) return false;
    const EVPixelFormat inFormat = src.GetPixelFormat(), outFormat = dest.GetPixelFormat();
    if (!IsDirect(inFormat) || !IsDirect(outFormat)) return false;
    if (SampleBytes(inFormat) != SampleBytes(outFormat) || ColourChannels(inFormat) != ColourChannels(outFormat))
        return false;
    const int width = std::min(src.GetWidth(), dest.GetWidth());
    const int height = std::min(src.GetHeight(), dest.GetHeight());
    const size_t inPixel = size_t(CVPixelFormat::GetBitsPerPixel(inFormat) / 8);
    const size_t outPixel = size_t(CVPixelFormat::GetBitsPerPixel(outFormat) / 8);
    const size_t colourBytes = size_t(ColourChannels(inFormat) * SampleBytes(inFormat));
    for (int y = 0; y < height; ++y) {
        const BYTE* in = src.GetRow(y);
        BYTE* out = dest.GetRow(y);
        if (inPixel == colourBytes && outPixel == colourBytes) {
            std::memmove(out, in, colourBytes * size_t(width));
            continue;
        }
        for (int x = 0; x < width; ++x) std::memcpy(out + x * outPixel, in + x * inPixel, colourBytes);
    }
    return true;
}

}  // namespace RowIterator
