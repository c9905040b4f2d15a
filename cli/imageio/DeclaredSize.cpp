#include "cli/imageio/DeclaredSize.h"

#include "cli/Errors.h"

namespace teskcolor {

namespace {
long long g_pixelBudget = 1LL << 30;
// Headers, tables and markers: a small image needs no proof of its size.
constexpr uint64_t kFreeBytes = uint64_t{1} << 16;
}  // namespace

long long DefaultPixelBudget() { return g_pixelBudget; }
void SetDefaultPixelBudget(long long pixels) { g_pixelBudget = pixels; }

void RequirePlausibleSize(const std::string& name, uint64_t width, uint64_t height, uint64_t rowBytes,
                          uint64_t fileBytes, double expansion, long long maxPixels) {
    const std::string size = std::to_string(width) + " x " + std::to_string(height);
    // Products in floating point: 2^32 rows of 2^32 pixels do not fit 64 bits.
    if (double(width) * double(height) > double(maxPixels))
        throw CCliError(EExit::Unsupported, name + ": an image of " + size + " pixels is more than the " +
                                                std::to_string(maxPixels) + " allowed (see --max-pixels)");
    const double decodedBytes = double(rowBytes) * double(height);
    if (fileBytes != 0 && decodedBytes > double(kFreeBytes) && decodedBytes / expansion > double(fileBytes))
        throw CCliError(EExit::Unsupported, name + ": declares " + size + " pixels, more than its " +
                                                std::to_string(fileBytes) + " bytes can hold");
}

}  // namespace teskcolor
