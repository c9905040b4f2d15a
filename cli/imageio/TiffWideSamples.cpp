#include "cli/imageio/TiffWideSamples.h"

#include <lcms2.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "cli/Errors.h"
#include "cli/imageio/PixelOrder.h"
#include "cli/imageio/TiffLayout.h"

namespace teskcolor {

namespace {

std::function<std::vector<uint8_t>()>& TargetSource() {
    static std::function<std::vector<uint8_t>()> source;
    return source;
}

struct ProfileCloser {
    void operator()(void* profile) const {
        if (profile) cmsCloseProfile(profile);
    }
};
using ProfilePtr = std::unique_ptr<void, ProfileCloser>;

std::vector<uint8_t> SrgbBytes() {
    ProfilePtr srgb(cmsCreate_sRGBProfile());
    cmsUInt32Number size = 0;
    if (!srgb || !cmsSaveProfileToMem(srgb.get(), nullptr, &size)) return {};
    std::vector<uint8_t> bytes(size);
    if (!cmsSaveProfileToMem(srgb.get(), bytes.data(), &size)) return {};
    return bytes;
}

std::vector<uint8_t> TargetProfile() {
    std::vector<uint8_t> target = TargetSource() ? TargetSource()() : std::vector<uint8_t>{};
    return target.empty() ? SrgbBytes() : target;
}

ProfilePtr OpenProfile(const std::vector<uint8_t>& bytes, const std::string& name, const char* which) {
    ProfilePtr profile(cmsOpenProfileFromMem(bytes.data(), cmsUInt32Number(bytes.size())));
    if (!profile) throw CCliError(EExit::Corrupt, name + ": " + which + " cannot be used for conversion");
    return profile;
}

// NaN reads as 0, and magnitudes past any light a 16-bit result could keep are
// held at 16, so that no conversion computes with infinities.
float Finite(float value) { return std::isnan(value) ? 0.0f : std::clamp(value, -16.0f, 16.0f); }

uint16_t ToWord(float value) {
    const float clipped = value > 0.0f ? (value < 1.0f ? value : 1.0f) : 0.0f;
    return uint16_t(std::lround(clipped * 65535.0f));
}

template <typename T>
T Clamped(long value) {
    constexpr long most = long(std::numeric_limits<T>::max());
    return T(value < 0 ? 0 : value > most ? most : value);
}

}  // namespace

void SetWideSampleTarget(std::function<std::vector<uint8_t>()> target) { TargetSource() = std::move(target); }

struct CWideSampleDecoder::STransform {
    cmsHTRANSFORM handle = nullptr;
    ~STransform() {
        if (handle) cmsDeleteTransform(handle);
    }
};
struct CWideSampleEncoder::STransform {
    cmsHTRANSFORM handle = nullptr;
    ~STransform() {
        if (handle) cmsDeleteTransform(handle);
    }
};

CWideSampleDecoder::CWideSampleDecoder(const STiffLayout& layout, const std::vector<uint8_t>& embedded,
                                       const std::string& name)
    : m_layout(layout), m_work(size_t(layout.width) * layout.samples) {
    const bool lab = layout.samplesHeld == ETiffSamples::Lab;
    // Grey and untagged RGB keep their meaning at 16 bits; Lab and tagged RGB
    // are converted into the target so that no precision is lost on the way.
    if (!lab && (layout.colourChannels != 3 || embedded.empty())) {
        m_profile = embedded;
        return;
    }
    m_profile = TargetProfile();
    // Already in the target: nothing to convert, and no rounding on the way.
    if (!lab && embedded == m_profile) return;
    ProfilePtr source = lab ? ProfilePtr(cmsCreateLab4Profile(nullptr)) : OpenProfile(embedded, name, "the embedded profile");
    ProfilePtr target = OpenProfile(m_profile, name, "the working space");
    const cmsUInt32Number in = lab ? TYPE_Lab_FLT : layout.alpha ? TYPE_RGBA_FLT : TYPE_RGB_FLT;
    const cmsUInt32Number out = layout.alpha ? TYPE_BGRA_16 : TYPE_BGR_16;
    m_transform = std::make_unique<STransform>();
    m_transform->handle = cmsCreateTransform(source.get(), in, target.get(), out, INTENT_RELATIVE_COLORIMETRIC,
                                             cmsFLAGS_COPY_ALPHA | cmsFLAGS_NOCACHE);
    if (!m_transform->handle)
        throw CCliError(EExit::Unsupported, name + ": no conversion from the image's colours into the working space");
}

CWideSampleDecoder::~CWideSampleDecoder() = default;

void CWideSampleDecoder::Decode(const uint8_t* fileRow, uint8_t* imageRow) const {
    const size_t width = m_layout.width, samples = m_layout.samples;
    float* work = m_work.data();
    if (m_layout.samplesHeld == ETiffSamples::Float) {
        std::memcpy(work, fileRow, width * samples * sizeof(float));
        for (size_t i = 0; i < width * samples; ++i) work[i] = Finite(work[i]);
    } else {
        // ICC Lab holds a* and b* offset by half the range, CIE Lab as signed numbers.
        const bool wide = m_layout.bits == 16;
        for (size_t i = 0; i < width * 3; i += 3) {
            if (wide) {
                uint16_t v[3];
                std::memcpy(v, fileRow + i * 2, sizeof v);
                work[i] = float(v[0]) * 100.0f / 65535.0f;
                for (size_t c = 1; c < 3; ++c)
                    work[i + c] = float(m_layout.signedLab ? int16_t(v[c]) : int(v[c]) - 32768) / 256.0f;
            } else {
                work[i] = float(fileRow[i]) * 100.0f / 255.0f;
                for (size_t c = 1; c < 3; ++c)
                    work[i + c] = float(m_layout.signedLab ? int8_t(fileRow[i + c]) : int(fileRow[i + c]) - 128);
            }
        }
    }
    if (m_transform) {
        cmsDoTransform(m_transform->handle, work, imageRow, cmsUInt32Number(width));
        return;
    }
    auto* words = reinterpret_cast<uint16_t*>(imageRow);
    for (size_t i = 0; i < width * samples; ++i) words[i] = ToWord(work[i]);
    if (m_layout.colourChannels == 3) SwapRedBlue(imageRow, width, int(samples), 2);
}

CWideSampleEncoder::CWideSampleEncoder(ETiffSamples samples, const SImageHeader& header, const std::string& name)
    : m_samples(samples), m_header(header) {
    const int channels = ChannelsOf(header.format);
    m_work.resize(size_t(header.width) * size_t(channels));
    if (header.cmyk)
        throw CCliError(EExit::Unsupported, name + ": floating-point and Lab TIFFs are written from RGB or grey, not CMYK");
    if (samples != ETiffSamples::Lab) return;
    if (CVPixelFormat::IsAlphaChannelPresent(header.format))
        throw CCliError(EExit::Unsupported, name + ": a Lab TIFF holds no alpha; drop the alpha first");
    if (header.iccProfile.empty())
        throw CCliError(EExit::Unsupported, name + ": the image has no profile to convert into Lab from");
    const bool wide = BytesPerSampleOf(header.format) == 2;
    const cmsUInt32Number in = channels == 1 ? (wide ? TYPE_GRAY_16 : TYPE_GRAY_8) : (wide ? TYPE_BGR_16 : TYPE_BGR_8);
    ProfilePtr source = OpenProfile(header.iccProfile, name, "the image's profile");
    ProfilePtr lab(cmsCreateLab4Profile(nullptr));
    m_transform = std::make_unique<STransform>();
    m_transform->handle = cmsCreateTransform(source.get(), in, lab.get(), TYPE_Lab_FLT, INTENT_RELATIVE_COLORIMETRIC,
                                             cmsFLAGS_NOCACHE);
    if (!m_transform->handle) throw CCliError(EExit::Unsupported, name + ": no conversion from the image's profile into Lab");
    m_work.resize(size_t(header.width) * 3);
}

CWideSampleEncoder::~CWideSampleEncoder() = default;

int CWideSampleEncoder::FileChannels() const {
    return m_samples == ETiffSamples::Lab ? 3 : ChannelsOf(m_header.format);
}

int CWideSampleEncoder::FileBitsPerSample() const {
    return m_samples == ETiffSamples::Lab ? BytesPerSampleOf(m_header.format) * 8 : 32;
}

void CWideSampleEncoder::Encode(const uint8_t* imageRow, uint8_t* fileRow) const {
    const size_t width = size_t(m_header.width);
    const bool wide = BytesPerSampleOf(m_header.format) == 2;
    float* work = m_work.data();
    if (m_samples == ETiffSamples::Float) {
        const size_t channels = size_t(ChannelsOf(m_header.format)), count = width * channels;
        for (size_t i = 0; i < count; ++i) {
            uint16_t word = imageRow[i];
            if (wide) std::memcpy(&word, imageRow + 2 * i, 2);
            work[i] = float(word) / (wide ? 65535.0f : 255.0f);
        }
        if (channels >= 3)
            for (size_t i = 0; i < count; i += channels) std::swap(work[i], work[i + 2]);
        std::memcpy(fileRow, work, count * sizeof(float));
        return;
    }
    cmsDoTransform(m_transform->handle, imageRow, work, cmsUInt32Number(width));
    for (size_t i = 0; i < width * 3; i += 3) {
        if (wide) {
            const uint16_t v[3] = {Clamped<uint16_t>(std::lround(work[i] * 655.35f)),
                                   Clamped<uint16_t>(std::lround(work[i + 1] * 256.0f) + 32768),
                                   Clamped<uint16_t>(std::lround(work[i + 2] * 256.0f) + 32768)};
            std::memcpy(fileRow + i * 2, v, sizeof v);
        } else {
            fileRow[i] = Clamped<uint8_t>(std::lround(work[i] * 2.55f));
            fileRow[i + 1] = Clamped<uint8_t>(std::lround(work[i + 1]) + 128);
            fileRow[i + 2] = Clamped<uint8_t>(std::lround(work[i + 2]) + 128);
        }
    }
}

}  // namespace teskcolor
