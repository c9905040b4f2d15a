// Images read and written a band of rows at a time, so that long work on a
// large image holds a few megabytes of it rather than the whole.
#pragma once
#include <memory>
#include <string>

#include "cli/imageio/Image.h"

class CStatusControl;

namespace teskcolor {

// Rows of a file read in order, top to bottom.
struct IImageRowSource {
    virtual ~IImageRowSource() = default;
    // Fills `band` (the file's width and format) with the rows from `first` on.
    virtual void ReadRows(int first, CRowIterator& band) = 0;
};

class CImageBandReader {
public:
    // Throws CCliError as ReadImage does. TIFFs in strips are read as the
    // bands are asked for; other files are read whole at once.
    explicit CImageBandReader(const std::string& path, const SReadOptions& options = {});
    ~CImageBandReader();
    CImageBandReader(const CImageBandReader&) = delete;
    CImageBandReader& operator=(const CImageBandReader&) = delete;

    const SImageHeader& Header() const { return m_header; }
    int RowsLeft() const { return m_header.height - m_next; }
    // The next rows, at most `rows` of them, as an image of its own that
    // carries the file's profile. It may share memory with the reader: done
    // with it before asking for the next band, and before the reader goes.
    SImage NextBand(int rows) { return NextBand(rows, m_buffer); }
    // The same, with streamed rows read into `storage` (grown as needed), so
    // that a band stays valid while later ones are read into other storage.
    SImage NextBand(int rows, CRowIterator& storage);

private:
    SImageHeader m_header;
    std::unique_ptr<IImageRowSource> m_rows;
    CRowIterator m_buffer;  // the rows of streamed files
    SImage m_whole;         // files that are not streamed
    int m_next = 0;
};

// A file written band by band under a temporary name, and given its own name
// by Commit only; dropped when the writer goes without a commit.
struct IImageBandWriter {
    virtual ~IImageBandWriter() = default;
    // The next rows, top to bottom, in the header's width and format.
    virtual void Append(const CRowIterator& rows) = 0;
    virtual void Commit() = 0;
};

// TIFF is written as the bands come; PNG and JPEG are collected and written
// whole at Commit. Throws CCliError(Usage) for another extension.
std::unique_ptr<IImageBandWriter> OpenImageBandWriter(const std::string& path, const SImageHeader& header,
                                                      const SWriteOptions& options = {});

}  // namespace teskcolor
