#include "cli/BandedConversion.h"

#include <array>
#include <mutex>
#include <memory>

#include "cli/BandPipeline.h"
#include "cli/BatchRun.h"
#include "cli/Errors.h"
#include "cli/ModuleHost.h"
#include "cli/Operations.h"
#include "cli/imageio/ImageBands.h"
#include "colormgr/ColorManager.h"

namespace teskcolor {

namespace {

// Each band of `readers` through `convert` into one output file carrying `profile`.
template <typename Convert>
void ConvertBands(std::vector<CImageBandReader*> readers, const std::string& output, std::vector<uint8_t> profile,
                  CStatusControl* status, Convert convert, const SWriteOptions& options = {}) {
    const SImageHeader& input = readers[0]->Header();
    if (input.height <= 0) throw CCliError(EExit::Corrupt, "the image has no rows");
    CBandFileOutput file(output, SImageHeader{0, input.height, VPF_UNKNOWN, false, std::move(profile)}, options);
    // What a band holds in and out: the output at most doubles the input (8-bit CMYK to 16-bit RGB the worst).
    size_t rowBytes = 0;
    for (const CImageBandReader* reader : readers)
        rowBytes += 2 * size_t(CVPixelFormat::GetRowBytes(reader->Header().format, reader->Header().width));
    SBandStages stages;
    stages.read = ReadBandsFrom(std::move(readers));
    stages.convert = [&](SBand& band, CStatusControl* bandStatus) {
        std::lock_guard turn(ColourManagerTurn());
        band.outputs = {convert(band, bandStatus)};
    };
    stages.write = [&](const SBand& band) { file.Append(band.outputs[0]); };
    RunBands(input.height, BandRows(rowBytes, input.height), stages, status);
    file.Commit();
}

}  // namespace

void ConvertFile(CColorManager& manager, const SConvertFile& job, CStatusControl* status) {
    CImageBandReader reader(job.input);
    std::unique_lock turn(ColourManagerTurn());
    const CConversionToWorkingSpace conversion(manager, reader.Header(), job.assumedSource, job.intent);
    std::vector<uint8_t> profile = WorkingSpaceProfile(manager).bytes;
    turn.unlock();
    ConvertBands(
        {&reader}, job.output, std::move(profile), status,
        [&](SBand& band, CStatusControl*) { return conversion.ApplyInPlace(band.inputs[0]).pixels; }, job.writeOptions);
}

void ProofFile(CColorManager& manager, const SProofFile& job, CStatusControl* status) {
    CImageBandReader reader(job.input);
    std::unique_lock turn(ColourManagerTurn());
    const CWorkingSpacePreparation working(manager, reader.Header());
    const CDisplayRendering display(manager, job.proofProfile, job.intent, job.proofIntent);
    std::unique_ptr<CGamutCheck> gamut;
    if (job.gamutWarning) {
        const SProfileSource& printer =
            job.proofProfile.empty() ? DefaultCMYKProfile(manager) : ResolveProfile(job.proofProfile, &manager);
        gamut = std::make_unique<CGamutCheck>(manager, reader.Header(), printer.bytes, job.intent);
    }
    turn.unlock();
    ConvertBands({&reader}, job.output, display.MonitorProfile(), status, [&](SBand& band, CStatusControl*) {
        SImage rendered = display.Apply(working.Apply(band.inputs[0]));
        if (gamut) PaintGamutWarning(rendered, gamut->OutOfGamut(band.inputs[0]), *job.gamutWarning);
        return rendered.pixels;
    });
}

void CombineFiles(CColorManager& manager, const SCombineFiles& job, CStatusControl* status) {
    // One file a run: the turn is taken for the bands only.
    const std::vector<uint8_t>& workingProfile = WorkingSpaceProfile(manager).bytes;
    if (job.inputs.size() == 1) {
        CImageBandReader reader(job.inputs[0]);
        const CPackedCombination combination(manager, reader.Header());
        ConvertBands({&reader}, job.output, workingProfile, status, [&](SBand& band, CStatusControl* bandStatus) {
            return combination.Apply(band.inputs[0], bandStatus).pixels;
        });
        return;
    }
    std::vector<std::unique_ptr<CImageBandReader>> plates;
    std::vector<CImageBandReader*> readers;
    for (const std::string& path : job.inputs) {
        plates.push_back(std::make_unique<CImageBandReader>(path));
        const SImageHeader& header = plates.back()->Header();
        if (!CVPixelFormat::IsGreyscale(header.format) || header.cmyk)
            throw CCliError(EExit::Unsupported, path + ": a plate is a grey image, not " + DescribeLayout(header.format, header.cmyk));
        if (header.width != plates[0]->Header().width || header.height != plates[0]->Header().height)
            ModuleFailure(VELL_ERR_PLANE_SIZE, "recombination");
        readers.push_back(plates.back().get());
    }
    ConvertBands(readers, job.output, workingProfile, status, [&](SBand& band, CStatusControl* bandStatus) {
        std::array<SImage, 4> inks;
        for (size_t i = 0; i < 4; ++i) {
            inks[i] = band.inputs[i];
            if (job.inkAmounts) ComplementPlate(inks[i]);
        }
        return CombinePlates(manager, inks, bandStatus).pixels;
    });
}

}  // namespace teskcolor
