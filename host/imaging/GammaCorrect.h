// Gamma correction of an image through three 256-entry tables.
#pragma once
#include <windows.h>

#include "host/imaging/ImagingApi.h"

class CRowIterator;
class CDibIterator;

// Maps red through `red`, green through `green`, blue through `blue`; grey
// through `green` (the channel that weighs most in luminance); an indexed
// image's palette instead of its pixels. 16-bit samples are mapped by linear
// interpolation between neighbouring entries. Alpha is left alone. False for a
// detached image, a null table or a format without colour channels to map.
VIMAGING_API bool GammaCorrectDIBInplace(CRowIterator& image, const BYTE* red, const BYTE* green, const BYTE* blue);
VIMAGING_API bool GammaCorrectDIBInplace(CDibIterator& image, const BYTE* red, const BYTE* green, const BYTE* blue);
