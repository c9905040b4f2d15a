#include "cli/imageio/ImageFile.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "cli/Errors.h"
#include "cli/imageio/Codecs.h"
#include "cli/imageio/StandardStreams.h"

namespace teskcolor {

std::optional<EImageType> ImageTypeForPath(const std::string& path) {
    if (IsStandardStream(path)) return StandardOutputFormat();
    std::string extension = std::filesystem::path(path).extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return char(std::tolower(c)); });
    if (extension == ".tif" || extension == ".tiff") return EImageType::Tiff;
    if (extension == ".png") return EImageType::Png;
    if (extension == ".jpg" || extension == ".jpeg") return EImageType::Jpeg;
    return std::nullopt;
}

std::optional<EImageType> DetectImageType(const uint8_t* head, size_t size) {
    static constexpr uint8_t kPng[] = {0x89, 'P', 'N', 'G', 0x0D, 0x0A, 0x1A, 0x0A};
    if (size >= 8 && std::memcmp(head, kPng, 8) == 0) return EImageType::Png;
    if (size >= 3 && head[0] == 0xFF && head[1] == 0xD8 && head[2] == 0xFF) return EImageType::Jpeg;
    if (size >= 4 && ((head[0] == 'I' && head[1] == 'I' && (head[2] == 42 || head[2] == 43) && head[3] == 0) ||
                      (head[0] == 'M' && head[1] == 'M' && head[2] == 0 && (head[3] == 42 || head[3] == 43))))
        return EImageType::Tiff;
    return std::nullopt;
}

namespace {

EImageType FileImageType(const std::string& path) {
    std::error_code error;
    if (!std::filesystem::exists(path, error)) throw CCliError(EExit::NotFound, path + ": no such file");
    if (std::filesystem::is_directory(path, error)) throw CCliError(EExit::NotFound, path + ": is a folder");
    std::FILE* file = std::fopen(path.c_str(), "rb");
    if (!file) throw CCliError(EExit::NotFound, path + ": cannot open: " + std::strerror(errno));
    uint8_t head[8] = {};
    const size_t got = std::fread(head, 1, sizeof head, file);
    std::fclose(file);
    const std::optional<EImageType> type = DetectImageType(head, got);
    if (!type) {
        if (got == 0) throw CCliError(EExit::Corrupt, path + ": empty file");
        throw CCliError(EExit::Unsupported, path + ": not a TIFF, PNG or JPEG image");
    }
    return *type;
}

}  // namespace

namespace {

SImage ReadStandardInput(const SReadOptions& options) {
    const std::vector<uint8_t>& bytes = StandardInputBytes(options.maxPixels);
    if (!DetectImageType(bytes.data(), bytes.size()))
        throw CCliError(EExit::Unsupported, std::string(kStandardInputName) + ": not a TIFF, PNG or JPEG image");
    return ReadImageMemory(bytes.data(), bytes.size(), options);
}

}  // namespace

SImage ReadImage(const std::string& path, CStatusControl* status, const SReadOptions& options) {
    if (IsStandardStream(path)) return ReadStandardInput(options);
    switch (FileImageType(path)) {
        case EImageType::Tiff: return ReadTiffFile(path, options, status);
        case EImageType::Png: return ReadPngFile(path, options, status);
        case EImageType::Jpeg: return ReadJpegFile(path, options, status);
    }
    throw CCliError(EExit::Unsupported, path + ": unknown image type");
}

SImageHeader ReadImageHeader(const std::string& path, const SReadOptions& options) {
    if (IsStandardStream(path)) {
        // Read once and kept: the pixels that follow come from the same bytes.
        SImage image = ReadStandardInput({});
        return {image.pixels.GetWidth(), image.pixels.GetHeight(), image.pixels.GetPixelFormat(), image.cmyk,
                std::move(image.iccProfile)};
    }
    switch (FileImageType(path)) {
        case EImageType::Tiff: return ReadTiffHeader(path, options);
        case EImageType::Png: return ReadPngHeader(path, options);
        case EImageType::Jpeg: return ReadJpegHeader(path, options);
    }
    throw CCliError(EExit::Unsupported, path + ": unknown image type");
}

SImage ReadImageMemory(const uint8_t* data, size_t size, const SReadOptions& options) {
    const std::optional<EImageType> type = DetectImageType(data, size);
    if (!type) throw CCliError(EExit::Unsupported, "not a TIFF, PNG or JPEG image");
    switch (*type) {
        case EImageType::Tiff: return ReadTiffMemory(data, size, options);
        case EImageType::Png: return ReadPngMemory(data, size, options);
        case EImageType::Jpeg: return ReadJpegMemory(data, size, options);
    }
    throw CCliError(EExit::Unsupported, "unknown image type");
}

void WriteImage(const std::string& path, const SImage& image, CStatusControl* status, const SWriteOptions& options) {
    const std::optional<EImageType> type = ImageTypeForPath(path);
    if (!type) throw CCliError(EExit::Usage, path + ": output must end in .tif, .tiff, .png, .jpg or .jpeg");
    if (!image.pixels.IsAttached()) throw CCliError(EExit::Failed, path + ": no image to write");
    if (options.tiffSamples != ETiffSamples::AsImage && *type != EImageType::Tiff)
        throw CCliError(EExit::Usage, path + ": floating-point and Lab samples are written to .tif only");
    switch (*type) {
        case EImageType::Tiff: WriteTiff(path, image, options, status); return;
        case EImageType::Png: WritePng(path, image, options, status); return;
        case EImageType::Jpeg: WriteJpeg(path, image, options, status); return;
    }
}

std::string DescribeLayout(const SImage& image) {
    return DescribeLayout(image.pixels.GetPixelFormat(), image.cmyk);
}

std::string DescribeLayout(EVPixelFormat format, bool cmyk) {
    std::string depth = CVPixelFormat::Is16bit(format) ? "16-bit " : "8-bit ";
    if (cmyk) return depth + "CMYK";
    switch (format) {
        case VPF_GREY_8:
        case VPF_GREY_16: return depth + "grey";
        case VPF_GREY_ALPHA_8:
        case VPF_GREY_ALPHA_16: return depth + "grey with alpha";
        case VPF_RGB_8:
        case VPF_RGB_16: return depth + "RGB";
        case VPF_RGBA_8:
        case VPF_RGBA_16: return depth + "RGB with alpha";
        default: return "pixel format " + std::to_string(int(format));
    }
}

}  // namespace teskcolor
