#include <tiffio.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include "cli/Errors.h"
#include "cli/imageio/Codecs.h"
#include "cli/imageio/TiffLayout.h"
#include "cli/imageio/TiffMessages.h"
#include "cli/imageio/TiffWideSamples.h"
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

// Strips whose pixels keep their samples together, decoded in order. A row
// that fits the image's row is decoded in place.
class CTiffStripRows final : public IImageRowSource {
public:
    CTiffStripRows(TIFF* tif, const STiffLayout& layout, std::string name, const std::vector<uint8_t>& embedded,
                   TiffPtr owned = nullptr)
        : m_owned(std::move(owned)), m_tif(tif), m_layout(layout), m_name(std::move(name)), m_profile(embedded) {
        const size_t rowBytes = size_t(layout.width) * layout.samples * (layout.bits / 8);
        const tmsize_t scanline = TIFFScanlineSize(tif);
        if (scanline <= 0 || size_t(scanline) < rowBytes) TiffCorrupt(m_name, "TIFF rows shorter than the image width");
        m_buffer.resize(size_t(scanline));
        m_rowBytes = rowBytes;
        if (layout.Wide()) {
            m_decoder = std::make_unique<CWideSampleDecoder>(m_layout, embedded, m_name);
            m_profile = m_decoder->Profile();
        }
    }

    // The profile of the rows as they are handed out.
    const std::vector<uint8_t>& Profile() const { return m_profile; }

    void ReadRows(int first, CRowIterator& band) override { Read(first, band, nullptr); }

    void Read(int first, CRowIterator& band, CStatusControl* status) {
        const bool direct = !m_decoder && m_buffer.size() <= size_t(std::abs(band.GetStride()));
        if (status) status->SetProgressRange(band.GetHeight());
        for (int r = 0; r < band.GetHeight(); ++r) {
            if (status) status->SetProgress(r);
            const uint32_t y = uint32_t(first + r);
            BYTE* row = band.GetRow(r);
            if (TIFFReadScanline(m_tif, direct ? row : m_buffer.data(), y, 0) < 0)
                TiffCorrupt(m_name, "truncated or corrupt TIFF data at row " + std::to_string(y));
            if (m_decoder) {
                m_decoder->Decode(m_buffer.data(), row);
                continue;
            }
            if (!direct) std::memcpy(row, m_buffer.data(), m_rowBytes);
            ToImageRow(m_layout, row);
        }
    }

private:
    TiffPtr m_owned;
    TIFF* m_tif;
    STiffLayout m_layout;
    std::string m_name;
    std::vector<uint8_t> m_profile;
    std::unique_ptr<CWideSampleDecoder> m_decoder;
    std::vector<uint8_t> m_buffer;
    size_t m_rowBytes = 0;
};

void ReadPlanes(TIFF* tif, const STiffLayout& layout, CRowIterator& pixels, const std::string& name,
                CStatusControl* status) {
    const size_t bytesPerSample = layout.bits / 8;
    const size_t planeRowBytes = size_t(layout.width) * bytesPerSample;
    const tmsize_t scanline = TIFFScanlineSize(tif);
    if (scanline <= 0 || size_t(scanline) < planeRowBytes) TiffCorrupt(name, "TIFF rows shorter than the image width");
    std::vector<uint8_t> buffer(static_cast<size_t>(scanline));
    const size_t step = layout.samples * bytesPerSample;
    if (status) status->SetProgressRange(static_cast<long long>(layout.height) * layout.samples);
    for (int plane = 0; plane < layout.samples; ++plane) {
        for (uint32_t y = 0; y < layout.height; ++y) {
            if (status) status->SetProgress(static_cast<long long>(plane) * layout.height + y);
            if (TIFFReadScanline(tif, buffer.data(), y, uint16_t(plane)) < 0)
                TiffCorrupt(name, "truncated or corrupt TIFF data at row " + std::to_string(y));
            BYTE* row = pixels.GetRow(int(y));
            for (uint32_t x = 0; x < layout.width; ++x)
                std::memcpy(row + x * step + plane * bytesPerSample, buffer.data() + x * bytesPerSample, bytesPerSample);
        }
    }
}

