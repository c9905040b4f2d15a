#include "cli/BandPipeline.h"

#include <algorithm>
#include <condition_variable>
#include <cstdlib>
#include <deque>
#include <exception>
#include <memory>
#include <mutex>
#include <thread>

#include "cli/Errors.h"
#include "cli/imageio/ImageBands.h"
#include "host/imaging/StatusControl.h"

namespace teskcolor {

namespace {

// Big enough that the colour manager's set-up for each call is lost in the
// work, small enough that the bands in flight stay well under 64 MiB.
constexpr size_t kBandBytes = size_t{4} << 20;
// One being read, one being converted, one being written.
constexpr int kBandsInFlight = 3;

// Hands bands from one thread to another. Closed: waiters get what is left,
// then null. Aborted: waiters get null at once.
class CBandQueue {
public:
    void Push(std::unique_ptr<SBand> band) {
        {
            std::lock_guard lock(m_mutex);
            m_bands.push_back(std::move(band));
        }
        m_ready.notify_one();
    }
    std::unique_ptr<SBand> Pop() {
        std::unique_lock lock(m_mutex);
        m_ready.wait(lock, [&] { return m_aborted || m_closed || !m_bands.empty(); });
        if (m_aborted || m_bands.empty()) return nullptr;
        auto band = std::move(m_bands.front());
        m_bands.pop_front();
        return band;
    }
    void Close() { Set(m_closed); }
    void Abort() { Set(m_aborted); }

private:
    void Set(bool& flag) {
        {
            std::lock_guard lock(m_mutex);
            flag = true;
        }
        m_ready.notify_all();
    }
    std::mutex m_mutex;
    std::condition_variable m_ready;
    std::deque<std::unique_ptr<SBand>> m_bands;
    bool m_closed = false, m_aborted = false;
};

}  // namespace

std::function<void(SBand&)> ReadBandsFrom(std::vector<CImageBandReader*> readers) {
    return [readers = std::move(readers)](SBand& band) {
        band.buffers.resize(readers.size());
        for (size_t i = 0; i < readers.size(); ++i) band.inputs.push_back(readers[i]->NextBand(band.rows, band.buffers[i]));
    };
}

CBandFileOutput::CBandFileOutput(std::string path, SImageHeader header, SWriteOptions options)
    : m_path(std::move(path)), m_header(std::move(header)), m_options(options) {}

CBandFileOutput::~CBandFileOutput() = default;

void CBandFileOutput::Append(const CRowIterator& rows) {
    if (!m_writer) {
        m_header.width = rows.GetWidth();
        m_header.format = rows.GetPixelFormat();
        m_writer = OpenImageBandWriter(m_path, m_header, m_options);
    }
    m_writer->Append(rows);
}

void CBandFileOutput::Commit() {
    if (!m_writer) throw CCliError(EExit::Corrupt, m_path + ": no rows to write");
    m_writer->Commit();
}

int BandRows(size_t rowBytes, int height) {
    size_t rows = kBandBytes / std::max<size_t>(rowBytes, 1);
    if (const char* forced = std::getenv("TESKCOLOR_BAND_ROWS")) rows = size_t(std::max(std::atoi(forced), 1));
    return int(std::clamp<size_t>(rows, 1, size_t(std::max(height, 1))));
}

void RunBands(int height, int bandRows, const SBandStages& stages, CStatusControl* status) {
    CBandQueue idle, read, converted;
    for (int i = 0; i < kBandsInFlight; ++i) idle.Push(std::make_unique<SBand>());
    std::mutex errorMutex;
    std::exception_ptr error;
    const auto fail = [&] {
        {
            std::lock_guard lock(errorMutex);
            if (!error) error = std::current_exception();
        }
        idle.Abort();
        read.Abort();
        converted.Abort();
    };

    std::thread reader([&] {
        try {
            for (int first = 0; first < height; first += bandRows) {
                auto band = idle.Pop();
                if (!band) return;
                band->first = first;
                band->rows = std::min(bandRows, height - first);
                stages.read(*band);
                read.Push(std::move(band));
            }
            read.Close();
        } catch (...) {
            fail();
        }
    });
    std::thread writer([&] {
        try {
            while (auto band = converted.Pop()) {
                stages.write(*band);
                band->outputs.clear();
                band->inputs.clear();
                idle.Push(std::move(band));
            }
        } catch (...) {
            fail();
        }
    });
    try {
        if (status) status->SetProgressRange(height);
        while (auto band = read.Pop()) {
            if (status) {
                CStatusControl bandStatus(status, band->first, band->first + band->rows);
                stages.convert(*band, &bandStatus);
                status->SetProgress(band->first + band->rows);
            } else {
                stages.convert(*band, nullptr);
            }
            converted.Push(std::move(band));
        }
        converted.Close();
    } catch (...) {
        fail();
    }
    reader.join();
    writer.join();
    if (error) std::rethrow_exception(error);
}

}  // namespace teskcolor
