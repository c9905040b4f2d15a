#include "cli/BandedSeparation.h"

#include <algorithm>
#include <array>
#include <memory>

#include "cli/Errors.h"
#include "cli/ModuleHost.h"
#include "cli/Operations.h"
#include "cli/PlateFiles.h"
#include "cli/imageio/ImageBands.h"
#include "cli/imageio/OutputFile.h"
#include "colormgr/ColorManager.h"
#include "host/imaging/StatusControl.h"

namespace teskcolor {

namespace {

// Large enough that the module's per-call set-up (profiles, cached
// transform) is lost in the work, small enough to stay in the caches' reach.
constexpr size_t kBandBytes = size_t{8} << 20;

int BandRows(const SImageHeader& header) {
    const size_t rowBytes = std::max<size_t>(size_t(CVPixelFormat::GetRowBytes(header.format, header.width)), 1);
    return int(std::clamp<size_t>(kBandBytes / rowBytes, 1, size_t(std::max(header.height, 1))));
}

// Hands every band of the file, in the working space, to `separate` with a
// status control that maps the band onto the whole image's progress.
template <typename Separate>
void ForEachBand(CColorManager& manager, const std::string& input, CStatusControl* status, Separate separate) {
    CImageBandReader reader(input);
    const CWorkingSpacePreparation working(manager, reader.Header());
    const int height = reader.Header().height;
    const int rows = BandRows(reader.Header());
    if (status) status->SetProgressRange(height);
    while (reader.RowsLeft() > 0) {
        const int first = height - reader.RowsLeft();
        const SImage band = reader.NextBand(rows);
        CStatusControl bandStatus(status, first, first + band.pixels.GetHeight());
        separate(working.Apply(band), height, &bandStatus);
    }
}

SImageHeader HeaderFor(const CRowIterator& band, int height, bool cmyk, std::vector<uint8_t> profile) {
    return {band.GetWidth(), height, band.GetPixelFormat(), cmyk, std::move(profile)};
}

// 16-bit ink amounts through the module's 16-bit separation, which needs
// 16-bit RGB in: the four plates it gives are packed C,M,Y,K.
CRowIterator SeparateSixteenBit(CColorManager& manager, const CRowIterator& rgb, CStatusControl* status) {
    CRowIterator wide;
    const bool widen = !CVPixelFormat::Is16bit(rgb.GetPixelFormat());
    if (widen && (!wide.Create(rgb.GetWidth(), rgb.GetHeight(), VPF_RGB_16) || !RowIterator::CopyRect(wide, rgb)))
        ModuleFailure(VELL_ERR_NO_MEMORY, "separation");
    std::array<CRowIterator, 4> plates;
    const VellErrorCode code = manager.TransformFromRGBToCMYK(status, widen ? wide : rgb, plates[0], plates[1],
                                                              plates[2], plates[3], false);
    if (code != VELL_OK) ModuleFailure(code, "separation");
    CRowIterator packed;
    if (!packed.Create(rgb.GetWidth(), rgb.GetHeight(), VPF_RGBA_16)) ModuleFailure(VELL_ERR_NO_MEMORY, "separation");
    for (const CRowIterator& plate : plates)
        if (plate.GetPixelFormat() != VPF_GREY_16) ModuleFailure(VELL_ERR_TRANSLATE, "16-bit separation");
    for (int y = 0; y < packed.GetHeight(); ++y) {
        auto* out = reinterpret_cast<uint16_t*>(packed.GetRow(y));
        for (size_t ink = 0; ink < 4; ++ink) {
            const auto* in = reinterpret_cast<const uint16_t*>(plates[ink].GetRow(y));
            for (int x = 0; x < packed.GetWidth(); ++x) out[4 * x + ink] = in[x];
        }
    }
    return packed;
}

}  // namespace

std::vector<std::string> SeparateFileToPlates(CColorManager& manager, const std::string& input,
                                              const std::string& pattern, bool invert, CStatusControl* status) {
    const auto paths = PlatePaths(pattern);
    COutputTransaction transaction;
    SWriteOptions options;
    options.transaction = &transaction;
    std::array<std::unique_ptr<IImageBandWriter>, 4> writers;
    ForEachBand(manager, input, status, [&](const SImage& band, int height, CStatusControl* bandStatus) {
        std::array<CRowIterator, 4> plates;
        const VellErrorCode code =
            manager.TransformFromRGBToCMYK(bandStatus, band.pixels, plates[0], plates[1], plates[2], plates[3], invert);
        if (code != VELL_OK) ModuleFailure(code, "separation");
        for (size_t i = 0; i < 4; ++i) {
            // The plates' depth is the module's choice: the writers start with the first band.
            if (!writers[i]) {
                SImageHeader header = HeaderFor(plates[i], height, false, {});
                header.inkAmounts = !invert;
                writers[i] = OpenImageBandWriter(paths[i], header, options);
            }
            writers[i]->Append(plates[i]);
        }
    });
    if (!writers[0]) throw CCliError(EExit::Corrupt, input + ": the image has no rows");
    for (auto& writer : writers) writer->Commit();
    transaction.Commit();
    return {paths.begin(), paths.end()};
}

void SeparateFileToPacked(CColorManager& manager, const std::string& input, const std::string& output,
                          bool sixteenBit, CStatusControl* status) {
    std::unique_ptr<IImageBandWriter> writer;
    ForEachBand(manager, input, status, [&](const SImage& band, int height, CStatusControl* bandStatus) {
        CRowIterator cmyk;
        if (sixteenBit) {
            cmyk = SeparateSixteenBit(manager, band.pixels, bandStatus);
        } else {
            const VellErrorCode code = manager.OutputFromRGBToCMYK(bandStatus, band.pixels, cmyk);
            if (code != VELL_OK) ModuleFailure(code, "separation");
        }
        if (!cmyk.IsAttached()) ModuleFailure(VELL_ERR_NO_MEMORY, "separation");
        if (!writer) writer = OpenImageBandWriter(output, HeaderFor(cmyk, height, true, DefaultCMYKProfile(manager).bytes));
        writer->Append(cmyk);
    });
    if (!writer) throw CCliError(EExit::Corrupt, input + ": the image has no rows");
    writer->Commit();
}

}  // namespace teskcolor
