#include "cli/GamutWarning.h"

#include <windows.h>

#include <icm.h>

#include <cstdio>

#include "cli/Errors.h"
#include "cli/ModuleHost.h"
#include "cli/Operations.h"
#include "cli/ProfileHeader.h"

namespace teskcolor {
namespace {

constexpr uint32_t kRGB = 0x52474220;

class CPlatformProfile {
public:
    explicit CPlatformProfile(const std::vector<uint8_t>& bytes) : m_bytes(bytes) {
        PROFILE record{PROFILE_MEMBUFFER, m_bytes.data(), static_cast<DWORD>(m_bytes.size())};
        m_handle = OpenColorProfileW(&record, PROFILE_READ, FILE_SHARE_READ, OPEN_EXISTING);
    }
    ~CPlatformProfile() {
        if (m_handle) CloseColorProfile(m_handle);
    }
    CPlatformProfile(const CPlatformProfile&) = delete;
    CPlatformProfile& operator=(const CPlatformProfile&) = delete;
    HPROFILE Handle() const { return m_handle; }

private:
    std::vector<uint8_t> m_bytes;
    HPROFILE m_handle = nullptr;
};

[[noreturn]] void CannotCheck(const char* what) {
    char message[160];
    std::snprintf(message, sizeof message, "the gamut check failed: %s (error %lu)", what,
                  static_cast<unsigned long>(GetLastError()));
    throw CCliError(GetLastError() == ERROR_INVALID_TRANSFORM || GetLastError() == ERROR_COLORSPACE_MISMATCH
                        ? EExit::WrongProfile
                        : EExit::Failed,
                    message);
}

BMFORMAT BitmapFormat(EVPixelFormat format) {
    switch (format) {
    case VPF_RGBA_8: return BM_xRGBQUADS;
    case VPF_RGB_16: return BM_16b_RGB;
    case VPF_GREY_8: return BM_GRAY;
    case VPF_GREY_16: return BM_16b_GRAY;
    default: return BM_RGBTRIPLETS;
    }
}

}  // namespace

// The transform from the pixels' profile to the printer's, made once and
// asked about any number of images or bands.
class CGamutCheck::CTransform {
public:
    CTransform(const std::vector<uint8_t>& sourceProfile, const std::vector<uint8_t>& gamutProfile, int intent)
        : m_source(sourceProfile), m_gamut(gamutProfile) {
        if (!m_source.Handle() || !m_gamut.Handle()) CannotCheck("a profile could not be opened");
        HPROFILE chain[2] = {m_source.Handle(), m_gamut.Handle()};
        DWORD intents[1] = {static_cast<DWORD>(intent)};
        m_handle = CreateMultiProfileTransform(chain, 2, intents, 1, BEST_MODE, INDEX_DONT_CARE);
        if (!m_handle) CannotCheck("the profiles cannot be joined");
    }
    ~CTransform() { DeleteColorTransform(m_handle); }
    CTransform(const CTransform&) = delete;
    CTransform& operator=(const CTransform&) = delete;

