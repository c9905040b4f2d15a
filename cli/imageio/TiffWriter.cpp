#include <tiffio.h>
#include <unistd.h>

#include <cstring>
#include <vector>

#include "cli/Errors.h"
#include "cli/imageio/Codecs.h"
#include "cli/imageio/OutputFile.h"
#include "cli/imageio/PixelOrder.h"
#include "cli/imageio/TiffMessages.h"
#include "host/imaging/StatusControl.h"

namespace teskcolor {

namespace {

[[noreturn]] void WriteFailure(const std::string& path, const std::string& what) {
    std::string detail = TakeTiffError();
    throw CCliError(EExit::WriteFailed, path + ": " + what + (detail.empty() ? "" : " (" + detail + ")"));
}

void SetFields(TIFF* tif, const SImage& image) {
    const EVPixelFormat format = image.pixels.GetPixelFormat();
    const int channels = ChannelsOf(format);
    const bool alpha = CVPixelFormat::IsAlphaChannelPresent(format) && !image.cmyk;
    TIFFSetField(tif, TIFFTAG_IMAGEWIDTH, uint32_t(image.pixels.GetWidth()));
    TIFFSetField(tif, TIFFTAG_IMAGELENGTH, uint32_t(image.pixels.GetHeight()));
    TIFFSetField(tif, TIFFTAG_BITSPERSAMPLE, uint16_t(BytesPerSampleOf(format) * 8));
    TIFFSetField(tif, TIFFTAG_SAMPLESPERPIXEL, uint16_t(channels));
    TIFFSetField(tif, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(tif, TIFFTAG_COMPRESSION, COMPRESSION_NONE);
    TIFFSetField(tif, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
    if (image.cmyk) {
        TIFFSetField(tif, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_SEPARATED);
        TIFFSetField(tif, TIFFTAG_INKSET, INKSET_CMYK);
    } else {
        TIFFSetField(tif, TIFFTAG_PHOTOMETRIC, channels >= 3 ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISBLACK);
    }
    if (alpha) {
        uint16_t extra = EXTRASAMPLE_UNASSALPHA;
        TIFFSetField(tif, TIFFTAG_EXTRASAMPLES, uint16_t(1), &extra);
    }
    TIFFSetField(tif, TIFFTAG_ROWSPERSTRIP, TIFFDefaultStripSize(tif, 0));
    if (!image.iccProfile.empty())
        TIFFSetField(tif, TIFFTAG_ICCPROFILE, uint32_t(image.iccProfile.size()), image.iccProfile.data());
}

}  // namespace

void WriteTiff(const std::string& path, const SImage& image, CStatusControl* status) {
    InstallTiffHandlers();
    TakeTiffError();
    const EVPixelFormat format = image.pixels.GetPixelFormat();
    if (FormatFor(ChannelsOf(format), BytesPerSampleOf(format) * 8) != format || (image.cmyk && ChannelsOf(format) != 4))
        throw CCliError(EExit::Unsupported, path + ": TIFF cannot hold " + DescribeLayout(image));

    COutputFile output(path);
    int fd = dup(fileno(output.Stream()));
    if (fd < 0) WriteFailure(path, "cannot open the output");
    TIFF* tif = TIFFFdOpen(fd, path.c_str(), "w");
    if (!tif) {
        close(fd);
        WriteFailure(path, "cannot start a TIFF file");
    }
    SetFields(tif, image);

    const int width = image.pixels.GetWidth();
    const int height = image.pixels.GetHeight();
    const size_t rowBytes = size_t(CVPixelFormat::GetRowBytes(format, width));
    const bool swap = !image.cmyk && ChannelsOf(format) >= 3;
    std::vector<uint8_t> row(rowBytes);
    bool ok = true;
    if (status) status->SetProgressRange(height);
    for (int y = 0; y < height && ok; ++y) {
        if (status) status->SetProgress(y);
        std::memcpy(row.data(), image.pixels.GetRow(y), rowBytes);
        if (swap) SwapRedBlue(row.data(), size_t(width), ChannelsOf(format), BytesPerSampleOf(format));
        ok = TIFFWriteScanline(tif, row.data(), uint32_t(y), 0) >= 0;
    }
    if (ok) ok = TIFFFlush(tif) != 0;
    TIFFClose(tif);
    if (!ok) WriteFailure(path, "cannot write the TIFF data");
    output.Commit();
}

}  // namespace teskcolor
