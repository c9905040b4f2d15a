#include "cli/BandedSeparation.h"

#include <array>
#include <memory>

#include "cli/BandPipeline.h"
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

// Every band of the file, in the working space, through `separate`, whose
// outputs go to `write` with the image's height.
template <typename Separate, typename Write>
void SeparateBands(CColorManager& manager, const std::string& input, CStatusControl* status, Separate separate,
                   Write write) {
    CImageBandReader reader(input);
    const SImageHeader& header = reader.Header();
    if (header.height <= 0) throw CCliError(EExit::Corrupt, input + ": the image has no rows");
    const CWorkingSpacePreparation working(manager, header);
    // Four plates of the input's depth, or CMYK: at most 8 bytes for an 8-bit RGB pixel's 3.
    const size_t rowBytes = size_t(CVPixelFormat::GetRowBytes(header.format, header.width)) * 3;
    SBandStages stages;
    stages.read = ReadBandsFrom({&reader});
    stages.convert = [&](SBand& band, CStatusControl* bandStatus) {
        separate(working.Apply(band.inputs[0]).pixels, band, bandStatus);
    };
    stages.write = [&](const SBand& band) { write(band, header.height); };
    RunBands(header.height, BandRows(rowBytes, header.height), stages, status);
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
    std::array<std::unique_ptr<CBandFileOutput>, 4> writers;
    SeparateBands(
        manager, input, status,
        [&](const CRowIterator& rgb, SBand& band, CStatusControl* bandStatus) {
            band.outputs.resize(4);
            const VellErrorCode code = manager.TransformFromRGBToCMYK(bandStatus, rgb, band.outputs[0], band.outputs[1],
                                                                      band.outputs[2], band.outputs[3], invert);
            if (code != VELL_OK) ModuleFailure(code, "separation");
        },
        [&](const SBand& band, int height) {
            for (size_t i = 0; i < 4; ++i) {
                if (!writers[i]) {
                    SImageHeader header;
                    header.height = height;
                    header.inkAmounts = !invert;
                    writers[i] = std::make_unique<CBandFileOutput>(paths[i], header, options);
                }
                writers[i]->Append(band.outputs[i]);
            }
        });
    for (auto& writer : writers) writer->Commit();
    transaction.Commit();
    return {paths.begin(), paths.end()};
}

void SeparateFileToPacked(CColorManager& manager, const std::string& input, const std::string& output,
                          bool sixteenBit, CStatusControl* status) {
    std::unique_ptr<CBandFileOutput> writer;
    const std::vector<uint8_t> cmykProfile = DefaultCMYKProfile(manager).bytes;
    SeparateBands(
        manager, input, status,
        [&](const CRowIterator& rgb, SBand& band, CStatusControl* bandStatus) {
            band.outputs.resize(1);
            if (sixteenBit) {
                band.outputs[0] = SeparateSixteenBit(manager, rgb, bandStatus);
            } else {
                const VellErrorCode code = manager.OutputFromRGBToCMYK(bandStatus, rgb, band.outputs[0]);
                if (code != VELL_OK) ModuleFailure(code, "separation");
            }
            if (!band.outputs[0].IsAttached()) ModuleFailure(VELL_ERR_NO_MEMORY, "separation");
        },
        [&](const SBand& band, int height) {
            if (!writer) writer = std::make_unique<CBandFileOutput>(output, SImageHeader{0, height, VPF_UNKNOWN, true, cmykProfile});
            writer->Append(band.outputs[0]);
        });
    writer->Commit();
}

}  // namespace teskcolor