    std::vector<uint8_t> Check(const SImage& image) const {
        BMFORMAT format = BitmapFormat(image.pixels.GetPixelFormat());
        CRowIterator pixels = image.pixels;
        if (image.pixels.GetPixelFormat() == VPF_RGBA_16) {
            // No bitmap format has 16-bit quads: the alpha goes.
            if (!pixels.Create(image.pixels.GetWidth(), image.pixels.GetHeight(), VPF_RGB_16) ||
                !RowIterator::CopyRect(pixels, image.pixels))
                throw CCliError(EExit::Failed, "not enough memory for the gamut check");
            format = BM_16b_RGB;
        }
        const DWORD width = static_cast<DWORD>(pixels.GetWidth());
        const int height = pixels.GetHeight();
        std::vector<uint8_t> outOfGamut(size_t{width} * static_cast<size_t>(height));
        bool checked = true;
        if (pixels.GetStride() > 0) {
            checked = CheckBitmapBits(m_handle, pixels.GetRow(0), format, width, static_cast<DWORD>(height),
                                      static_cast<DWORD>(pixels.GetStride()), outOfGamut.data(), nullptr, 0);
        } else {
            for (int y = 0; y < height && checked; ++y)
                checked = CheckBitmapBits(m_handle, pixels.GetRow(y), format, width, 1, 0,
                                          outOfGamut.data() + size_t{width} * static_cast<size_t>(y), nullptr, 0);
        }
        if (!checked) CannotCheck("the colour system refused the pixels");
        return outOfGamut;
    }

private:
    CPlatformProfile m_source, m_gamut;
    HTRANSFORM m_handle = nullptr;
};

CGamutCheck::CGamutCheck(CColorManager& manager, const SImageHeader& image, const std::vector<uint8_t>& gamutProfile,
                         int intent) {
    const auto header = ParseProfileHeader(image.iccProfile.data(), image.iccProfile.size());
    if (!image.cmyk && !CVPixelFormat::IsGreyscale(image.format) && header && header->dataColorSpace == kRGB) {
        m_transform = std::make_unique<CTransform>(image.iccProfile, gamutProfile, intent);
        return;
    }
    m_working = std::make_unique<CWorkingSpacePreparation>(manager, image);
    m_transform = std::make_unique<CTransform>(WorkingSpaceProfile(manager).bytes, gamutProfile, intent);
}

CGamutCheck::~CGamutCheck() = default;

std::vector<uint8_t> CGamutCheck::OutOfGamut(const SImage& image) const {
    return m_transform->Check(m_working ? m_working->Apply(image) : image);
}

SWarningColour ParseWarningColour(const std::string& text) {
    unsigned r = 0, g = 0, b = 0;
    char tail = 0;
    const bool hex = text.size() == 7 && text[0] == '#' &&
                     text.find_first_not_of("0123456789abcdefABCDEF", 1) == std::string::npos &&
                     std::sscanf(text.c_str() + 1, "%2x%2x%2x", &r, &g, &b) == 3;
    const bool triple = !hex && text.find_first_not_of("0123456789,") == std::string::npos &&
                        std::sscanf(text.c_str(), "%u,%u,%u%c", &r, &g, &b, &tail) == 3;
    if ((!hex && !triple) || r > 255 || g > 255 || b > 255)
        throw CCliError(EExit::Usage, "a warning colour is #rrggbb or R,G,B (0..255), not '" + text + "'");
    return {uint8_t(r), uint8_t(g), uint8_t(b)};
}

std::vector<uint8_t> OutOfGamutPixels(CColorManager& manager, const SImage& image,
                                      const std::vector<uint8_t>& gamutProfile, int intent) {
    const SImageHeader header{image.pixels.GetWidth(), image.pixels.GetHeight(), image.pixels.GetPixelFormat(),
                              image.cmyk, image.iccProfile};
    return CGamutCheck(manager, header, gamutProfile, intent).OutOfGamut(image);
}

void PaintGamutWarning(SImage& image, const std::vector<uint8_t>& outOfGamut, SWarningColour colour) {
    CRowIterator& pixels = image.pixels;
    const EVPixelFormat format = pixels.GetPixelFormat();
    const bool wide = CVPixelFormat::Is16bit(format);
    const bool grey = CVPixelFormat::IsGreyscale(format);
    const int channels = (grey ? 1 : 3) + (CVPixelFormat::IsAlphaChannelPresent(format) ? 1 : 0);
    // Grey images get the colour's luma.
    const unsigned luma = (299u * colour.red + 587u * colour.green + 114u * colour.blue + 500u) / 1000u;
    const unsigned bgr[3] = {grey ? luma : colour.blue, colour.green, colour.red};
    const size_t width = static_cast<size_t>(pixels.GetWidth());
    if (outOfGamut.size() != width * static_cast<size_t>(pixels.GetHeight()))
        throw CCliError(EExit::Failed, "the gamut check does not fit the image");
    for (int y = 0; y < pixels.GetHeight(); ++y) {
        BYTE* row = pixels.GetRow(y);
        const uint8_t* marks = outOfGamut.data() + width * static_cast<size_t>(y);
        for (size_t x = 0; x < width; ++x) {
            if (!marks[x]) continue;
            for (int c = 0; c < (grey ? 1 : 3); ++c) {
                if (wide)
                    reinterpret_cast<uint16_t*>(row)[x * channels + c] = static_cast<uint16_t>(bgr[c] * 257u);
                else
                    row[x * channels + c] = static_cast<BYTE>(bgr[c]);
            }
        }
    }
}

}  // namespace teskcolor
