#include <png.h>

#include <csetjmp>
#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

#include "cli/Errors.h"
#include "cli/imageio/Codecs.h"
#include "cli/imageio/DecodeFailure.h"
#include "cli/imageio/DeclaredSize.h"
#include "cli/imageio/EmbeddedProfile.h"
#include "cli/imageio/PixelOrder.h"
#include "host/imaging/StatusControl.h"

namespace teskcolor {

namespace {

// Everything the decoder fills in lives here, outside the function that
// libpng may longjmp out of, so that no object with a destructor is skipped.
struct SPngJob {
    const SReadOptions* options = nullptr;
    CStatusControl* status = nullptr;
    SImage image;
    std::vector<png_bytep> rows;
    char message[256] = {};
    EExit refusal = EExit::Ok;  // set when the file is fine but not wanted
    std::string name;
    std::string failure;       // a CCliError's text from a check below the decoder
    std::string iccpRejected;  // libpng's reason for dropping the embedded profile
    size_t fileBytes = 0;
    bool headerOnly = false;
    SImageHeader header;
    // Memory source; null data when reading from a FILE*.
    const uint8_t* data = nullptr;
    size_t size = 0;
    size_t position = 0;
};

void OnError(png_structp png, png_const_charp text) {
    auto* job = static_cast<SPngJob*>(png_get_error_ptr(png));
    std::snprintf(job->message, sizeof job->message, "%s", text ? text : "PNG error");
    png_longjmp(png, 1);
}
// libpng drops a profile it finds damaged or unfit with a mere warning; the
// reader makes that an error.
void OnWarning(png_structp png, png_const_charp text) {
    auto* job = static_cast<SPngJob*>(png_get_error_ptr(png));
    if (text && std::strncmp(text, "iCCP", 4) == 0 && job->iccpRejected.empty()) job->iccpRejected = text;
}

void ReadFromMemory(png_structp png, png_bytep out, size_t count) {
    auto* job = static_cast<SPngJob*>(png_get_io_ptr(png));
    if (count > job->size - job->position) png_error(png, "truncated PNG data");
    std::memcpy(out, job->data + job->position, count);
    job->position += count;
}

void Refuse(png_structp png, SPngJob* job, EExit code, const char* text) {
    job->refusal = code;
    png_error(png, text);
}

// Runs a check that throws CCliError; its message is carried over the longjmp.
template <typename Check>
void Checked(png_structp png, SPngJob* job, Check check) {
    EExit code = EExit::Ok;
    try {
        check();
        return;
    } catch (const CCliError& error) {
        job->failure = error.what();
        code = error.Code();
    }
    Refuse(png, job, code, "");
}

// Deflate expands a byte to at most 1032; a little more covers the framing.
constexpr double kDeflateExpansion = 1100;

bool Decode(png_structp png, png_infop info, SPngJob* job) {
    if (setjmp(png_jmpbuf(png))) return false;
    png_read_info(png, info);
    png_uint_32 width = 0, height = 0;
    int depth = 0, colourType = 0, interlace = 0;
    png_get_IHDR(png, info, &width, &height, &depth, &colourType, &interlace, nullptr, nullptr);
    if (!job->headerOnly)
        Checked(png, job, [&] {
            const uint64_t rowBytes = 1 + (uint64_t(width) * png_get_channels(png, info) * uint64_t(depth) + 7) / 8;
            RequirePlausibleSize(job->name, width, height, rowBytes, job->fileBytes, kDeflateExpansion,
                                 job->options->maxPixels);
        });
    if (!job->iccpRejected.empty())
        Checked(png, job, [&] {
            const bool unfit = job->iccpRejected.find("color space") != std::string::npos ||
                               job->iccpRejected.find("colorspace") != std::string::npos;
            throw CCliError(unfit ? EExit::WrongProfile : EExit::Corrupt,
                            job->name + ": the embedded ICC profile is refused: " + job->iccpRejected);
        });

    if (colourType == PNG_COLOR_TYPE_PALETTE) png_set_palette_to_rgb(png);
    if (colourType == PNG_COLOR_TYPE_GRAY && depth < 8) png_set_expand_gray_1_2_4_to_8(png);
    if (png_get_valid(png, info, PNG_INFO_tRNS)) png_set_tRNS_to_alpha(png);
    if (depth == 16) png_set_swap(png);
    if (colourType & PNG_COLOR_MASK_COLOR) png_set_bgr(png);
    const int passes = png_set_interlace_handling(png);
    png_read_update_info(png, info);

    const int channels = png_get_channels(png, info);
    const int bits = png_get_bit_depth(png, info);
    const EVPixelFormat format = FormatFor(channels, bits);
    if (format == VPF_UNKNOWN) Refuse(png, job, EExit::Unsupported, "PNG pixel layout is not supported");

    png_charp name = nullptr;
    int compression = 0;
    png_bytep profile = nullptr;
    png_uint_32 profileSize = 0;
    if (png_get_iCCP(png, info, &name, &compression, &profile, &profileSize))
        Checked(png, job, [&] {
            job->header.iccProfile = TakeEmbeddedProfile(job->name, profile, profileSize, format, false);
        });
    job->header.width = int(width);
    job->header.height = int(height);
    job->header.format = format;
    if (job->headerOnly) return true;
    job->image.iccProfile = job->header.iccProfile;

    if (!job->image.pixels.Create(int(width), int(height), format))
        Refuse(png, job, EExit::Failed, "not enough memory for the image");
    job->rows.resize(height);
    for (png_uint_32 y = 0; y < height; ++y) job->rows[y] = job->image.pixels.GetRow(int(y));

    if (job->status) job->status->SetProgressRange(static_cast<long long>(height) * passes);
    for (int pass = 0; pass < passes; ++pass) {
        for (png_uint_32 y = 0; y < height; ++y) {
            if (job->status) job->status->SetProgress(static_cast<long long>(pass) * height + y);
            png_read_row(png, job->rows[y], nullptr);
        }
    }
    png_read_end(png, nullptr);
    return true;
}

void Read(SPngJob& job, std::FILE* file) {
    png_structp png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &job, OnError, OnWarning);
    png_infop info = png ? png_create_info_struct(png) : nullptr;
    if (!info) {
        png_destroy_read_struct(&png, nullptr, nullptr);
        throw CCliError(EExit::Failed, job.name + ": cannot start the PNG decoder");
    }
    png_set_benign_errors(png, 1);
    png_set_user_limits(png, 0x7FFFFFFF / 8, 0x7FFFFFFF);
    if (file)
        png_init_io(png, file);
    else
        png_set_read_fn(png, &job, ReadFromMemory);
    const bool ok = Decode(png, info, &job);
    png_destroy_read_struct(&png, &info, nullptr);
    if (ok) return;
    ThrowDecodeFailure(job.refusal, job.failure, job.name, "PNG", job.message);
}

void ReadFile(SPngJob& job, const std::string& path) {
    const FileHandle file = OpenForReading(path, job.fileBytes);
    job.name = path;
    Read(job, file.get());
}

}  // namespace

SImage ReadPngFile(const std::string& path, const SReadOptions& options, CStatusControl* status) {
    SPngJob job;
    job.options = &options;
    job.status = status;
    ReadFile(job, path);
    return std::move(job.image);
}

SImageHeader ReadPngHeader(const std::string& path, const SReadOptions& options) {
    SPngJob job;
    job.options = &options;
    job.headerOnly = true;
    ReadFile(job, path);
    return std::move(job.header);
}

SImage ReadPngMemory(const uint8_t* data, size_t size, const SReadOptions& options) {
    SPngJob job;
    job.options = &options;
    job.data = data;
    job.size = size;
    job.fileBytes = size;
    job.name = "PNG data";
    Read(job, nullptr);
    return std::move(job.image);
}

}  // namespace teskcolor
