// Single colours at 16 bits or in Lab, which the colour manager's one-colour
// calls (8-bit COLORREF) cannot carry: a chain of profiles joined through the
// colour system's CreateMultiProfileTransform and fed to TranslateColors.
#pragma once
#include <array>
#include <cstdint>
#include <vector>

namespace teskcolor {

// The colour spaces a single colour is given or printed in. Channels are
// 0..65535 words; Lab words are L 0..100 over 0..0xFFFF and a, b -128..127
// over 0..0xFFFF (0x8080 is 0), the colour system's encoding.
enum class EColourSpace { RGB, Lab, CMYK };

// Profile bytes for the Lab end of a chain (Lab, D50).
std::vector<uint8_t> LabProfileBytes();

class CColourTranslation {
public:
    // `chain`: the profiles, first to last, relative colorimetric. Throws CCliError.
    CColourTranslation(const std::vector<std::vector<uint8_t>>& chain, EColourSpace in, EColourSpace out);
    ~CColourTranslation();
    CColourTranslation(const CColourTranslation&) = delete;
    CColourTranslation& operator=(const CColourTranslation&) = delete;

    std::array<uint16_t, 4> Translate(const std::array<uint16_t, 4>& colour) const;

private:
    void Release();

    std::vector<std::vector<uint8_t>> m_blocks;  // the platform may keep reading them
    std::vector<void*> m_profiles;
    void* m_transform = nullptr;
    EColourSpace m_in, m_out;
};

}  // namespace teskcolor
