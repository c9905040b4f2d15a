#include "cli/ColourTranslation.h"

#include <icm.h>
#include <lcms2.h>
#include <windows.h>

#include <cstdio>
#include <cstring>

#include "cli/Errors.h"

namespace teskcolor {

namespace {

COLORTYPE PlatformType(EColourSpace space) {
    switch (space) {
    case EColourSpace::RGB: return COLOR_RGB;
    case EColourSpace::Lab: return COLOR_Lab;
    case EColourSpace::CMYK: return COLOR_CMYK;
    }
    return COLOR_RGB;
}

[[noreturn]] void CannotTranslate(const char* what) {
    char message[160];
    std::snprintf(message, sizeof message, "colour: %s (error %lu)", what, static_cast<unsigned long>(GetLastError()));
    throw CCliError(GetLastError() == ERROR_COLORSPACE_MISMATCH ? EExit::WrongProfile : EExit::Failed, message);
}

}  // namespace

std::vector<uint8_t> LabProfileBytes() {
    cmsHPROFILE lab = cmsCreateLab4Profile(nullptr);
    cmsUInt32Number size = 0;
    std::vector<uint8_t> bytes;
    if (lab && cmsSaveProfileToMem(lab, nullptr, &size) && size > 0) {
        bytes.resize(size);
        if (!cmsSaveProfileToMem(lab, bytes.data(), &size)) bytes.clear();
    }
    if (lab) cmsCloseProfile(lab);
    if (bytes.empty()) throw CCliError(EExit::Failed, "colour: the Lab profile could not be made");
    return bytes;
}

CColourTranslation::CColourTranslation(const std::vector<std::vector<uint8_t>>& chain, EColourSpace in,
                                       EColourSpace out)
    : m_blocks(chain), m_in(in), m_out(out) {
    for (std::vector<uint8_t>& block : m_blocks) {
        PROFILE memory{PROFILE_MEMBUFFER, block.data(), static_cast<DWORD>(block.size())};
        HPROFILE profile = OpenColorProfileW(&memory, PROFILE_READ, FILE_SHARE_READ, OPEN_EXISTING);
        if (!profile) {
            Release();
            CannotTranslate("a profile could not be opened");
        }
        m_profiles.push_back(profile);
    }
    const std::vector<DWORD> intents(m_profiles.size() - 1, INTENT_RELATIVE_COLORIMETRIC);
    m_transform = CreateMultiProfileTransform(m_profiles.data(), static_cast<DWORD>(m_profiles.size()),
                                              const_cast<DWORD*>(intents.data()), static_cast<DWORD>(intents.size()),
                                              BEST_MODE, INDEX_DONT_CARE);
    if (!m_transform) {
        const DWORD error = GetLastError();
        Release();
        SetLastError(error);
        CannotTranslate("the profiles cannot be joined");
    }
}

CColourTranslation::~CColourTranslation() { Release(); }

void CColourTranslation::Release() {
    if (m_transform) DeleteColorTransform(m_transform);
    m_transform = nullptr;
    for (void* profile : m_profiles) CloseColorProfile(profile);
    m_profiles.clear();
}

std::array<uint16_t, 4> CColourTranslation::Translate(const std::array<uint16_t, 4>& colour) const {
    // COLOR's RGB, Lab and CMYK members are all words in channel order.
    COLOR input{}, output{};
    static_assert(sizeof(COLOR) >= sizeof(colour));
    std::memcpy(&input, colour.data(), sizeof colour);
    if (!TranslateColors(m_transform, &input, 1, PlatformType(m_in), &output, PlatformType(m_out)))
        CannotTranslate("the colour system could not convert the colour");
    std::array<uint16_t, 4> result{};
    std::memcpy(result.data(), &output, sizeof result);
    return result;
}

}  // namespace teskcolor
