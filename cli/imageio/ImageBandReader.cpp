#include <algorithm>
#include <cstdio>

#include "cli/Errors.h"
#include "cli/imageio/Codecs.h"
#include "cli/imageio/ImageBands.h"
#include "cli/imageio/ImageFile.h"
#include "cli/imageio/StandardStreams.h"

namespace teskcolor {

CImageBandReader::CImageBandReader(const std::string& path, const SReadOptions& options) {
    // Only TIFF is streamed; for anything else, a missing file included,
    // ReadImage gives the image or the error.
    std::FILE* file = IsStandardStream(path) ? nullptr : std::fopen(path.c_str(), "rb");
    uint8_t head[8] = {};
    const size_t got = file ? std::fread(head, 1, sizeof head, file) : 0;
    if (file) std::fclose(file);
    const auto type = DetectImageType(head, got);
    if (type == EImageType::Tiff) m_rows = OpenTiffRowSource(path, options, m_header);
    if (m_rows) return;
    m_whole = ReadImage(path, nullptr, options);
    m_header = {m_whole.pixels.GetWidth(), m_whole.pixels.GetHeight(), m_whole.pixels.GetPixelFormat(), m_whole.cmyk,
                m_whole.iccProfile};
}

CImageBandReader::~CImageBandReader() = default;

SImage CImageBandReader::NextBand(int rows, CRowIterator& storage) {
    rows = std::clamp(rows, 0, RowsLeft());
    SImage band;
    band.cmyk = m_header.cmyk;
    band.iccProfile = m_header.iccProfile;
    if (rows == 0) return band;
    if (m_rows) {
        if (storage.GetHeight() < rows && !storage.Create(m_header.width, rows, m_header.format))
            throw CCliError(EExit::Failed, "not enough memory for a band of " + std::to_string(rows) + " rows");
        band.pixels.Attach(storage.GetRow(0), m_header.width, rows, m_header.format, storage.GetStride());
        m_rows->ReadRows(m_next, band.pixels);
    } else {
        band.pixels.Attach(m_whole.pixels.GetRow(m_next), m_header.width, rows, m_header.format,
                           m_whole.pixels.GetStride());
    }
    m_next += rows;
    return band;
}

}  // namespace teskcolor
