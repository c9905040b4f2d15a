// Writes RGB display profiles of the matrix/TRC kind: the built-in sRGB
// profile and profiles for calibrated logical colour spaces.
#pragma once
#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "icc_container.h"

namespace tesk::mscms {

using Xyz = std::array<double, 3>;

struct Chromaticity {
    double x = 0;
    double y = 0;
};

struct MatrixProfileSpec {
    Chromaticity red, green, blue, white;
    // One curve for all three channels: a sampled table when not empty,
    // otherwise a single gamma.
    std::vector<uint16_t> sampledCurve;
    double gamma = 1.0;
    std::string description;
    std::string copyright;
};

// Tag data of the version 2 types these profiles use.
int32_t S15Fixed16(double value);
Bytes XyzTag(const Xyz& xyz);
Bytes DescTag(const std::string& text);  // textDescriptionType, ASCII part only

// The PCS illuminant as the ICC header stores it.
Xyz D50();
Xyz XyzOf(Chromaticity white);  // Y = 1

// The colorants (rows red, green, blue) adapted to D50 with the Bradford
// transform; false when the primaries do not span a colour space.
bool AdaptedColorants(const MatrixProfileSpec& matrix, std::array<Xyz, 3>& colorants);

// Version 2 display profile, RGB data, XYZ connection space, with desc, cprt,
// wtpt, the three colorants and the three TRCs (sharing one data object).
// Empty when the primaries are degenerate.
Bytes BuildMatrixProfile(const MatrixProfileSpec& matrix);

}  // namespace tesk::mscms
