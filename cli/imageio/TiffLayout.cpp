#include "cli/imageio/TiffLayout.h"

#include "cli/Errors.h"
#include "cli/imageio/PixelOrder.h"
#include "cli/imageio/TiffMessages.h"

namespace teskcolor {

namespace {

[[noreturn]] void Unsupported(const std::string& name, const std::string& what) {
    throw CCliError(EExit::Unsupported, name + ": " + what);
}

}  // namespace

void TiffCorrupt(const std::string& name, const std::string& what) {
    std::string detail = TakeTiffError();
    throw CCliError(EExit::Corrupt, name + ": " + what + (detail.empty() ? "" : " (" + detail + ")"));
}

EVPixelFormat STiffLayout::Format() const { return FormatFor(colourChannels + (alpha ? 1 : 0), bits); }

STiffLayout ReadTiffLayout(TIFF* tif, const std::string& name, const SReadOptions& options) {
    STiffLayout layout;
    uint16_t sampleFormat = SAMPLEFORMAT_UINT;
    if (!TIFFGetField(tif, TIFFTAG_IMAGEWIDTH, &layout.width) || !TIFFGetField(tif, TIFFTAG_IMAGELENGTH, &layout.height))
        TiffCorrupt(name, "TIFF without image size");
    TIFFGetFieldDefaulted(tif, TIFFTAG_BITSPERSAMPLE, &layout.bits);
    TIFFGetFieldDefaulted(tif, TIFFTAG_SAMPLESPERPIXEL, &layout.samples);
    TIFFGetFieldDefaulted(tif, TIFFTAG_PLANARCONFIG, &layout.planar);
    TIFFGetFieldDefaulted(tif, TIFFTAG_SAMPLEFORMAT, &sampleFormat);
    if (!TIFFGetField(tif, TIFFTAG_PHOTOMETRIC, &layout.photometric))
        layout.photometric = layout.samples >= 3 ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISBLACK;

    if (layout.width == 0 || layout.height == 0) TiffCorrupt(name, "TIFF of zero size");
    if (static_cast<long long>(layout.width) * layout.height > options.maxPixels)
        Unsupported(name, "image of " + std::to_string(layout.width) + " x " + std::to_string(layout.height) +
                              " pixels is larger than allowed");
    if (layout.width > 0x7FFFFFFF / 8 || layout.height > 0x7FFFFFFF) Unsupported(name, "image too large");
    if (sampleFormat != SAMPLEFORMAT_UINT) Unsupported(name, "floating-point or signed TIFF samples");
    if (layout.bits != 8 && layout.bits != 16)
        Unsupported(name, std::to_string(layout.bits) + "-bit TIFF samples (8 and 16 are supported)");

    switch (layout.photometric) {
        case PHOTOMETRIC_MINISBLACK:
        case PHOTOMETRIC_MINISWHITE: layout.colourChannels = 1; break;
        case PHOTOMETRIC_RGB: layout.colourChannels = 3; break;
        case PHOTOMETRIC_SEPARATED: {
            uint16_t inkSet = INKSET_CMYK;
            TIFFGetFieldDefaulted(tif, TIFFTAG_INKSET, &inkSet);
            if (inkSet != INKSET_CMYK) Unsupported(name, "separated TIFF with an ink set other than CMYK");
            layout.colourChannels = 4;
            layout.cmyk = true;
            break;
        }
        default: Unsupported(name, "TIFF photometric interpretation " + std::to_string(layout.photometric));
    }
    int extra = int(layout.samples) - layout.colourChannels;
    if (extra < 0) TiffCorrupt(name, "TIFF has fewer samples than its colour space needs");
    if (extra > 1 || (extra == 1 && layout.cmyk))
        Unsupported(name, "TIFF with " + std::to_string(extra) + " extra samples");
    layout.alpha = extra == 1;
    return layout;
}

void ToImageRow(const STiffLayout& layout, uint8_t* row) {
    const size_t bytesPerSample = layout.bits / 8;
    if (layout.photometric == PHOTOMETRIC_MINISWHITE) {
        const size_t step = layout.samples * bytesPerSample;
        for (uint32_t x = 0; x < layout.width; ++x)
            for (size_t b = 0; b < bytesPerSample; ++b) row[x * step + b] = uint8_t(~row[x * step + b]);
    }
    if (layout.colourChannels == 3) SwapRedBlue(row, layout.width, layout.samples, int(bytesPerSample));
}

std::vector<uint8_t> TiffIccProfile(TIFF* tif) {
    uint32_t size = 0;
    void* profile = nullptr;
    if (!TIFFGetField(tif, TIFFTAG_ICCPROFILE, &size, &profile) || !profile || size == 0) return {};
    auto* bytes = static_cast<const uint8_t*>(profile);
    return {bytes, bytes + size};
}

}  // namespace teskcolor
