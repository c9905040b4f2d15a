#include <png.h>

#include <csetjmp>
#include <cstdio>

#include "cli/Errors.h"
#include "cli/imageio/Codecs.h"
#include "cli/imageio/OutputFile.h"
#include "cli/imageio/PixelOrder.h"
#include "host/imaging/StatusControl.h"

namespace teskcolor {

namespace {

struct SPngWriteJob {
    const SImage* image = nullptr;
    std::FILE* file = nullptr;
    CStatusControl* status = nullptr;
    bool embedProfile = true;
    char message[256] = {};
};

void OnError(png_structp png, png_const_charp text) {
    auto* job = static_cast<SPngWriteJob*>(png_get_error_ptr(png));
    std::snprintf(job->message, sizeof job->message, "%s", text ? text : "PNG error");
    png_longjmp(png, 1);
}
void OnWarning(png_structp, png_const_charp) {}

int ColourTypeOf(EVPixelFormat format) {
    switch (ChannelsOf(format)) {
        case 1: return PNG_COLOR_TYPE_GRAY;
        case 2: return PNG_COLOR_TYPE_GRAY_ALPHA;
        case 3: return PNG_COLOR_TYPE_RGB;
        default: return PNG_COLOR_TYPE_RGB_ALPHA;
    }
}

bool Encode(png_structp png, png_infop info, SPngWriteJob* job) {
    if (setjmp(png_jmpbuf(png))) return false;
    const CRowIterator& pixels = job->image->pixels;
    const EVPixelFormat format = pixels.GetPixelFormat();
    png_init_io(png, job->file);
    png_set_compression_level(png, 4);
    png_set_IHDR(png, info, png_uint_32(pixels.GetWidth()), png_uint_32(pixels.GetHeight()),
                 BytesPerSampleOf(format) * 8, ColourTypeOf(format), PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT,
                 PNG_FILTER_TYPE_DEFAULT);
    const auto& profile = job->image->iccProfile;
    if (job->embedProfile && !profile.empty())
        png_set_iCCP(png, info, "ICC profile", PNG_COMPRESSION_TYPE_BASE, profile.data(), png_uint_32(profile.size()));
    png_write_info(png, info);
    if (CVPixelFormat::Is16bit(format)) png_set_swap(png);
    if (ChannelsOf(format) >= 3) png_set_bgr(png);
    const int height = pixels.GetHeight();
    if (job->status) job->status->SetProgressRange(height);
    for (int y = 0; y < height; ++y) {
        if (job->status) job->status->SetProgress(y);
        png_write_row(png, pixels.GetRow(y));
    }
    png_write_end(png, nullptr);
    return true;
}

}  // namespace

void WritePng(const std::string& path, const SImage& image, const SWriteOptions& options, CStatusControl* status) {
    const EVPixelFormat format = image.pixels.GetPixelFormat();
    if (image.cmyk || FormatFor(ChannelsOf(format), BytesPerSampleOf(format) * 8) != format)
        throw CCliError(EExit::Unsupported, path + ": PNG cannot hold " + DescribeLayout(image));
    COutputFile output(path, options.transaction);
    SPngWriteJob job;
    job.image = &image;
    job.file = output.Stream();
    job.status = status;
    job.embedProfile = options.encoding.embedProfile;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &job, OnError, OnWarning);
    png_infop info = png ? png_create_info_struct(png) : nullptr;
    if (!info) {
        png_destroy_write_struct(&png, nullptr);
        throw CCliError(EExit::Failed, path + ": cannot start the PNG encoder");
    }
    png_set_benign_errors(png, 1);
    const bool ok = Encode(png, info, &job);
    png_destroy_write_struct(&png, &info);
    if (!ok) throw CCliError(EExit::WriteFailed, path + ": cannot write the PNG: " + job.message);
    output.Commit();
}

}  // namespace teskcolor
