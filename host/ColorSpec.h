// The imaging library's default RGB RGB colour record: the record its
// colour conversions use when an image brings no profile. The owner (the
// colour manager) lends its record and withdraws it by handing null.
#pragma once
#include "host/HostExport.h"

struct SColorSpecRGB;

TESK_HOST_API void VGDI_TeskGDI_SetColorSpec(const SColorSpecRGB* colorSpec);
// The record currently lent, or null.
TESK_HOST_API const SColorSpecRGB* VGDI_TeskGDI_GetColorSpec();
