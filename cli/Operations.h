// The image work of the subcommands, shared with `demo`: each step drives the
// colour manager as the photo editor would and returns images ready to write.
#pragma once
#include <array>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "cli/imageio/Image.h"

class CColorManager;
class CStatusControl;

namespace teskcolor {

// A test chart in the working space: a grey ramp, red, green, blue, cyan,
// magenta and yellow ramps, 24 reference patches and a hue/lightness
// gradient. 8 or 16 bits a channel; no profile attached.
SImage MakeChart(int width, int height, bool sixteenBit);

// Overrides of this run only (the stored settings are not changed).
void UseCMYKProfileForThisRun(CColorManager& manager, const std::string& profile);

// An image in the working space, ready for the module's separation and
// display operations: an embedded RGB profile other than the working space
// is converted from; grey becomes RGB; grey with alpha is refused.
SImage ToWorkingSpace(CColorManager& manager, const SImage& image, CStatusControl* status);

class CProfileInMemory;

// What ToWorkingSpace decides about an image, from its layout and embedded
// profile, decided once and applied to any number of its bands.
class CWorkingSpacePreparation {
public:
    // Throws CCliError for what the header alone shows to be unusable.
    CWorkingSpacePreparation(CColorManager& manager, const SImageHeader& image);
    ~CWorkingSpacePreparation();
    CWorkingSpacePreparation(const CWorkingSpacePreparation&) = delete;
    CWorkingSpacePreparation& operator=(const CWorkingSpacePreparation&) = delete;

    SImage Apply(const SImage& image) const;

private:
    CColorManager& m_manager;
    std::unique_ptr<CProfileInMemory> m_profile;  // to convert from; null when no conversion is needed
    std::vector<uint8_t> m_workingProfile;
};

// The four plates, cyan, magenta, yellow, black; 255 (65535) = no ink when
// `invert` is set, else ink amounts.
std::array<SImage, 4> SeparateToPlates(CColorManager& manager, const SImage& image, bool invert,
                                       CStatusControl* status);
// One CMYK image (ink amounts) carrying the CMYK profile.
SImage SeparateToPacked(CColorManager& manager, const SImage& image, CStatusControl* status);
// Plates with 255 (65535) = no ink back to RGB in the working space.
SImage CombinePlates(CColorManager& manager, std::array<SImage, 4>& plates, CStatusControl* status);
// A CMYK image back to RGB; its embedded profile, if any, is the CMYK source.
SImage CombinePacked(CColorManager& manager, const SImage& cmyk, CStatusControl* status);
// Converts into the working space (which a run may have overridden with `to`),
// relative colorimetric unless `intent` is given.
SImage ConvertImage(CColorManager& manager, const SImage& image, const std::string& assumedSource,
                    CStatusControl* status, std::optional<int> intent = std::nullopt);
// The display transform of the settings applied, optionally soft-proofed
// through `proofProfile` (empty: no proof); the result carries the monitor profile.
SImage ProofImage(CColorManager& manager, const SImage& image, const std::string& proofProfile, int intent,
                  int proofIntent, CStatusControl* status);

// A module result other than success as the matching CCliError.
[[noreturn]] void ModuleFailure(int code, const std::string& what);

// Turns the complement of plates (255 - v) into ink amounts and back.
void ComplementPlate(SImage& plate);

}  // namespace teskcolor
