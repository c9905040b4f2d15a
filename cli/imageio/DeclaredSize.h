// The size an image file declares, checked before any pixel memory is taken:
// above the run's pixel budget, or more than the file's bytes could decode
// to, it is refused.
#pragma once
#include <cstdint>
#include <string>

namespace teskcolor {

// The budget SReadOptions start from; --max-pixels changes it for the run.
long long DefaultPixelBudget();
void SetDefaultPixelBudget(long long pixels);

// Throws CCliError(Unsupported) naming `name`. `rowBytes` is what a row
// takes as the file codes it, `fileBytes` the whole file (0: not known), and
// `expansion` the most the file's coding can expand one byte to.
void RequirePlausibleSize(const std::string& name, uint64_t width, uint64_t height, uint64_t rowBytes,
                          uint64_t fileBytes, double expansion, long long maxPixels);

}  // namespace teskcolor
