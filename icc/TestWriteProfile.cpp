// The writer's self-check: a complete display profile written through every
// tag setter, then judged by the platform.
#include <list>
#include <string>

#include "icc/ICCWriteColorProfile.h"

bool CICCWriteColorProfile::TestWriteProfile() {
    if (!OpenICCProfileForWrite(L"TestWriteProfile.icm")) return false;
    bool written = true;

    std::list<std::string> copyright{"Copyright (c) TeskColorMgr developers. All rights reserved."};
    written &= SetCopyrightTag('cprt', copyright);
    std::list<std::string> description{"Lorn's Test ICC profile."};
    written &= SetStringTag('desc', description);

    SICCCurveType gamma{1, nullptr, 2.2f};
    for (unsigned long tag : {'rTRC', 'gTRC', 'bTRC'}) written &= SetTRCCurveType(tag, gamma);

    // sRGB primaries adapted to D50.
    SMyXYZNumber red{0.436066, 0.222488, 0.013916};
    SMyXYZNumber green{0.385147, 0.716873, 0.097076};
    SMyXYZNumber blue{0.143066, 0.060608, 0.714096};
    written &= SetXYZColorant(red, 'rXYZ');
    written &= SetXYZColorant(green, 'gXYZ');
    written &= SetXYZColorant(blue, 'bXYZ');
    SMyXYZNumber white{0.964203, 1.0, 0.824905};
    SMyXYZNumber black{0.0, 0.0, 0.0};
    written &= SetMediaWhitePoint(white);
    written &= SetMediaBlackPoint(black);

    // Bradford adaptation from D65 to D50.
    double adaptation[9] = {1.047882, 0.022919, -0.050201, 0.029587, 0.990479,
                            -0.017059, -0.009232, 0.015076, 0.751678};
    written &= SetChromaticAdaptationTag(adaptation);

    // An identity video-card ramp: gamma 1 from 0 to 1 on every channel.
    SVCGTGamma ramp{};
    ramp.m_nGammaType = kVCGTFormula;
    ramp.m_formula = {0x10000, 0, 0x10000, 0x10000, 0, 0x10000, 0x10000, 0, 0x10000};
    written &= SetVCGTInformation(ramp);

    written &= SetDefaultProfileHeader();
    return FinalizeProfileWrite() == CM_PROFILE_VALID && written;
}
