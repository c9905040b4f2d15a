#include "matrix_profile.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>

#include <tesk/big_endian.h>

namespace tesk::mscms {

namespace {

using Matrix = std::array<Xyz, 3>;

constexpr Matrix kBradford = {{{0.8951, 0.2664, -0.1614}, {-0.7502, 1.7135, 0.0367}, {0.0389, -0.0685, 1.0296}}};

Xyz Multiply(const Matrix& m, const Xyz& v) {
    Xyz out{};
    for (int r = 0; r < 3; ++r) out[r] = m[r][0] * v[0] + m[r][1] * v[1] + m[r][2] * v[2];
    return out;
}

Matrix Multiply(const Matrix& a, const Matrix& b) {
    Matrix out{};
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c) out[r][c] = a[r][0] * b[0][c] + a[r][1] * b[1][c] + a[r][2] * b[2][c];
    return out;
}

bool Invert(const Matrix& m, Matrix& inverse) {
    const double det = m[0][0] * (m[1][1] * m[2][2] - m[1][2] * m[2][1]) -
                       m[0][1] * (m[1][0] * m[2][2] - m[1][2] * m[2][0]) +
                       m[0][2] * (m[1][0] * m[2][1] - m[1][1] * m[2][0]);
    if (!std::isfinite(det) || std::fabs(det) < 1e-12) return false;
    for (int r = 0; r < 3; ++r) {
        for (int c = 0; c < 3; ++c) {
            const int r1 = (c + 1) % 3, r2 = (c + 2) % 3, c1 = (r + 1) % 3, c2 = (r + 2) % 3;
            inverse[r][c] = (m[r1][c1] * m[r2][c2] - m[r1][c2] * m[r2][c1]) / det;
        }
    }
    return true;
}

Bytes TextTag(const std::string& text) {
    Bytes tag(8 + text.size() + 1, 0);
    PutBE32(&tag[0], 'text');
    std::memcpy(&tag[8], text.data(), text.size());
    return tag;
}

Bytes CurveTag(const MatrixProfileSpec& matrix) {
    const bool sampled = !matrix.sampledCurve.empty();
    const size_t count = sampled ? matrix.sampledCurve.size() : 1;
    Bytes tag(12 + 2 * count, 0);
    PutBE32(&tag[0], 'curv');
    PutBE32(&tag[8], static_cast<uint32_t>(count));
    if (sampled) {
        for (size_t i = 0; i < count; ++i) PutBE16(&tag[12 + 2 * i], matrix.sampledCurve[i]);
    } else {
        const double u8f8 = std::clamp(std::round(matrix.gamma * 256.0), 0.0, 65535.0);
        PutBE16(&tag[12], static_cast<uint16_t>(u8f8));
    }
    return tag;
}

void AddTag(IccContainer& container, uint32_t signature, std::shared_ptr<Bytes> data) {
    container.tags.push_back({signature, std::move(data)});
}

}  // namespace

int32_t S15Fixed16(double value) { return static_cast<int32_t>(std::lround(value * 65536.0)); }

Bytes XyzTag(const Xyz& xyz) {
    Bytes tag(20, 0);
    PutBE32(&tag[0], 'XYZ ');
    for (int i = 0; i < 3; ++i) PutBE32(&tag[8 + 4 * i], static_cast<uint32_t>(S15Fixed16(xyz[i])));
    return tag;
}

// textDescriptionType with empty Unicode and ScriptCode parts.
Bytes DescTag(const std::string& text) {
    const size_t asciiCount = text.size() + 1;
    Bytes tag(12 + asciiCount + 8 + 3 + 67, 0);
    PutBE32(&tag[0], 'desc');
    PutBE32(&tag[8], static_cast<uint32_t>(asciiCount));
    std::memcpy(&tag[12], text.data(), text.size());
    return tag;
}

Xyz D50() { return {0xF6D6 / 65536.0, 1.0, 0xD32D / 65536.0}; }

Xyz XyzOf(Chromaticity c) { return {c.x / c.y, 1.0, (1.0 - c.x - c.y) / c.y}; }

bool AdaptedColorants(const MatrixProfileSpec& matrix, std::array<Xyz, 3>& colorants) {
    if (matrix.white.y <= 0 || matrix.red.y <= 0 || matrix.green.y <= 0 || matrix.blue.y <= 0) return false;
    // Primaries as columns; scale them so that they add up to the white.
    const Xyz primaries[3] = {XyzOf(matrix.red), XyzOf(matrix.green), XyzOf(matrix.blue)};
    Matrix columns{};
    for (int r = 0; r < 3; ++r)
        for (int c = 0; c < 3; ++c) columns[r][c] = primaries[c][r];
    Matrix inverse{};
    if (!Invert(columns, inverse)) return false;
    const Xyz white = XyzOf(matrix.white);
    const Xyz scale = Multiply(inverse, white);

    Matrix bradfordInverse{};
    Invert(kBradford, bradfordInverse);
    const Xyz coneSource = Multiply(kBradford, white);
    const Xyz coneTarget = Multiply(kBradford, D50());
    Matrix gain{};
    for (int i = 0; i < 3; ++i) gain[i][i] = coneTarget[i] / coneSource[i];
    const Matrix adapt = Multiply(bradfordInverse, Multiply(gain, kBradford));

    for (int c = 0; c < 3; ++c) {
        Xyz primary{};
        for (int r = 0; r < 3; ++r) primary[r] = primaries[c][r] * scale[c];
        colorants[c] = Multiply(adapt, primary);
        for (double v : colorants[c])
            if (!std::isfinite(v)) return false;
    }
    return true;
}

Bytes BuildMatrixProfile(const MatrixProfileSpec& matrix) {
    std::array<Xyz, 3> colorants{};
    if (!AdaptedColorants(matrix, colorants)) return {};

    IccContainer profile;
    uint8_t* h = profile.header.data();
    PutBE32(h + 8, 0x02100000);  // 2.1.0
    PutBE32(h + 12, 'mntr');
    PutBE32(h + 16, 'RGB ');
    PutBE32(h + 20, 'XYZ ');
    // A fixed date keeps the built-in profile's bytes the same in every run.
    const uint16_t date[6] = {2024, 1, 1, 0, 0, 0};
    for (int i = 0; i < 6; ++i) PutBE16(h + 24 + 2 * i, date[i]);
    PutBE32(h + 36, 'acsp');
    const Xyz d50 = D50();
    for (int i = 0; i < 3; ++i) PutBE32(h + 68 + 4 * i, static_cast<uint32_t>(S15Fixed16(d50[i])));
    PutBE32(h + 80, 'TESK');

    AddTag(profile, 'desc', std::make_shared<Bytes>(DescTag(matrix.description)));
    AddTag(profile, 'cprt', std::make_shared<Bytes>(TextTag(matrix.copyright)));
    AddTag(profile, 'wtpt', std::make_shared<Bytes>(XyzTag(XyzOf(matrix.white))));
    AddTag(profile, 'rXYZ', std::make_shared<Bytes>(XyzTag(colorants[0])));
    AddTag(profile, 'gXYZ', std::make_shared<Bytes>(XyzTag(colorants[1])));
    AddTag(profile, 'bXYZ', std::make_shared<Bytes>(XyzTag(colorants[2])));
    auto curve = std::make_shared<Bytes>(CurveTag(matrix));
    AddTag(profile, 'rTRC', curve);
    AddTag(profile, 'gTRC', curve);
    AddTag(profile, 'bTRC', curve);
    return SerializeIccContainer(profile);
}

}  // namespace tesk::mscms