void ReadTiles(TIFF* tif, const STiffLayout& layout, CRowIterator& pixels, const std::string& name,
               CStatusControl* status) {
    if (layout.planar == PLANARCONFIG_SEPARATE && layout.samples > 1)
        throw CCliError(EExit::Unsupported, name + ": tiled TIFF with separate planes");
    uint32_t tileWidth = 0, tileHeight = 0;
    if (!TIFFGetField(tif, TIFFTAG_TILEWIDTH, &tileWidth) || !TIFFGetField(tif, TIFFTAG_TILELENGTH, &tileHeight) ||
        tileWidth == 0 || tileHeight == 0)
        TiffCorrupt(name, "tiled TIFF without tile size");
    const size_t pixelBytes = size_t(layout.samples) * (layout.bits / 8);
    const tmsize_t tileSize = TIFFTileSize(tif);
    if (tileSize <= 0 || size_t(tileSize) < size_t(tileWidth) * tileHeight * pixelBytes)
        TiffCorrupt(name, "TIFF tiles smaller than their size");
    std::vector<uint8_t> tile(static_cast<size_t>(tileSize));
    if (status) status->SetProgressRange(layout.height);
    for (uint32_t top = 0; top < layout.height; top += tileHeight) {
        if (status) status->SetProgress(top);
        for (uint32_t left = 0; left < layout.width; left += tileWidth) {
            if (TIFFReadTile(tif, tile.data(), left, top, 0, 0) < 0)
                TiffCorrupt(name, "truncated or corrupt TIFF tile at " + std::to_string(left) + "," + std::to_string(top));
            const uint32_t columns = std::min(tileWidth, layout.width - left);
            const uint32_t rows = std::min(tileHeight, layout.height - top);
            for (uint32_t r = 0; r < rows; ++r)
                std::memcpy(pixels.GetRow(int(top + r)) + left * pixelBytes, tile.data() + r * tileWidth * pixelBytes,
                            columns * pixelBytes);
        }
    }
}

SImage ReadTiff(TIFF* tif, const std::string& name, const SReadOptions& options, CStatusControl* status) {
    const STiffLayout layout = ReadTiffLayout(tif, name, options);
    SImage image;
    image.cmyk = layout.cmyk;
    image.iccProfile = TiffIccProfile(tif, name, layout);
    std::unique_ptr<CTiffStripRows> strips;
    if (!TIFFIsTiled(tif) && !layout.SeparatePlanes()) {
        strips = std::make_unique<CTiffStripRows>(tif, layout, name, image.iccProfile);
        image.iccProfile = strips->Profile();
    }
    if (!image.pixels.Create(int(layout.width), int(layout.height), layout.Format()))
        throw CCliError(EExit::Failed, name + ": not enough memory for a " + std::to_string(layout.width) + " x " +
                                           std::to_string(layout.height) + " image");
    if (strips) {
        strips->Read(0, image.pixels, status);
    } else {
        if (TIFFIsTiled(tif))
            ReadTiles(tif, layout, image.pixels, name, status);
        else
            ReadPlanes(tif, layout, image.pixels, name, status);
        for (uint32_t y = 0; y < layout.height; ++y) ToImageRow(layout, image.pixels.GetRow(int(y)));
    }
    return image;
}

}  // namespace

SImage ReadTiffFile(const std::string& path, const SReadOptions& options, CStatusControl* status) {
    InstallTiffHandlers();
    TakeTiffError();
    TiffPtr tif(TIFFOpen(path.c_str(), "rm"));
    if (!tif) TiffCorrupt(path, "not a readable TIFF file");
    return ReadTiff(tif.get(), path, options, status);
}

std::unique_ptr<IImageRowSource> OpenTiffRowSource(const std::string& path, const SReadOptions& options,
                                                   SImageHeader& header) {
    InstallTiffHandlers();
    TakeTiffError();
    TiffPtr tif(TIFFOpen(path.c_str(), "rm"));
    if (!tif) TiffCorrupt(path, "not a readable TIFF file");
    const STiffLayout layout = ReadTiffLayout(tif.get(), path, options);
    header = {int(layout.width), int(layout.height), layout.Format(), layout.cmyk, TiffIccProfile(tif.get(), path, layout)};
    if (options.headerOnly || TIFFIsTiled(tif.get()) || layout.SeparatePlanes()) return nullptr;
    TIFF* handle = tif.get();
    auto rows = std::make_unique<CTiffStripRows>(handle, layout, path, header.iccProfile, std::move(tif));
    header.iccProfile = rows->Profile();
    return rows;
}

SImageHeader ReadTiffHeader(const std::string& path, const SReadOptions& options) {
    SReadOptions headerOptions = options;
    headerOptions.headerOnly = true;
    SImageHeader header;
    OpenTiffRowSource(path, headerOptions, header);
    return header;
}

SImage ReadTiffMemory(const uint8_t* data, size_t size, const SReadOptions& options) {
    InstallTiffHandlers();
    TakeTiffError();
    SMemoryTiff source{data, toff_t(size), 0};
    TiffPtr tif(TIFFClientOpen("memory", "rm", &source, MemRead, MemWrite, MemSeek, MemClose, MemSize, MemMap,
                               MemUnmap));
    if (!tif) TiffCorrupt("TIFF data", "not a readable TIFF file");
    return ReadTiff(tif.get(), "TIFF data", options, nullptr);
}

}  // namespace teskcolor
