#include "cli/DrawableImage.h"

#include <algorithm>
#include <cstring>

#include "cli/Errors.h"
#include "cli/Operations.h"
#include "cli/imageio/ImageFile.h"
#include "colormgr/ColorManager.h"
#include "host/imaging/RowIteratorBands.h"

namespace teskcolor {

CRowIterator DrawableImage(CColorManager& manager, const std::string& path, bool eightBit, CProgressBar& progress) {
    progress.Phase("reading");
    SImage image = ReadImage(path, progress.Status());
    if (image.cmyk) throw CCliError(EExit::Unsupported, path + ": CMYK images are shown through 'combine' first");
    // The conversion is one call of the module's: shown as a step, begun and done.
    progress.Phase("converting");
    progress.Status()->SetProgressRange(1);
    progress.Status()->SetProgress(0);
    SImage working = ToWorkingSpace(manager, image, progress.Status());
    progress.Status()->SetProgress(1);
    progress.Finish();
    CRowIterator pixels = working.pixels;
    EVPixelFormat format = pixels.GetPixelFormat();
    EVPixelFormat wanted = format;
    if (format == VPF_RGBA_8) wanted = VPF_RGB_8;
    if (format == VPF_RGBA_16) wanted = VPF_RGB_16;
    if (format == VPF_GREY_ALPHA_8) wanted = VPF_GREY_8;
    if (format == VPF_GREY_ALPHA_16) wanted = VPF_GREY_16;
    if (eightBit) wanted = CVPixelFormat::Get8bitFormat(wanted);
    if (wanted == format) return pixels;
    CRowIterator copy;
    if (!CRowIteratorBands::Create(copy, pixels.GetWidth(), pixels.GetHeight(), wanted) ||
        !RowIterator::CopyRect(copy, pixels))
        throw CCliError(EExit::Failed, path + ": the image could not be prepared for drawing");
    return copy;
}

CRowIterator ScaledImage(const CRowIterator& image, double zoom) {
    if (zoom == 1.0) return image;
    const int width = std::max(1, int(image.GetWidth() * zoom)), height = std::max(1, int(image.GetHeight() * zoom));
    CRowIterator scaled;
    if (!scaled.Create(width, height, image.GetPixelFormat()))
        throw CCliError(EExit::Failed, "not enough memory for the scaled image");
    const size_t pixelBytes = size_t(image.GetBitsPerPixel() / 8);
    for (int y = 0; y < height; ++y) {
        const BYTE* source = image.GetRow(std::min(image.GetHeight() - 1, int(y / zoom)));
        BYTE* row = scaled.GetRow(y);
        for (int x = 0; x < width; ++x)
            std::memcpy(row + size_t(x) * pixelBytes,
                        source + size_t(std::min(image.GetWidth() - 1, int(x / zoom))) * pixelBytes, pixelBytes);
    }
    return scaled;
}

}  // namespace teskcolor
