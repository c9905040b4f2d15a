#include <tiffio.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include "cli/Errors.h"
#include "cli/imageio/Codecs.h"
#include "cli/imageio/PixelOrder.h"
#include "cli/imageio/TiffMessages.h"
#include "host/imaging/StatusControl.h"

namespace teskcolor {

namespace {

// A TIFF held in memory, read through libtiff's client procedures; every
// read is clipped to the data.
struct SMemoryTiff {
    const uint8_t* data;
    toff_t size;
    toff_t position;
};

tmsize_t MemRead(thandle_t handle, void* buffer, tmsize_t count) {
    auto* source = static_cast<SMemoryTiff*>(handle);
    if (count <= 0 || source->position >= source->size) return 0;
    toff_t left = source->size - source->position;
    toff_t n = std::min<toff_t>(left, toff_t(count));
    std::memcpy(buffer, source->data + source->position, size_t(n));
    source->position += n;
    return tmsize_t(n);
}
tmsize_t MemWrite(thandle_t, void*, tmsize_t) { return 0; }
toff_t MemSeek(thandle_t handle, toff_t offset, int whence) {
    auto* source = static_cast<SMemoryTiff*>(handle);
    toff_t base = whence == SEEK_CUR ? source->position : whence == SEEK_END ? source->size : 0;
    source->position = base + offset;  // reads past the end simply return nothing
    return source->position;
}
int MemClose(thandle_t) { return 0; }
toff_t MemSize(thandle_t handle) { return static_cast<SMemoryTiff*>(handle)->size; }
int MemMap(thandle_t, void**, toff_t*) { return 0; }
void MemUnmap(thandle_t, void*, toff_t) {}

struct TiffCloser {
    void operator()(TIFF* tif) const { TIFFClose(tif); }
};
using TiffPtr = std::unique_ptr<TIFF, TiffCloser>;

[[noreturn]] void Corrupt(const std::string& name, const std::string& what) {
    std::string detail = TakeTiffError();
    throw CCliError(EExit::Corrupt, name + ": " + what + (detail.empty() ? "" : " (" + detail + ")"));
}
[[noreturn]] void Unsupported(const std::string& name, const std::string& what) {
    throw CCliError(EExit::Unsupported, name + ": " + what);
}

struct SLayout {
    uint32_t width = 0, height = 0;
    uint16_t bits = 0, samples = 0, photometric = 0, planar = PLANARCONFIG_CONTIG;
    int colourChannels = 0;
    bool alpha = false;
    bool cmyk = false;
};

SLayout ReadLayout(TIFF* tif, const std::string& name, const SReadOptions& options) {
    SLayout layout;
    uint16_t sampleFormat = SAMPLEFORMAT_UINT;
    if (!TIFFGetField(tif, TIFFTAG_IMAGEWIDTH, &layout.width) || !TIFFGetField(tif, TIFFTAG_IMAGELENGTH, &layout.height))
        Corrupt(name, "TIFF without image size");
    TIFFGetFieldDefaulted(tif, TIFFTAG_BITSPERSAMPLE, &layout.bits);
    TIFFGetFieldDefaulted(tif, TIFFTAG_SAMPLESPERPIXEL, &layout.samples);
    TIFFGetFieldDefaulted(tif, TIFFTAG_PLANARCONFIG, &layout.planar);
    TIFFGetFieldDefaulted(tif, TIFFTAG_SAMPLEFORMAT, &sampleFormat);
    if (!TIFFGetField(tif, TIFFTAG_PHOTOMETRIC, &layout.photometric))
        layout.photometric = layout.samples >= 3 ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISBLACK;

    if (layout.width == 0 || layout.height == 0) Corrupt(name, "TIFF of zero size");
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
    if (extra < 0) Corrupt(name, "TIFF has fewer samples than its colour space needs");
    if (extra > 1 || (extra == 1 && layout.cmyk))
        Unsupported(name, "TIFF with " + std::to_string(extra) + " extra samples");
    layout.alpha = extra == 1;
    return layout;
}

void ReadStrips(TIFF* tif, const SLayout& layout, CRowIterator& pixels, const std::string& name,
                CStatusControl* status) {
    const size_t bytesPerSample = layout.bits / 8;
    const size_t rowBytes = size_t(layout.width) * layout.samples * bytesPerSample;
    const bool planes = layout.planar == PLANARCONFIG_SEPARATE && layout.samples > 1;
    const size_t planeRowBytes = planes ? size_t(layout.width) * bytesPerSample : rowBytes;
    const tmsize_t scanline = TIFFScanlineSize(tif);
    if (scanline <= 0 || size_t(scanline) < planeRowBytes) Corrupt(name, "TIFF rows shorter than the image width");
    std::vector<uint8_t> buffer(static_cast<size_t>(scanline));
    const int planeCount = planes ? layout.samples : 1;
    if (status) status->SetProgressRange(static_cast<long long>(layout.height) * planeCount);
    for (int plane = 0; plane < planeCount; ++plane) {
        for (uint32_t y = 0; y < layout.height; ++y) {
            if (status) status->SetProgress(static_cast<long long>(plane) * layout.height + y);
            BYTE* row = pixels.GetRow(int(y));
            // A contiguous row that fits the image's row is decoded in place.
            const bool direct = !planes && size_t(scanline) <= size_t(std::abs(pixels.GetStride()));
            if (TIFFReadScanline(tif, direct ? row : buffer.data(), y, uint16_t(plane)) < 0)
                Corrupt(name, "truncated or corrupt TIFF data at row " + std::to_string(y));
            if (direct) continue;
            if (!planes) {
                std::memcpy(row, buffer.data(), rowBytes);
                continue;
            }
            const size_t step = layout.samples * bytesPerSample;
            for (uint32_t x = 0; x < layout.width; ++x)
                std::memcpy(row + x * step + plane * bytesPerSample, buffer.data() + x * bytesPerSample, bytesPerSample);
        }
    }
}

void ReadTiles(TIFF* tif, const SLayout& layout, CRowIterator& pixels, const std::string& name,
               CStatusControl* status) {
    if (layout.planar == PLANARCONFIG_SEPARATE && layout.samples > 1)
        Unsupported(name, "tiled TIFF with separate planes");
    uint32_t tileWidth = 0, tileHeight = 0;
    if (!TIFFGetField(tif, TIFFTAG_TILEWIDTH, &tileWidth) || !TIFFGetField(tif, TIFFTAG_TILELENGTH, &tileHeight) ||
        tileWidth == 0 || tileHeight == 0)
        Corrupt(name, "tiled TIFF without tile size");
    const size_t pixelBytes = size_t(layout.samples) * (layout.bits / 8);
    const tmsize_t tileSize = TIFFTileSize(tif);
    if (tileSize <= 0 || size_t(tileSize) < size_t(tileWidth) * tileHeight * pixelBytes)
        Corrupt(name, "TIFF tiles smaller than their size");
    std::vector<uint8_t> tile(static_cast<size_t>(tileSize));
    if (status) status->SetProgressRange(layout.height);
    for (uint32_t top = 0; top < layout.height; top += tileHeight) {
        if (status) status->SetProgress(top);
        for (uint32_t left = 0; left < layout.width; left += tileWidth) {
            if (TIFFReadTile(tif, tile.data(), left, top, 0, 0) < 0)
                Corrupt(name, "truncated or corrupt TIFF tile at " + std::to_string(left) + "," + std::to_string(top));
            const uint32_t columns = std::min(tileWidth, layout.width - left);
            const uint32_t rows = std::min(tileHeight, layout.height - top);
            for (uint32_t r = 0; r < rows; ++r)
                std::memcpy(pixels.GetRow(int(top + r)) + left * pixelBytes, tile.data() + r * tileWidth * pixelBytes,
                            columns * pixelBytes);
        }
    }
}

SImage ReadTiff(TIFF* tif, const std::string& name, const SReadOptions& options, CStatusControl* status) {
    const SLayout layout = ReadLayout(tif, name, options);
    SImage image;
    image.cmyk = layout.cmyk;
    const EVPixelFormat format = FormatFor(layout.colourChannels + (layout.alpha ? 1 : 0), layout.bits);
    if (!image.pixels.Create(int(layout.width), int(layout.height), format))
        throw CCliError(EExit::Failed, name + ": not enough memory for a " + std::to_string(layout.width) + " x " +
                                           std::to_string(layout.height) + " image");
    if (TIFFIsTiled(tif))
        ReadTiles(tif, layout, image.pixels, name, status);
    else
        ReadStrips(tif, layout, image.pixels, name, status);

    const size_t bytesPerSample = layout.bits / 8;
    for (uint32_t y = 0; y < layout.height; ++y) {
        BYTE* row = image.pixels.GetRow(int(y));
        if (layout.photometric == PHOTOMETRIC_MINISWHITE) {
            const size_t step = layout.samples * bytesPerSample;
            for (uint32_t x = 0; x < layout.width; ++x)
                for (size_t b = 0; b < bytesPerSample; ++b) row[x * step + b] = BYTE(~row[x * step + b]);
        }
        if (layout.colourChannels == 3) SwapRedBlue(row, layout.width, layout.samples, int(bytesPerSample));
    }

    uint32_t profileSize = 0;
    void* profile = nullptr;
    if (TIFFGetField(tif, TIFFTAG_ICCPROFILE, &profileSize, &profile) && profile && profileSize > 0) {
        auto* bytes = static_cast<const uint8_t*>(profile);
        image.iccProfile.assign(bytes, bytes + profileSize);
    }
    return image;
}

}  // namespace

SImage ReadTiffFile(const std::string& path, const SReadOptions& options, CStatusControl* status) {
    InstallTiffHandlers();
    TakeTiffError();
    TiffPtr tif(TIFFOpen(path.c_str(), "rm"));
    if (!tif) Corrupt(path, "not a readable TIFF file");
    return ReadTiff(tif.get(), path, options, status);
}

SImage ReadTiffMemory(const uint8_t* data, size_t size, const SReadOptions& options) {
    InstallTiffHandlers();
    TakeTiffError();
    SMemoryTiff source{data, toff_t(size), 0};
    TiffPtr tif(TIFFClientOpen("memory", "rm", &source, MemRead, MemWrite, MemSeek, MemClose, MemSize, MemMap,
                               MemUnmap));
    if (!tif) Corrupt("TIFF data", "not a readable TIFF file");
    return ReadTiff(tif.get(), "TIFF data", options, nullptr);
}

}  // namespace teskcolor
