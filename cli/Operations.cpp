#include "cli/Operations.h"

#include <tesk/path.h>

#include <cstdio>
#include <filesystem>
#include <memory>

#include "cli/ColourEquivalence.h"
#include "cli/Errors.h"
#include "cli/IntentConversion.h"
#include "cli/ModuleHost.h"
#include "cli/ProfileHeader.h"
#include "cli/SessionSettings.h"
#include "cli/imageio/ImageFile.h"
#include "cli/imageio/OutputFile.h"
#include "colormgr/ColorManager.h"
#include "host/imaging/DibIterator.h"
#include "icc/ICCReadColorProfile.h"

namespace teskcolor {

// A profile held in memory, opened by the module's reader for the length of one operation.
class CProfileInMemory {
public:
    explicit CProfileInMemory(const std::vector<uint8_t>& bytes, const std::string& origin) : m_block(bytes) {
        bool valid = true;
        if (m_block.empty() ||
            !m_reader.CreateFromRawData(m_block.data(), static_cast<unsigned long>(m_block.size()), valid))
            throw CCliError(EExit::Corrupt, origin + ": the embedded profile is " + (valid ? "damaged" : "invalid"));
    }
    CICCReadColorProfile& Reader() { return m_reader; }
    void* Handle() { return m_reader.GetProfile(); }

private:
    std::vector<uint8_t> m_block;  // declared first: it outlives the reader
    CICCReadColorProfile m_reader;
};

namespace {

constexpr uint32_t kRGB = 0x52474220;
constexpr uint32_t kCMYK = 0x434D594B;
constexpr uint32_t kGray = 0x47524159;

uint32_t ColourSpaceOf(const std::vector<uint8_t>& profile) {
    auto header = ParseProfileHeader(profile.data(), profile.size());
    return header ? header->dataColorSpace : 0;
}

}  // namespace

void ModuleFailure(int code, const std::string& what) {
    switch (code) {
        case VELL_ERR_PIXEL_FORMAT: throw CCliError(EExit::Unsupported, what + ": the pixel format is not accepted");
        case VELL_ERR_PLANE_SIZE: throw CCliError(EExit::Usage, what + ": the four plates differ in size");
        case VELL_ERR_NO_MEMORY:
            throw CCliError(EExit::Failed, what + ": no profile or transform could be had, or memory ran out");
        default: throw CCliError(EExit::Failed, what + ": the colour system failed (code " + std::to_string(code) + ")");
    }
}

namespace {

EVPixelFormat WithoutAlpha(EVPixelFormat format) {
    switch (format) {
        case VPF_RGBA_8: return VPF_RGB_8;
        case VPF_RGBA_16: return VPF_RGB_16;
        case VPF_GREY_8: return VPF_RGB_8;
        case VPF_GREY_16: return VPF_RGB_16;
        default: return format;
    }
}

// The RGB layout of the same depth, alpha kept.
EVPixelFormat RgbOf(EVPixelFormat format) {
    switch (format) {
        case VPF_GREY_8: return VPF_RGB_8;
        case VPF_GREY_16: return VPF_RGB_16;
        case VPF_GREY_ALPHA_8: return VPF_RGBA_8;
        case VPF_GREY_ALPHA_16: return VPF_RGBA_16;
        default: return format;
    }
}

CRowIterator Copy(const CRowIterator& source, EVPixelFormat format) {
    CRowIterator copy;
    if (!copy.Create(source.GetWidth(), source.GetHeight(), format) || !RowIterator::CopyRect(copy, source))
        throw CCliError(EExit::Failed, "not enough memory for a working copy of the image");
    return copy;
}

// Pixels of an RGB image converted from `profile` into the working space,
// through the module's one-off transform; alpha is kept.
void TransformIntoWorkingSpace(CColorManager& manager, SImage& image, CProfileInMemory& profile) {
    const EVPixelFormat format = image.pixels.GetPixelFormat();
    const EVPixelFormat colourOnly = WithoutAlpha(format);
    CRowIterator colours = colourOnly == format ? image.pixels : Copy(image.pixels, colourOnly);
    CDibIterator unusedSource, unusedDestination;
    if (!manager.TransformImage(profile.Handle(), unusedSource, unusedDestination, &colours, nullptr, false))
        throw CCliError(EExit::Failed, "not enough memory to convert the image");
    if (colourOnly != format && !RowIterator::CopyColor(image.pixels, colours))
        throw CCliError(EExit::Failed, "cannot put the converted colours back");
}

// The image as the module's RGB paths take it. Pixels are copied only where
// they change (grey made RGB, or `convert` set); otherwise they are shared
// with the caller's image and only read.
SImage Prepared(const SImage& image, bool convert) {
    const EVPixelFormat format = image.pixels.GetPixelFormat();
    SImage prepared;
    prepared.iccProfile = image.iccProfile;
    const bool grey = CVPixelFormat::IsGreyscale(format);
    // Grey becomes neutral RGB: the module's grey paths treat rows as RGB.
    if (grey || convert)
        prepared.pixels = Copy(image.pixels, grey ? RgbOf(format) : format);
    else
        prepared.pixels = image.pixels;
    return prepared;
}

}  // namespace

void UseCMYKProfileForThisRun(CColorManager& manager, const std::string& profile) {
    const SProfileSource& source = ResolveProfile(profile, &manager);
    RequireColourSpace(source, kCMYK, "the CMYK profile");
    KeepWritesForThisRun();
    CString name(source.moduleName);
    manager.SetCMYKProfile(name);
}

CWorkingSpacePreparation::CWorkingSpacePreparation(CColorManager& manager, const SImageHeader& image)
    : m_manager(manager) {
    const uint32_t space = ColourSpaceOf(image.iccProfile);
    const bool grey = CVPixelFormat::IsGreyscale(image.format);
    if (space != 0 && space != kRGB && space != kGray)
        throw CCliError(EExit::WrongProfile, "the image's embedded profile is " + SignatureText(space) +
                                                 ", which does not fit its " + DescribeLayout(image.format, image.cmyk) +
                                                 " pixels");
    if (image.cmyk) throw CCliError(EExit::Unsupported, "a CMYK image cannot be used here; an RGB or grey one is needed");
    if (image.format == VPF_GREY_ALPHA_8 || image.format == VPF_GREY_ALPHA_16)
        throw CCliError(EExit::Unsupported, "grey images with alpha are not supported; drop the alpha first");
    if (space == kRGB && !grey) {
        m_profile = std::make_unique<CProfileInMemory>(image.iccProfile, "the image");
        if (manager.CompareProfileVersusWorkingSpace(m_profile->Reader())) m_profile.reset();
    }
    m_workingProfile = WorkingSpaceProfile(manager).bytes;
    if (m_profile && SameRgbColours(image.iccProfile, m_workingProfile)) m_profile.reset();
}

CWorkingSpacePreparation::~CWorkingSpacePreparation() = default;

SImage CWorkingSpacePreparation::Apply(const SImage& image) const {
    SImage working = Prepared(image, m_profile != nullptr);
    if (m_profile) TransformIntoWorkingSpace(m_manager, working, *m_profile);
    working.iccProfile = m_workingProfile;
    return working;
}

SImage ToWorkingSpace(CColorManager& manager, const SImage& image, CStatusControl*) {
    const SImageHeader header{image.pixels.GetWidth(), image.pixels.GetHeight(), image.pixels.GetPixelFormat(),
                              image.cmyk, image.iccProfile};
    return CWorkingSpacePreparation(manager, header).Apply(image);
}

std::array<SImage, 4> SeparateToPlates(CColorManager& manager, const SImage& image, bool invert,
                                       CStatusControl* status) {
    const SImage working = ToWorkingSpace(manager, image, status);
    std::array<SImage, 4> plates;
    const VellErrorCode code = manager.TransformFromRGBToCMYK(status, working.pixels, plates[0].pixels,
                                                              plates[1].pixels, plates[2].pixels, plates[3].pixels, invert);
    if (code != VELL_OK) ModuleFailure(code, "separation");
    return plates;
}

SImage SeparateToPacked(CColorManager& manager, const SImage& image, CStatusControl* status) {
    const SImage working = ToWorkingSpace(manager, image, status);
    SImage packed;
    packed.cmyk = true;
    const VellErrorCode code = manager.OutputFromRGBToCMYK(status, working.pixels, packed.pixels);
    if (code != VELL_OK) ModuleFailure(code, "separation");
    if (!packed.pixels.IsAttached()) ModuleFailure(VELL_ERR_NO_MEMORY, "separation");
    packed.iccProfile = DefaultCMYKProfile(manager).bytes;
    return packed;
}

SImage CombinePlates(CColorManager& manager, std::array<SImage, 4>& plates, CStatusControl* status) {
    SImage rgb;
    const VellErrorCode code = manager.TransformFromCMYKToRGB(status, plates[0].pixels, plates[1].pixels,
                                                              plates[2].pixels, plates[3].pixels, rgb.pixels);
    if (code == VELL_ERR_TRANSLATE)
        throw CCliError(EExit::Unsupported, "plates must be four grey images of one depth, 8 or 16 bits");
    if (code != VELL_OK) ModuleFailure(code, "recombination");
    // Profile problems come back as success without an image.
    if (!rgb.pixels.IsAttached()) ModuleFailure(VELL_ERR_NO_MEMORY, "recombination");
    rgb.iccProfile = WorkingSpaceProfile(manager).bytes;
    return rgb;
}

CPackedCombination::CPackedCombination(CColorManager& manager, const SImageHeader& cmyk) : m_manager(manager) {
    if (!cmyk.cmyk) throw CCliError(EExit::Unsupported, "a CMYK image is needed, not " + DescribeLayout(cmyk.format, false));
    const uint32_t space = ColourSpaceOf(cmyk.iccProfile);
    if (space == kCMYK)
        m_profile = std::make_unique<CProfileInMemory>(cmyk.iccProfile, "the CMYK image");
    else if (space != 0)
        throw CCliError(EExit::WrongProfile, "the CMYK image's embedded profile is " + SignatureText(space));
}

CPackedCombination::~CPackedCombination() = default;

SImage CPackedCombination::Apply(const SImage& cmyk, CStatusControl* status) const {
    CRowIterator eightBit = cmyk.pixels.GetPixelFormat() == VPF_RGBA_8 ? cmyk.pixels : Copy(cmyk.pixels, VPF_RGBA_8);
    SImage rgb;
    const VellErrorCode code = m_profile ? m_manager.InputFromCMYKtoRGB(status, eightBit, rgb.pixels, m_profile->Handle())
                                         : m_manager.InputFromCMYKtoRGB(status, eightBit, rgb.pixels);
    if (code != VELL_OK) ModuleFailure(code, "recombination");
    if (!rgb.pixels.IsAttached()) ModuleFailure(VELL_ERR_NO_MEMORY, "recombination");
    rgb.iccProfile = WorkingSpaceProfile(m_manager).bytes;
    return rgb;
}

CConversionToWorkingSpace::CConversionToWorkingSpace(CColorManager& manager, const SImageHeader& image,
                                                     const std::string& assumedSource, std::optional<int> intent)
    : m_manager(manager) {
    std::vector<uint8_t> source = image.iccProfile;
    if (!assumedSource.empty() && source.empty()) source = ResolveProfile(assumedSource, &manager).bytes;
    if (source.empty())
        throw CCliError(EExit::NotFound, "the image carries no profile; name its profile with --from");
    if (ColourSpaceOf(source) != kRGB)
        throw CCliError(EExit::WrongProfile, "the source profile is " + SignatureText(ColourSpaceOf(source)) +
                                                 "; convert takes RGB images with RGB profiles");
    if (image.cmyk) throw CCliError(EExit::Unsupported, "a CMYK image cannot be converted here; use 'combine'");
    if (intent) {
        m_intent = std::make_unique<CIntentConversion>(manager, source, *intent);
        return;
    }
    m_profile = std::make_unique<CProfileInMemory>(source, "the source profile");
    m_workingProfile = WorkingSpaceProfile(manager).bytes;
    if (SameRgbColours(source, m_workingProfile)) m_profile.reset();
}

CConversionToWorkingSpace::~CConversionToWorkingSpace() = default;

SImage CConversionToWorkingSpace::ApplyInPlace(const SImage& image) const {
    const EVPixelFormat format = image.pixels.GetPixelFormat();
    SImage working;
    working.pixels = CVPixelFormat::IsGreyscale(format) ? Copy(image.pixels, RgbOf(format)) : image.pixels;
    if (m_intent) {
        m_intent->Apply(working);
        return working;
    }
    if (m_profile) TransformIntoWorkingSpace(m_manager, working, *m_profile);
    working.iccProfile = m_workingProfile;
    return working;
}

CDisplayRendering::CDisplayRendering(CColorManager& manager, const std::string& proofProfile, int intent,
                                     int proofIntent)
    : m_manager(manager) {
    std::wstring proofName;
    // The module finds the proof profile in the colour directory only.
    if (!proofProfile.empty()) proofName = NameInColourDirectory(ResolveProfile(proofProfile, &manager), manager, false);
    KeepWritesForThisRun();
    std::wstring none;
    proofName.push_back(L'\0');
    none.push_back(L'\0');
    std::wstring noPrinter = none;
    manager.UpdateSettings(true, !proofProfile.empty(), none.data(), noPrinter.data(), proofName.data(), DWORD(intent),
                           DWORD(proofIntent));
    CString monitor;
    manager.GetMonitorProfile(monitor);
    if (monitor.IsEmpty()) manager.GetDefaultMonitorProfile(monitor);
    if (!monitor.IsEmpty()) {
        std::string name = monitor.Utf8();
        if (name.find('\\') != std::string::npos) name = tesk::path::ToNative(monitor.GetString());
        try {
            m_monitorProfile = ResolveProfile(name, &manager).bytes;
        } catch (const CCliError&) {
            // A monitor profile that cannot be read leaves the proof untagged.
        }
    }
}

SImage CDisplayRendering::Apply(const SImage& working) const {
    SImage display;
    if (!display.pixels.Create(working.pixels.GetWidth(), working.pixels.GetHeight(), working.pixels.GetPixelFormat()))
        throw CCliError(EExit::Failed, "not enough memory for the proof");
    CRowIterator source = working.pixels;
    if (!m_manager.TransformIterator(source, &display.pixels, false))
        throw CCliError(EExit::Failed, "the display transform could not be built (check the monitor profile)");
    display.iccProfile = m_monitorProfile;
    return display;
}

SImage ProofImage(CColorManager& manager, const SImage& image, const std::string& proofProfile, int intent,
                  int proofIntent, CStatusControl* status) {
    const SImage working = ToWorkingSpace(manager, image, status);
    return CDisplayRendering(manager, proofProfile, intent, proofIntent).Apply(working);
}

void ComplementPlate(SImage& plate) {
    const int bytes = plate.pixels.GetBytesPerRow();
    for (int y = 0; y < plate.pixels.GetHeight(); ++y) {
        BYTE* row = plate.pixels.GetRow(y);
        for (int i = 0; i < bytes; ++i) row[i] = BYTE(~row[i]);
    }
}

}  // namespace teskcolor
