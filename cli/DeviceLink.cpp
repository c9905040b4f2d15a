#include "cli/DeviceLink.h"

#include <windows.h>

#include <icm.h>

#include <cstdlib>
#include <memory>
#include <vector>

#include "cli/Errors.h"
#include "cli/ProfileHeader.h"

namespace teskcolor {

namespace {

constexpr uint32_t kLinkClass = 0x6C696E6B;  // 'link'
constexpr uint32_t kRGB = 0x52474220;
constexpr uint32_t kCMYK = 0x434D594B;

struct SProfileCloser {
    void operator()(void* profile) const { ::CloseColorProfile(profile); }
};
struct STransformDeleter {
    void operator()(void* transform) const { ::DeleteColorTransform(transform); }
};

BMFORMAT PlatformFormat(const SImage& image) {
    if (image.cmyk) return BM_KYMCQUADS;  // C, M, Y, K in memory
    return image.pixels.GetPixelFormat() == VPF_RGB_16 ? BM_16b_RGB : BM_RGBTRIPLETS;
}

// The layout the link is applied to: grey widened to RGB, alpha refused.
SImage LinkInput(const SImage& image, uint32_t space, const std::string& origin) {
    const EVPixelFormat format = image.pixels.GetPixelFormat();
    const bool rgbLayout = !image.cmyk && (format == VPF_RGB_8 || format == VPF_RGB_16 || format == VPF_GREY_8 ||
                                           format == VPF_GREY_16);
    const bool cmykLayout = image.cmyk && format == VPF_RGBA_8;
    if (!(space == kRGB ? rgbLayout : space == kCMYK && cmykLayout))
        throw CCliError(EExit::Unsupported, origin + " takes " + SignatureText(space) + " pixels without alpha, not " +
                                                DescribeLayout(image));
    if (!CVPixelFormat::IsGreyscale(format)) return image;
    SImage rgb;
    if (!rgb.pixels.Create(image.pixels.GetWidth(), image.pixels.GetHeight(),
                           format == VPF_GREY_8 ? VPF_RGB_8 : VPF_RGB_16) ||
        !RowIterator::CopyRect(rgb.pixels, image.pixels))
        throw CCliError(EExit::Failed, "not enough memory for a working copy of the image");
    return rgb;
}

}  // namespace

SImage ApplyDeviceLink(const SProfileSource& link, const SImage& image, std::optional<int> intent) {
    const auto header = ParseProfileHeader(link.bytes.data(), link.bytes.size());
    if (!header) throw CCliError(EExit::Corrupt, link.origin + ": not an ICC profile (shorter than its header)");
    if (header->deviceClass != kLinkClass)
        throw CCliError(EExit::WrongProfile, link.origin + ": a '" + SignatureText(header->deviceClass) +
                                                 "' profile, not a device link ('link')");
    const uint32_t output = header->connectionSpace;
    if (output != kRGB && output != kCMYK)
        throw CCliError(EExit::Unsupported, link.origin + ": links to " + SignatureText(output) +
                                                " are not supported (RGB or CMYK)");
    const SImage input = LinkInput(image, header->dataColorSpace, link.origin);

    std::vector<uint8_t> block = link.bytes;  // the platform may keep reading it
    PROFILE memory{PROFILE_MEMBUFFER, block.data(), DWORD(block.size())};
    std::unique_ptr<void, SProfileCloser> profile(::OpenColorProfileW(&memory, PROFILE_READ, FILE_SHARE_READ, OPEN_EXISTING));
    if (!profile) throw CCliError(EExit::Corrupt, link.origin + ": the colour system cannot read this link");
    HPROFILE profiles[1] = {profile.get()};
    DWORD intents[1] = {DWORD(intent.value_or(int(header->renderingIntent)))};
    std::unique_ptr<void, STransformDeleter> transform(
        ::CreateMultiProfileTransform(profiles, 1, intents, 1, BEST_MODE, INDEX_DONT_CARE));
    if (!transform) throw CCliError(EExit::Failed, link.origin + ": the colour system cannot apply this link");

    SImage result;
    result.cmyk = output == kCMYK;
    const bool wide = input.pixels.GetPixelFormat() == VPF_RGB_16 && !result.cmyk;
    const int width = input.pixels.GetWidth(), height = input.pixels.GetHeight();
    if (!result.pixels.Create(width, height, result.cmyk ? VPF_RGBA_8 : wide ? VPF_RGB_16 : VPF_RGB_8))
        throw CCliError(EExit::Failed, "not enough memory for the linked image");
    // The whole image in one call when both run top-down, else a row a call.
    const bool whole = input.pixels.GetStride() > 0 && result.pixels.GetStride() > 0;
    for (int y = 0; y < height; y += whole ? height : 1)
        if (!::TranslateBitmapBits(transform.get(), const_cast<BYTE*>(input.pixels.GetRow(y)), PlatformFormat(input),
                                   DWORD(width), whole ? DWORD(height) : 1, DWORD(std::abs(input.pixels.GetStride())),
                                   result.pixels.GetRow(y), PlatformFormat(result),
                                   DWORD(std::abs(result.pixels.GetStride())), nullptr, 0))
            throw CCliError(EExit::Failed, link.origin + ": the colour system failed while applying the link");
    return result;
}

}  // namespace teskcolor
