#include "host/imaging/GammaCorrect.h"

#include <cstring>
#include <vector>

#include "host/imaging/DibIterator.h"
#include "host/imaging/RowIteratorBands.h"

namespace {

// The 8-bit table spread over 16-bit samples: sample v lies at v / 257 on the
// table's scale, between entries i and i + 1.
std::vector<WORD> Widen(const BYTE* table) {
    std::vector<WORD> wide(65536);
    for (unsigned v = 0; v < 65536; ++v) {
        const unsigned i = v / 257, f = v % 257;
        const int low = table[i], high = table[i < 255 ? i + 1 : 255];
        wide[v] = WORD(low * 257 + (high - low) * int(f));
    }
    return wide;
}

void MapPalette(CVPalette& palette, const BYTE* red, const BYTE* green, const BYTE* blue) {
    for (int i = 0; i < palette.GetCount(); ++i) {
        RGBQUAD& e = palette[i];
        e.rgbRed = red[e.rgbRed];
        e.rgbGreen = green[e.rgbGreen];
        e.rgbBlue = blue[e.rgbBlue];
    }
}

BYTE Map5(const BYTE* table, unsigned v5) { return BYTE(table[(v5 << 3) | (v5 >> 2)] >> 3); }

}  // namespace

bool GammaCorrectDIBInplace(CRowIterator& image, const BYTE* red, const BYTE* green, const BYTE* blue) {
    if (!image.IsAttached() || !red || !green || !blue) return false;
    const EVPixelFormat format = image.GetPixelFormat();
    if (CVPixelFormat::IsIndexed(format)) {
        if (!image.GetPalette()) return false;
        CVPalette palette = *image.GetPalette();
        MapPalette(palette, red, green, blue);
        return image.SetPalette(palette);
    }
    const int width = image.GetWidth(), height = image.GetHeight();
    const int channels = CVPixelFormat::GetChannelCount(format);
    const bool grey = CVPixelFormat::IsGreyscale(format);
    // Table of each stored channel, in memory order (blue first); alpha has none.
    const BYTE* tables[4] = {grey ? green : blue, green, red, nullptr};
    if (grey) tables[1] = nullptr;

    if (format == VPF_RGB_555) {
        for (int y = 0; y < height; ++y) {
            BYTE* row = image.GetRow(y);
            for (int x = 0; x < width; ++x) {
                WORD w;
                std::memcpy(&w, row + 2 * x, 2);
                w = WORD((w & 0x8000) | (Map5(red, (w >> 10) & 31) << 10) | (Map5(green, (w >> 5) & 31) << 5) |
                         Map5(blue, w & 31));
                std::memcpy(row + 2 * x, &w, 2);
            }
        }
        return true;
    }
    if (!CVPixelFormat::Is16bit(format)) {
        for (int y = 0; y < height; ++y) {
            BYTE* row = image.GetRow(y);
            for (int c = 0; c < channels; ++c) {
                const BYTE* table = tables[c];
                if (!table) continue;
                for (int x = 0; x < width; ++x) row[x * channels + c] = table[row[x * channels + c]];
            }
        }
        return true;
    }
    std::vector<WORD> wide[3];
    for (int c = 0; c < 3; ++c)
        if (tables[c]) wide[c] = Widen(tables[c]);
    for (int y = 0; y < height; ++y) {
        BYTE* row = image.GetRow(y);
        for (int c = 0; c < channels && c < 3; ++c) {
            if (wide[c].empty()) continue;
            const WORD* map = wide[c].data();
            for (int x = 0; x < width; ++x) {
                WORD v;
                std::memcpy(&v, row + 2 * (size_t(x) * channels + c), 2);
                v = map[v];
                std::memcpy(row + 2 * (size_t(x) * channels + c), &v, 2);
            }
        }
    }
    return true;
}

bool GammaCorrectDIBInplace(CDibIterator& image, const BYTE* red, const BYTE* green, const BYTE* blue) {
    if (!image.IsCreated() || !red || !green || !blue) return false;
    if (CVPixelFormat::IsIndexed(image.GetPixelFormat())) {
        if (!image.GetPalette()) return false;
        CVPalette palette = *image.GetPalette();
        MapPalette(palette, red, green, blue);
        return image.SetPalette(palette.GetEntries(), palette.GetCount());
    }
    CRowIterator view;
    return CRowIteratorBands::AttachDib(view, image) && GammaCorrectDIBInplace(view, red, green, blue);
}
