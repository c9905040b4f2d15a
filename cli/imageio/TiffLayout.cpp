#include "cli/imageio/TiffLayout.h"

#include "cli/Errors.h"
#include "cli/imageio/DeclaredSize.h"
#include "cli/imageio/EmbeddedProfile.h"
#include "cli/imageio/PixelOrder.h"
#include "cli/imageio/TiffMessages.h"

namespace teskcolor {

namespace {

[[noreturn]] void Unsupported(const std::string& name, const std::string& what) {
    throw CCliError(EExit::Unsupported, name + ": " + what);
}

// The most one byte of the file can decode to under its compression. Stored
// pixels must all be there; run-length codes reach 64; LZW, Deflate and JPEG
// stay near a thousand. Others are given a generous bound, and the pixel
// budget does the rest.
double MostExpansion(TIFF* tif) {
    uint16_t compression = COMPRESSION_NONE;
    TIFFGetFieldDefaulted(tif, TIFFTAG_COMPRESSION, &compression);
    switch (compression) {
        case COMPRESSION_NONE: return 1;
        case COMPRESSION_PACKBITS: return 64;
        case COMPRESSION_LZW:
        case COMPRESSION_DEFLATE:
        case COMPRESSION_ADOBE_DEFLATE:
        case COMPRESSION_JPEG: return 4096;
        default: return 65536;
    }
}

uint64_t FileBytes(TIFF* tif) {
    TIFFSizeProc size = TIFFGetSizeProc(tif);
    return size ? uint64_t(size(TIFFClientdata(tif))) : 0;
}

}  // namespace

void TiffCorrupt(const std::string& name, const std::string& what) {
    std::string detail = TakeTiffError();
    throw CCliError(EExit::Corrupt, name + ": " + what + (detail.empty() ? "" : " (" + detail + ")"));
}

EVPixelFormat STiffLayout::Format() const { return FormatFor(colourChannels + (alpha ? 1 : 0), Wide() ? 16 : bits); }

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
    if (layout.width > 0x7FFFFFFF / 8 || layout.height > 0x7FFFFFFF) Unsupported(name, "image too large");
    if (sampleFormat == SAMPLEFORMAT_IEEEFP) {
        if (layout.bits != 32)
            Unsupported(name, std::to_string(layout.bits) + "-bit floating-point TIFF samples (32 is supported)");
        layout.samplesHeld = ETiffSamples::Float;
    } else if (sampleFormat != SAMPLEFORMAT_UINT) {
        Unsupported(name, "signed integer TIFF samples");
    } else if (layout.bits != 8 && layout.bits != 16) {
        Unsupported(name, std::to_string(layout.bits) + "-bit TIFF samples (8, 16 and 32-bit float are supported)");
    }
    if (!options.headerOnly)
        RequirePlausibleSize(name, layout.width, layout.height,
                             uint64_t(layout.width) * layout.samples * (layout.bits / 8), FileBytes(tif),
                             MostExpansion(tif), options.maxPixels);

    switch (layout.photometric) {
        case PHOTOMETRIC_MINISBLACK:
        case PHOTOMETRIC_MINISWHITE: layout.colourChannels = 1; break;
        case PHOTOMETRIC_RGB: layout.colourChannels = 3; break;
        case PHOTOMETRIC_CIELAB:
        case PHOTOMETRIC_ICCLAB:
            if (layout.Wide()) Unsupported(name, "floating-point Lab TIFF");
            layout.colourChannels = 3;
            layout.samplesHeld = ETiffSamples::Lab;
            layout.signedLab = layout.photometric == PHOTOMETRIC_CIELAB;
            break;
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
    if (extra > 1 || (extra == 1 && (layout.cmyk || layout.samplesHeld == ETiffSamples::Lab)))
        Unsupported(name, "TIFF with " + std::to_string(extra) + " extra samples");
    if (layout.samplesHeld == ETiffSamples::Float && (layout.cmyk || layout.photometric == PHOTOMETRIC_MINISWHITE))
        Unsupported(name, "floating-point TIFF other than RGB or grey (min-is-black)");
    if (layout.Wide() && (TIFFIsTiled(tif) || layout.SeparatePlanes()))
        Unsupported(name, "tiled or planar floating-point or Lab TIFF");
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

std::vector<uint8_t> TiffIccProfile(TIFF* tif, const std::string& name, const STiffLayout& layout) {
    uint32_t size = 0;
    void* profile = nullptr;
    if (!TIFFGetField(tif, TIFFTAG_ICCPROFILE, &size, &profile)) {
        const TIFFField* field = TIFFFieldWithTag(tif, TIFFTAG_ICCPROFILE);
        if (field && TiffDroppedTag(TIFFFieldName(field))) TiffCorrupt(name, "the embedded ICC profile is cut off");
        return {};
    }
    // Lab is the profile connection space itself: a profile beside it says nothing more.
    if (layout.samplesHeld == ETiffSamples::Lab) return {};
    if (!profile) size = 0;
    return TakeEmbeddedProfile(name, static_cast<const uint8_t*>(profile), size, layout.Format(), layout.cmyk);
}

}  // namespace teskcolor
