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
class CPackedCombination {
public:
    CPackedCombination(CColorManager& manager, const SImageHeader& cmyk);
    ~CPackedCombination();
    CPackedCombination(const CPackedCombination&) = delete;
    CPackedCombination& operator=(const CPackedCombination&) = delete;
    SImage Apply(const SImage& cmyk, CStatusControl* status) const;

private:
    CColorManager& m_manager;
    std::unique_ptr<CProfileInMemory> m_profile;  // null: the settings' CMYK profile
};

class CIntentConversion;

// An RGB or grey image from its profile (or an assumed one) into the working
// space, which a run may have overridden; relative colorimetric unless `intent`.
class CConversionToWorkingSpace {
public:
    CConversionToWorkingSpace(CColorManager& manager, const SImageHeader& image, const std::string& assumedSource,
                              std::optional<int> intent = std::nullopt);
    ~CConversionToWorkingSpace();
    CConversionToWorkingSpace(const CConversionToWorkingSpace&) = delete;
    CConversionToWorkingSpace& operator=(const CConversionToWorkingSpace&) = delete;
    // Converts the image's own pixels, or, for grey, an RGB copy of them.
    SImage ApplyInPlace(const SImage& image) const;

private:
    CColorManager& m_manager;
    std::unique_ptr<CProfileInMemory> m_profile;  // null: the pixels are in the working space already
    std::unique_ptr<CIntentConversion> m_intent;  // set: it converts instead
    std::vector<uint8_t> m_workingProfile;
};

// The display transform of the settings, optionally soft-proofed through
// `proofProfile` (empty: no proof); results carry the monitor profile.
class CDisplayRendering {
public:
    CDisplayRendering(CColorManager& manager, const std::string& proofProfile, int intent, int proofIntent);
    // `working`: in the working space.
    SImage Apply(const SImage& working) const;
    const std::vector<uint8_t>& MonitorProfile() const { return m_monitorProfile; }

private:
    CColorManager& m_manager;
    std::vector<uint8_t> m_monitorProfile;
};
SImage ProofImage(CColorManager& manager, const SImage& image, const std::string& proofProfile, int intent,
                  int proofIntent, CStatusControl* status);

// A module result other than success as the matching CCliError.
[[noreturn]] void ModuleFailure(int code, const std::string& what);

// Turns the complement of plates (255 - v) into ink amounts and back.
void ComplementPlate(SImage& plate);

}  // namespace teskcolor
