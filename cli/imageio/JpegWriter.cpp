#include <cstdio>
// jpeglib.h needs FILE and size_t declared first.
#include <jpeglib.h>

#include <csetjmp>
#include <vector>

#include "cli/Errors.h"
#include "cli/imageio/Codecs.h"
#include "cli/imageio/JpegIcc.h"
#include "cli/imageio/OutputFile.h"
#include "host/imaging/StatusControl.h"

namespace teskcolor {

namespace {

struct SJpegWriteJob;
struct SErrorBridge {
    jpeg_error_mgr errors;
    SJpegWriteJob* job;
};

struct SJpegWriteJob {
    SErrorBridge bridge{};
    std::jmp_buf jump{};
    char message[JMSG_LENGTH_MAX] = {};
    const CRowIterator* pixels = nullptr;
    bool cmyk = false;
    std::vector<std::vector<uint8_t>> iccMarkers;
    int quality = 92;
    std::FILE* file = nullptr;
    CStatusControl* status = nullptr;
};

void OnErrorExit(j_common_ptr cinfo) {
    SJpegWriteJob* job = reinterpret_cast<SErrorBridge*>(cinfo->err)->job;
    (*cinfo->err->format_message)(cinfo, job->message);
    std::longjmp(job->jump, 1);
}
void OnOutputMessage(j_common_ptr) {}

bool Encode(jpeg_compress_struct* cinfo, SJpegWriteJob* job) {
    if (setjmp(job->jump)) return false;
    jpeg_create_compress(cinfo);
    jpeg_stdio_dest(cinfo, job->file);
    const bool grey = job->pixels->GetPixelFormat() == VPF_GREY_8;
    cinfo->image_width = JDIMENSION(job->pixels->GetWidth());
    cinfo->image_height = JDIMENSION(job->pixels->GetHeight());
    cinfo->input_components = job->cmyk ? 4 : grey ? 1 : 3;
    cinfo->in_color_space = job->cmyk ? JCS_CMYK : grey ? JCS_GRAYSCALE : JCS_EXT_BGR;
    // For CMYK this also asks for the APP14 marker that says the samples are inverted.
    jpeg_set_defaults(cinfo);
    jpeg_set_quality(cinfo, job->quality, TRUE);
    jpeg_start_compress(cinfo, TRUE);
    for (const auto& marker : job->iccMarkers)
        jpeg_write_marker(cinfo, JPEG_APP0 + 2, marker.data(), unsigned(marker.size()));
    if (job->status) job->status->SetProgressRange(cinfo->image_height);
    while (cinfo->next_scanline < cinfo->image_height) {
        if (job->status) job->status->SetProgress(cinfo->next_scanline);
        // libjpeg only reads the rows it is given.
        JSAMPROW row = const_cast<JSAMPROW>(job->pixels->GetRow(int(cinfo->next_scanline)));
        jpeg_write_scanlines(cinfo, &row, 1);
    }
    jpeg_finish_compress(cinfo);
    return true;
}

}  // namespace

void WriteJpeg(const std::string& path, const SImage& image, const SWriteOptions& options, CStatusControl* status) {
    // JPEG holds 8-bit grey, RGB or CMYK: deeper or alpha images go through an 8-bit copy.
    const EVPixelFormat format = image.pixels.GetPixelFormat();
    const EVPixelFormat target = image.cmyk ? VPF_RGBA_8 : CVPixelFormat::IsGreyscale(format) ? VPF_GREY_8 : VPF_RGB_8;
    CRowIterator converted;
    const CRowIterator* pixels = &image.pixels;
    if (format != target || image.cmyk) {
        if (!converted.Create(image.pixels.GetWidth(), image.pixels.GetHeight(), target) ||
            !RowIterator::CopyRect(converted, image.pixels))
            throw CCliError(EExit::Unsupported, path + ": JPEG cannot hold " + DescribeLayout(image));
        pixels = &converted;
    }
    // CMYK as Adobe's applications write it, 255 for no ink, which readers
    // know from the APP14 marker.
    if (image.cmyk)
        for (int y = 0; y < converted.GetHeight(); ++y) {
            BYTE* row = converted.GetRow(y);
            for (int i = 0; i < converted.GetBytesPerRow(); ++i) row[i] = BYTE(~row[i]);
        }
    COutputFile output(path, options.transaction);
    SJpegWriteJob job;
    job.pixels = pixels;
    job.cmyk = image.cmyk;
    if (options.encoding.embedProfile) job.iccMarkers = SplitIccProfile(image.iccProfile);
    job.quality = options.encoding.jpegQuality;
    job.file = output.Stream();
    job.status = status;
    jpeg_compress_struct cinfo{};
    cinfo.err = jpeg_std_error(&job.bridge.errors);
    job.bridge.job = &job;
    job.bridge.errors.error_exit = OnErrorExit;
    job.bridge.errors.output_message = OnOutputMessage;
    const bool ok = Encode(&cinfo, &job);
    jpeg_destroy_compress(&cinfo);
    if (!ok) throw CCliError(EExit::WriteFailed, path + ": cannot write the JPEG: " + job.message);
    output.Commit();
}

}  // namespace teskcolor
