// 3 x 3 matrix helpers of the imaging library.
#pragma once
#include "host/HostExport.h"

// Inverts the row-major 3 x 3 matrix `m` into `inverse`; false when singular.
TESK_HOST_API bool VGDI_MatrixGetInverse(const double m[3][3], double inverse[3][3]);
