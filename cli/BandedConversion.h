// Conversion, display rendering and recombination of image files a band of
// rows at a time, as the separation does: a TIFF never sits whole in memory.
// The colour manager is used under ColourManagerTurn(), a band at a time, so
// that other files' reading and writing go on meanwhile.
#pragma once
#include <optional>
#include <string>
#include <vector>

#include "cli/GamutWarning.h"
#include "cli/imageio/Image.h"

class CColorManager;
class CStatusControl;

namespace teskcolor {

struct SConvertFile {
    std::string input, output;
    std::string assumedSource;  // the profile of an image that carries none
    std::optional<int> intent;  // none: relative colorimetric
    SWriteOptions writeOptions;
};
// Into the working space (which a run may have overridden).
void ConvertFile(CColorManager& manager, const SConvertFile& job, CStatusControl* status);

struct SProofFile {
    std::string input, output;
    std::string proofProfile;  // empty: no soft proof
    int intent = 0, proofIntent = 1;
    // Set: painted over what the proof (else the CMYK) profile cannot print.
    std::optional<SWarningColour> gamutWarning;
};
// The display transform of the settings; the result carries the monitor profile.
void ProofFile(CColorManager& manager, const SProofFile& job, CStatusControl* status);

struct SCombineFiles {
    // Four grey plates (cyan, magenta, yellow, black), or one CMYK image.
    std::vector<std::string> inputs;
    std::string output;
    bool inkAmounts = false;  // plates whose files do not say so hold ink amounts
};
// Back to RGB in the working space.
void CombineFiles(CColorManager& manager, const SCombineFiles& job, CStatusControl* status);

}  // namespace teskcolor
