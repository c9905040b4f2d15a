// Deflate strips of a TIFF on worker threads; libtiff only stores them, in order.
#pragma once
#include <tiffio.h>

#include <cstddef>
#include <cstdint>
#include <memory>

namespace teskcolor {

struct SStripLayout {
    size_t rowBytes = 0;
    uint32_t rowsPerStrip = 1;
    uint32_t height = 0;
    int samplesPerPixel = 1;
    int bitsPerSample = 8;  // 8, 16 or 32
};

// Whether strips of this layout can go through CDeflateStrips (samples in
// the file's byte order are the machine's, widths the predictor knows).
bool CanDeflateStrips(TIFF* tif, int bitsPerSample);

// TESK_DEFLATE_THREADS=n fixes the number of compressing threads; 1 compresses
// on the calling thread. Otherwise one per core.
unsigned DeflateThreadCount();

// Rows are written into RowBuffer() one after another; each full strip gets
// the horizontal predictor and zlib-wrapped deflate on a worker, then goes to
// libtiff as it stands with TIFFWriteRawStrip. `tif` must already carry
// Compression=ADOBE_DEFLATE, Predictor=HORIZONTAL and the layout's RowsPerStrip.
class CDeflateStrips {
public:
    CDeflateStrips(TIFF* tif, const SStripLayout& layout, unsigned threads);
    ~CDeflateStrips();
    CDeflateStrips(const CDeflateStrips&) = delete;
    CDeflateStrips& operator=(const CDeflateStrips&) = delete;

    // Where the next row goes; valid until RowDone().
    uint8_t* RowBuffer();
    // False when a strip could not be compressed or stored.
    bool RowDone();
    // Stores what is left; false on any failure or if rows are missing.
    bool Finish();

private:
    struct SImpl;
    std::unique_ptr<SImpl> m_impl;
};

}  // namespace teskcolor
