// 3 x 3 matrix helpers of the imaging library.
#pragma once

// Inverts the row-major 3 x 3 matrix `m` into `inverse`; false when singular.
__attribute__((visibility("default"))) bool VGDI_MatrixGetInverse(const double m[3][3], double inverse[3][3]);
