#include <tiffio.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "cli/Errors.h"
#include "cli/imageio/Codecs.h"
#include "cli/imageio/DeflateStrips.h"
#include "cli/imageio/OutputFile.h"
#include "cli/imageio/PixelOrder.h"
#include "cli/imageio/TiffMessages.h"
#include "cli/imageio/TiffWideSamples.h"
#include "host/imaging/StatusControl.h"

namespace teskcolor {

namespace {

[[noreturn]] void WriteFailure(const std::string& path, const std::string& what) {
    std::string detail = TakeTiffError();
    throw CCliError(EExit::WriteFailed, path + ": " + what + (detail.empty() ? "" : " (" + detail + ")"));
}

void SetFields(TIFF* tif, const SImageHeader& image, const SEncoding& encoding, ETiffSamples samples,
               const CWideSampleEncoder* wide) {
    const EVPixelFormat format = image.format;
    const int channels = wide ? wide->FileChannels() : ChannelsOf(format);
    const bool alpha = CVPixelFormat::IsAlphaChannelPresent(format) && !image.cmyk;
    TIFFSetField(tif, TIFFTAG_IMAGEWIDTH, uint32_t(image.width));
    TIFFSetField(tif, TIFFTAG_IMAGELENGTH, uint32_t(image.height));
    TIFFSetField(tif, TIFFTAG_BITSPERSAMPLE, uint16_t(wide ? wide->FileBitsPerSample() : BytesPerSampleOf(format) * 8));
    TIFFSetField(tif, TIFFTAG_SAMPLESPERPIXEL, uint16_t(channels));
    TIFFSetField(tif, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    if (samples == ETiffSamples::Float) TIFFSetField(tif, TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_IEEEFP);
    const uint16_t compression = TiffCompressionTag(encoding.tiffCompression);
    TIFFSetField(tif, TIFFTAG_COMPRESSION, compression);
    // Differences between neighbours compress far better than the samples
    // themselves in photographs, charts and plates alike.
    // Floats too: their own predictor packs a little tighter, but tools that
    // copy the tag onto integer output (tificc) then fail.
    if (compression != COMPRESSION_NONE) TIFFSetField(tif, TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
    // zlib's fastest level: a 24 MP packed separation of the test chart writes in
    // 0.53 s instead of 0.84 s at libtiff's default 6, as 2.9 MB instead of 1.7 MB.
    if (compression == COMPRESSION_ADOBE_DEFLATE) TIFFSetField(tif, TIFFTAG_ZIPQUALITY, 1);
    TIFFSetField(tif, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
    if (samples == ETiffSamples::Lab) {
        TIFFSetField(tif, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_ICCLAB);
    } else if (image.cmyk) {
        TIFFSetField(tif, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_SEPARATED);
        TIFFSetField(tif, TIFFTAG_INKSET, INKSET_CMYK);
    } else {
        TIFFSetField(tif, TIFFTAG_PHOTOMETRIC,
                     channels >= 3 ? PHOTOMETRIC_RGB : image.inkAmounts ? PHOTOMETRIC_MINISWHITE : PHOTOMETRIC_MINISBLACK);
    }
    if (alpha) {
        uint16_t extra = EXTRASAMPLE_UNASSALPHA;
        TIFFSetField(tif, TIFFTAG_EXTRASAMPLES, uint16_t(1), &extra);
    }
    // Strips of about 256 KiB: libtiff writes a strip a call, and libtiff's
    // own default of 8 KiB means a system call for every row of a wide image.
    const tmsize_t rowBytes = std::max<tmsize_t>(TIFFScanlineSize(tif), 1);
    const tmsize_t rows = std::min<tmsize_t>((tmsize_t{256} << 10) / rowBytes, image.height);
    TIFFSetField(tif, TIFFTAG_ROWSPERSTRIP, uint32_t(std::max<tmsize_t>(rows, 1)));
    // Lab needs no profile: it is the one every profile connects through.
    if (encoding.embedProfile && !image.iccProfile.empty() && samples != ETiffSamples::Lab)
        TIFFSetField(tif, TIFFTAG_ICCPROFILE, uint32_t(image.iccProfile.size()), image.iccProfile.data());
}

}  // namespace

namespace {

bool NeedsBigTiff(const SImageHeader& header, uint64_t rowBytes) {
    // Classic TIFF offsets are 32 bits; the margin covers tags, strip tables and the profile.
    constexpr uint64_t kClassicLimit = (uint64_t{1} << 32) - (uint64_t{64} << 20);
    return rowBytes * uint64_t(header.height) + header.iccProfile.size() > kClassicLimit;
}

}  // namespace

bool NeedsBigTiff(const SImageHeader& header) {
    return NeedsBigTiff(header, uint64_t(CVPixelFormat::GetRowBytes(header.format, header.width)));
}

namespace {

// Rows go to libtiff as they come, through a descriptor of the output's own.
class CTiffBandWriter final : public IImageBandWriter {
public:
    CTiffBandWriter(const std::string& path, const SImageHeader& header, const SWriteOptions& options)
        : m_output(path, options.transaction), m_header(header) {
        InstallTiffHandlers();
        TakeTiffError();
        const EVPixelFormat format = header.format;
        if (FormatFor(ChannelsOf(format), BytesPerSampleOf(format) * 8) != format ||
            (header.cmyk && ChannelsOf(format) != 4))
            throw CCliError(EExit::Unsupported, path + ": TIFF cannot hold " + DescribeLayout(format, header.cmyk));
        if (!CanWriteTiffCompression(options.encoding.tiffCompression))
            throw CCliError(EExit::Unsupported,
                            path + ": this libtiff cannot write " +
                                kTiffCompressionNames[int(options.encoding.tiffCompression)] + " compression");
        size_t rowBytes = size_t(CVPixelFormat::GetRowBytes(format, header.width));
        if (options.tiffSamples != ETiffSamples::AsImage) {
            m_wide = std::make_unique<CWideSampleEncoder>(options.tiffSamples, m_header, path);
            rowBytes = size_t(header.width) * size_t(m_wide->FileChannels()) * size_t(m_wide->FileBitsPerSample() / 8);
        }
        const int fd = dup(fileno(m_output.Stream()));
        if (fd < 0) WriteFailure(path, "cannot open the output");
        m_tif = TIFFFdOpen(fd, path.c_str(), NeedsBigTiff(header, rowBytes) ? "w8" : "w");
        if (!m_tif) {
            close(fd);
            WriteFailure(path, "cannot start a TIFF file");
        }
        SetFields(m_tif, header, options.encoding, options.tiffSamples, m_wide.get());
        m_row.resize(rowBytes);
        // Deflate dominates the run when libtiff does it row by row on this
        // thread; strips compressed on the other cores keep up with conversion.
        const int bits = m_wide ? m_wide->FileBitsPerSample() : BytesPerSampleOf(format) * 8;
        if (options.encoding.tiffCompression == ETiffCompression::Deflate && CanDeflateStrips(m_tif, bits)) {
            uint32_t rowsPerStrip = 1;
            TIFFGetField(m_tif, TIFFTAG_ROWSPERSTRIP, &rowsPerStrip);
            const int channels = m_wide ? m_wide->FileChannels() : ChannelsOf(format);
            m_strips = std::make_unique<CDeflateStrips>(
                m_tif, SStripLayout{rowBytes, rowsPerStrip, uint32_t(header.height), channels, bits},
                DeflateThreadCount());
        }
    }
    ~CTiffBandWriter() override {
        if (m_tif) TIFFClose(m_tif);
    }

    void Append(const CRowIterator& rows) override { Append(rows, nullptr); }

    void Append(const CRowIterator& rows, CStatusControl* status) {
        const EVPixelFormat format = m_header.format;
        const bool swap = !m_header.cmyk && ChannelsOf(format) >= 3;
        if (status) status->SetProgressRange(rows.GetHeight());
        for (int y = 0; y < rows.GetHeight(); ++y, ++m_written) {
            if (status) status->SetProgress(y);
            if (m_written >= m_header.height) WriteFailure(m_output.Destination(), "cannot write the TIFF data");
            uint8_t* row = m_strips ? m_strips->RowBuffer() : m_row.data();
            if (m_wide)
                m_wide->Encode(rows.GetRow(y), row);
            else
                std::memcpy(row, rows.GetRow(y), m_row.size());
            if (swap && !m_wide) SwapRedBlue(row, size_t(m_header.width), ChannelsOf(format), BytesPerSampleOf(format));
            const bool stored = m_strips ? m_strips->RowDone() : TIFFWriteScanline(m_tif, row, uint32_t(m_written), 0) >= 0;
            if (!stored) WriteFailure(m_output.Destination(), "cannot write the TIFF data");
        }
    }

    void Commit() override {
        const bool complete =
            m_written == m_header.height && (!m_strips || m_strips->Finish()) && TIFFFlush(m_tif) != 0;
        m_strips.reset();
        TIFFClose(m_tif);
        m_tif = nullptr;
        if (!complete) WriteFailure(m_output.Destination(), "cannot write the TIFF data");
        m_output.Commit();
    }

private:
    COutputFile m_output;
    SImageHeader m_header;
    std::unique_ptr<CWideSampleEncoder> m_wide;
    TIFF* m_tif = nullptr;
    std::vector<uint8_t> m_row;
    std::unique_ptr<CDeflateStrips> m_strips;
    int m_written = 0;
};

}  // namespace

std::unique_ptr<IImageBandWriter> OpenTiffBandWriter(const std::string& path, const SImageHeader& header,
                                                   const SWriteOptions& options) {
    return std::make_unique<CTiffBandWriter>(path, header, options);
}

void WriteTiff(const std::string& path, const SImage& image, const SWriteOptions& options, CStatusControl* status) {
    const SImageHeader header{image.pixels.GetWidth(), image.pixels.GetHeight(), image.pixels.GetPixelFormat(),
                              image.cmyk, image.iccProfile};
    CTiffBandWriter writer(path, header, options);
    writer.Append(image.pixels, status);
    writer.Commit();
}

}  // namespace teskcolor
