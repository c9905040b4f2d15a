#include "host/ColorSpec.h"

#include <atomic>

namespace {
std::atomic<const SColorSpecRGB*> g_defaultColorSpec{nullptr};
}

void VGDI_TeskGDI_SetColorSpec(const SColorSpecRGB* colorSpec) { g_defaultColorSpec.store(colorSpec); }

const SColorSpecRGB* VGDI_TeskGDI_GetColorSpec() { return g_defaultColorSpec.load(); }
