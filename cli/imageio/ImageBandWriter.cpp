#include <cstring>

#include "cli/Errors.h"
#include "cli/imageio/Codecs.h"
#include "cli/imageio/ImageBands.h"
#include "cli/imageio/ImageFile.h"
#include "host/imaging/RowIterator.h"

namespace teskcolor {

namespace {

// PNG and JPEG encoders take the rows in one go: the bands are gathered into
// the whole image and written at the end.
class CGatheringWriter final : public IImageBandWriter {
public:
    CGatheringWriter(std::string path, const SImageHeader& header, const SWriteOptions& options)
        : m_path(std::move(path)), m_options(options) {
        m_image.cmyk = header.cmyk;
        m_image.iccProfile = header.iccProfile;
        if (!m_image.pixels.Create(header.width, header.height, header.format))
            throw CCliError(EExit::Failed, m_path + ": not enough memory for the image");
    }

    void Append(const CRowIterator& rows) override {
        const int rowBytes = m_image.pixels.GetBytesPerRow();
        for (int y = 0; y < rows.GetHeight(); ++y, ++m_filled) {
            if (m_filled >= m_image.pixels.GetHeight())
                throw CCliError(EExit::Failed, m_path + ": more rows than the image has");
            std::memcpy(m_image.pixels.GetRow(m_filled), rows.GetRow(y), size_t(rowBytes));
        }
    }

    void Commit() override {
        if (m_filled != m_image.pixels.GetHeight()) throw CCliError(EExit::Failed, m_path + ": rows are missing");
        WriteImage(m_path, m_image, nullptr, m_options);
    }

private:
    std::string m_path;
    SWriteOptions m_options;
    SImage m_image;
    int m_filled = 0;
};

}  // namespace

std::unique_ptr<IImageBandWriter> OpenImageBandWriter(const std::string& path, const SImageHeader& header,
                                                      const SWriteOptions& options) {
    const std::optional<EImageType> type = ImageTypeForPath(path);
    if (!type) throw CCliError(EExit::Usage, path + ": output must end in .tif, .tiff, .png, .jpg or .jpeg");
    if (*type == EImageType::Tiff) return OpenTiffBandWriter(path, header, options);
    return std::make_unique<CGatheringWriter>(path, header, options);
}

}  // namespace teskcolor
