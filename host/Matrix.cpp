#include "host/Matrix.h"

#include <cmath>

bool VGDI_MatrixGetInverse(const double m[3][3], double inverse[3][3]) {
    const double c00 = m[1][1] * m[2][2] - m[1][2] * m[2][1];
    const double c01 = m[1][2] * m[2][0] - m[1][0] * m[2][2];
    const double c02 = m[1][0] * m[2][1] - m[1][1] * m[2][0];
    const double determinant = m[0][0] * c00 + m[0][1] * c01 + m[0][2] * c02;
    if (!std::isfinite(determinant) || std::fabs(determinant) < 1e-12) return false;
    const double r = 1.0 / determinant;
    inverse[0][0] = c00 * r;
    inverse[0][1] = (m[0][2] * m[2][1] - m[0][1] * m[2][2]) * r;
    inverse[0][2] = (m[0][1] * m[1][2] - m[0][2] * m[1][1]) * r;
    inverse[1][0] = c01 * r;
    inverse[1][1] = (m[0][0] * m[2][2] - m[0][2] * m[2][0]) * r;
    inverse[1][2] = (m[0][2] * m[1][0] - m[0][0] * m[1][2]) * r;
    inverse[2][0] = c02 * r;
    inverse[2][1] = (m[0][1] * m[2][0] - m[0][0] * m[2][1]) * r;
    inverse[2][2] = (m[0][0] * m[1][1] - m[0][1] * m[1][0]) * r;
    return true;
}
