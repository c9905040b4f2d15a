#include <cstdio>
// jpeglib.h needs FILE and size_t declared first.
#include <jerror.h>
#include <jpeglib.h>

#include <csetjmp>
#include <cstring>
#include <memory>
#include <optional>
#include <vector>

#include "cli/Errors.h"
#include "cli/imageio/Codecs.h"
#include "cli/imageio/DecodeFailure.h"
#include "cli/imageio/DeclaredSize.h"
#include "cli/imageio/EmbeddedProfile.h"
#include "cli/imageio/JpegIcc.h"
#include "host/imaging/StatusControl.h"

namespace teskcolor {

namespace {

// What the decoder fills in, kept outside the function libjpeg may longjmp
// out of, so that no destructor is skipped.
struct SJpegJob;
// libjpeg hands its error manager back: the job is found through it.
struct SErrorBridge {
    jpeg_error_mgr errors;
    SJpegJob* job;
};

struct SJpegJob {
    SErrorBridge bridge{};
    std::jmp_buf jump{};
    char message[JMSG_LENGTH_MAX] = {};
    EExit refusal = EExit::Ok;
    const SReadOptions* options = nullptr;
    CStatusControl* status = nullptr;
    std::FILE* file = nullptr;
    const uint8_t* data = nullptr;
    size_t size = 0;  // of the file or the data
    bool headerOnly = false;
    std::string name;
    std::string failure;  // a CCliError's text from a check below the decoder
    std::vector<SMarkerBytes> app2;
    std::optional<std::vector<uint8_t>> joinedProfile;
    SImageHeader header;
    SImage image;
};

SJpegJob* JobOf(j_common_ptr cinfo) { return reinterpret_cast<SErrorBridge*>(cinfo->err)->job; }

void OnErrorExit(j_common_ptr cinfo) {
    SJpegJob* job = JobOf(cinfo);
    (*cinfo->err->format_message)(cinfo, job->message);
    std::longjmp(job->jump, 1);
}

// Warnings of damaged or missing data are errors: libjpeg would carry on and
// fill what it could not decode with grey. Only the two that do not concern
// the data are let through.
void OnEmitMessage(j_common_ptr cinfo, int level) {
    if (level >= 0) return;
    const int code = cinfo->err->msg_code;
    if (code != JWRN_JFIF_MAJOR && code != JWRN_ADOBE_XFORM) OnErrorExit(cinfo);
}
void OnOutputMessage(j_common_ptr) {}

void Refuse(j_common_ptr cinfo, EExit code, const char* text) {
    SJpegJob* job = JobOf(cinfo);
    job->refusal = code;
    std::snprintf(job->message, sizeof job->message, "%s", text);
    std::longjmp(job->jump, 1);
}

// Runs a check that throws CCliError; its message is carried over the longjmp.
template <typename Check>
void Checked(j_common_ptr cinfo, Check check) {
    SJpegJob* job = JobOf(cinfo);
    EExit code = EExit::Ok;
    try {
        check();
        return;
    } catch (const CCliError& error) {
        job->failure = error.what();
        code = error.Code();
    }
    Refuse(cinfo, code, "");
}

// A Huffman-coded block of flat colour still takes a bit or two; arithmetic
// coding can go far lower.
double MostPixelsPerByte(const jpeg_decompress_struct& cinfo) { return cinfo.arith_code ? 32768 : 1024; }

bool Decode(jpeg_decompress_struct* cinfo, SJpegJob* job) {
    if (setjmp(job->jump)) return false;
    jpeg_create_decompress(cinfo);
    if (job->file)
        jpeg_stdio_src(cinfo, job->file);
    else
        jpeg_mem_src(cinfo, job->data, static_cast<unsigned long>(job->size));
    jpeg_save_markers(cinfo, JPEG_APP0 + 2, 0xFFFF);
    jpeg_read_header(cinfo, TRUE);
    auto* common = reinterpret_cast<j_common_ptr>(cinfo);
    if (!job->headerOnly)
        Checked(common, [&] {
            RequirePlausibleSize(job->name, cinfo->image_width, cinfo->image_height, cinfo->image_width, job->size,
                                 MostPixelsPerByte(*cinfo), job->options->maxPixels);
        });

    EVPixelFormat format = VPF_RGB_8;
    switch (cinfo->jpeg_color_space) {
        case JCS_GRAYSCALE:
            cinfo->out_color_space = JCS_GRAYSCALE;
            format = VPF_GREY_8;
            break;
        case JCS_CMYK:
        case JCS_YCCK:
            cinfo->out_color_space = JCS_CMYK;
            format = VPF_RGBA_8;
            job->header.cmyk = true;
            break;
        default: cinfo->out_color_space = JCS_EXT_BGR; break;
    }
    for (jpeg_saved_marker_ptr marker = cinfo->marker_list; marker; marker = marker->next)
        if (marker->marker == JPEG_APP0 + 2) job->app2.push_back({marker->data, marker->data_length});
    job->joinedProfile = JoinIccMarkers(job->app2);
    if (const auto& profile = job->joinedProfile)
        Checked(common, [&] {
            if (profile->empty())
                throw CCliError(EExit::Corrupt, job->name + ": the embedded ICC profile is damaged (its APP2 chunks "
                                                            "are missing, repeated, out of sequence or empty)");
            job->header.iccProfile = TakeEmbeddedProfile(job->name, profile->data(), profile->size(), format,
                                                         job->header.cmyk);
        });
    job->header.width = int(cinfo->image_width);
    job->header.height = int(cinfo->image_height);
    job->header.format = format;
    if (job->headerOnly) return true;
    job->image.cmyk = job->header.cmyk;
    job->image.iccProfile = job->header.iccProfile;
    jpeg_start_decompress(cinfo);
    if (cinfo->output_components != CVPixelFormat::GetChannelCount(format))
        Refuse(common, EExit::Unsupported, "JPEG colour layout is not supported");
    if (!job->image.pixels.Create(int(cinfo->output_width), int(cinfo->output_height), format))
        Refuse(common, EExit::Failed, "not enough memory for the image");
    if (job->status) job->status->SetProgressRange(cinfo->output_height);
    while (cinfo->output_scanline < cinfo->output_height) {
        if (job->status) job->status->SetProgress(cinfo->output_scanline);
        JSAMPROW row = job->image.pixels.GetRow(int(cinfo->output_scanline));
        jpeg_read_scanlines(cinfo, &row, 1);
    }
    // Adobe's applications store CMYK inverted and say so with their APP14 marker.
    if (job->image.cmyk && cinfo->saw_Adobe_marker) {
        const size_t rowBytes = size_t(cinfo->output_width) * 4;
        for (JDIMENSION y = 0; y < cinfo->output_height; ++y) {
            BYTE* row = job->image.pixels.GetRow(int(y));
            for (size_t i = 0; i < rowBytes; ++i) row[i] = BYTE(~row[i]);
        }
    }
    jpeg_finish_decompress(cinfo);
    return true;
}

void Read(SJpegJob& job) {
    jpeg_decompress_struct cinfo{};
    cinfo.err = jpeg_std_error(&job.bridge.errors);
    job.bridge.job = &job;
    job.bridge.errors.error_exit = OnErrorExit;
    job.bridge.errors.emit_message = OnEmitMessage;
    job.bridge.errors.output_message = OnOutputMessage;
    const bool ok = Decode(&cinfo, &job);
    jpeg_destroy_decompress(&cinfo);
    if (ok) return;
    ThrowDecodeFailure(job.refusal, job.failure, job.name, "JPEG", job.message);
}

void ReadFile(SJpegJob& job, const std::string& path) {
    const FileHandle file = OpenForReading(path, job.size);
    job.file = file.get();
    job.name = path;
    Read(job);
}

}  // namespace

SImage ReadJpegFile(const std::string& path, const SReadOptions& options, CStatusControl* status) {
    SJpegJob job;
    job.options = &options;
    job.status = status;
    ReadFile(job, path);
    return std::move(job.image);
}

SImageHeader ReadJpegHeader(const std::string& path, const SReadOptions& options) {
    SJpegJob job;
    job.options = &options;
    job.headerOnly = true;
    ReadFile(job, path);
    return std::move(job.header);
}

SImage ReadJpegMemory(const uint8_t* data, size_t size, const SReadOptions& options) {
    SJpegJob job;
    job.options = &options;
    job.data = data;
    job.size = size;
    job.name = "JPEG data";
    Read(job);
    return std::move(job.image);
}

}  // namespace teskcolor
