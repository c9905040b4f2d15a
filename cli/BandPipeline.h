// Image work a band of rows at a time, with reading, converting and writing
// overlapped: while one band is converted, the next is read and the one
// before is written, each on a thread of its own. A few bands are in flight
// at once, so memory stays bounded whatever the image's size.
#pragma once
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "cli/imageio/Image.h"

class CStatusControl;

namespace teskcolor {

// Rows first .. first + rows - 1 of each input, then of each output.
struct SBand {
    int first = 0, rows = 0;
    std::vector<SImage> inputs;
    std::vector<CRowIterator> outputs;
    // Memory the read stage keeps from one band to the next it fills.
    std::vector<CRowIterator> buffers;
};

struct SBandStages {
    // Fills band.inputs; on the reading thread, bands in order.
    std::function<void(SBand&)> read;
    // Fills band.outputs, which may share memory with band.inputs; on the
    // calling thread, the only one that talks to the colour manager.
    std::function<void(SBand&, CStatusControl*)> convert;
    // On the writing thread, bands in order.
    std::function<void(const SBand&)> write;
};

class CImageBandReader;

// A read stage that takes each band's rows from `readers`, in their order,
// into band.inputs.
std::function<void(SBand&)> ReadBandsFrom(std::vector<CImageBandReader*> readers);

struct IImageBandWriter;

// One output file of a banded run, started with the first band: the
// conversion chooses its layout. On the writing thread only.
class CBandFileOutput {
public:
    // `header`: the file's height, and what its rows are; width and format come from the first band.
    CBandFileOutput(std::string path, SImageHeader header, SWriteOptions options = {});
    ~CBandFileOutput();
    CBandFileOutput(const CBandFileOutput&) = delete;
    CBandFileOutput& operator=(const CBandFileOutput&) = delete;
    void Append(const CRowIterator& rows);
    void Commit();

private:
    std::string m_path;
    SImageHeader m_header;
    SWriteOptions m_options;
    std::unique_ptr<IImageBandWriter> m_writer;
};

// Rows a band for rows of `rowBytes` (the widest of inputs and outputs).
// TESKCOLOR_BAND_ROWS sets it for a run, for trying small bands on small images.
int BandRows(size_t rowBytes, int height);

// Runs the stages over rows 0 .. height - 1. `status` goes from 0 to `height`
// as bands are converted. The first failure of any stage is thrown here once
// every thread has stopped.
void RunBands(int height, int bandRows, const SBandStages& stages, CStatusControl* status);

}  // namespace teskcolor
