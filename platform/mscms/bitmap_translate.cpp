// TranslateBitmapBits: a whole bitmap goes to lcms2 in one call, or in a few
// bands of rows on worker threads; never pixel by pixel.
#include <windows.h>

#include <icm.h>
#include <tesk/export_guard.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <vector>

#include "bitmap_format.h"
#include "eight_bit_path.h"
#include "worker_pool.h"
#include "transform_handles.h"

namespace tesk::mscms {
namespace {

// A call of fewer pixels than this stays on the calling thread: waking a
// sleeping helper costs more than it saves. Measured with one call per row
// (translate_bench RowByRow): lcms2 gains from a second thread from about
// 1024 pixels, the platform's own 8-bit paths, four times as fast, from 4096.
constexpr uint64_t kParallelPixelsLcms2 = 1024;
constexpr uint64_t kParallelPixelsOwnPath = 4096;
constexpr uint64_t kPixelsPerPart = 512;
// Pieces small enough that the last one to finish keeps nobody waiting long:
// a few microseconds of a long row, a few milliseconds of a bitmap.
constexpr DWORD kColumnsPerPiece = 256;
constexpr uint64_t kPixelsPerPiece = uint64_t{1} << 16;
constexpr unsigned kMaxPieces = 256;
constexpr unsigned kMaxThreads = 8;
// With a progress callback, rows go in bands of about this many pixels.
constexpr uint64_t kCallbackBandPixels = uint64_t{1} << 18;

// TESK_TRANSLATE_THREADS=n fixes the number of threads (1 for benchmarks and
// for tests that compare against a single thread).
unsigned ForcedThreadCount() {
    const char* value = std::getenv("TESK_TRANSLATE_THREADS");
    if (!value || !*value) return 0;
    const long n = std::strtol(value, nullptr, 10);
    return n < 1 ? 0 : static_cast<unsigned>(std::min<long>(n, kMaxThreads));
}

unsigned ThreadCount(uint64_t pixels, bool ownPath) {
    if (unsigned forced = ForcedThreadCount()) return forced;
    if (pixels < (ownPath ? kParallelPixelsOwnPath : kParallelPixelsLcms2)) return 1;
    // The pool counted the cores once; asking the system again reads /sys.
    const unsigned cores = WorkerPool::Instance().Workers() + 1;
    return static_cast<unsigned>(std::min<uint64_t>({cores, kMaxThreads, pixels / kPixelsPerPart}));
}

struct Plane {
    uint8_t* bits;
    uint64_t stride;
    uint64_t rowBytes;
    uint64_t bytesPerPixel;
};

// Rows of one bitmap may be split between threads unless the two bitmaps
// overlap in a way that makes one row's output another row's input.
bool RowsIndependent(const Plane& in, const Plane& out, DWORD height) {
    const uint8_t* inEnd = in.bits + (height - 1) * in.stride + in.rowBytes;
    const uint8_t* outEnd = out.bits + (height - 1) * out.stride + out.rowBytes;
    const bool overlap = in.bits < outEnd && out.bits < inEnd;
    return !overlap || (in.bits == out.bits && in.stride == out.stride && out.rowBytes <= in.rowBytes);
}

// Pixels of one row may be split between threads when each pixel's output
// overwrites nothing but that pixel's own input.
bool PixelsIndependent(const Plane& in, const Plane& out, DWORD height) {
    const uint8_t* inEnd = in.bits + (height - 1) * in.stride + in.rowBytes;
    const uint8_t* outEnd = out.bits + (height - 1) * out.stride + out.rowBytes;
    const bool overlap = in.bits < outEnd && out.bits < inEnd;
    return !overlap || (in.bits == out.bits && in.stride == out.stride && in.bytesPerPixel == out.bytesPerPixel);
}

class RowTranslator {
public:
    // Pixels go through `path` when there is one, else through `transform`.
    RowTranslator(const EightBitPath* path, cmsHTRANSFORM transform, Plane in, Plane out, DWORD width,
                  unsigned threads, bool splitRows, bool splitColumns)
        : path_(path), transform_(transform), in_(in), out_(out), width_(width), threads_(threads),
          splitRows_(splitRows), splitColumns_(splitColumns) {}

    // Rows [first, first + count) on the pool's threads, in small pieces that
    // each thread takes as it comes free: by rows when there are enough of
    // them, else by columns. With pieces rather than fixed shares, no thread
    // waits long for one that started late or was descheduled. Every pixel is computed the same way whatever the split,
    // so the result does not depend on the thread count.
    void Run(DWORD first, DWORD count) {
        if (threads_ > 1 && splitRows_ && count >= threads_) {
            const uint64_t wanted = std::clamp<uint64_t>(uint64_t{count} * width_ / kPixelsPerPiece, threads_, kMaxPieces);
            const unsigned pieces = static_cast<unsigned>(std::min<uint64_t>(count, wanted));
            Share(pieces, [&](unsigned piece) {
                const DWORD begin = first + static_cast<DWORD>(uint64_t{count} * piece / pieces);
                const DWORD end = first + static_cast<DWORD>(uint64_t{count} * (piece + 1) / pieces);
                Translate(begin, end - begin, 0, width_);
            });
        } else if (threads_ > 1 && splitColumns_ && width_ >= 2 * kColumnsPerPiece) {
            const unsigned pieces = std::min<unsigned>(kMaxPieces, width_ / kColumnsPerPiece);
            Share(pieces, [&](unsigned piece) {
                const DWORD begin = static_cast<DWORD>(uint64_t{width_} * piece / pieces);
                const DWORD end = static_cast<DWORD>(uint64_t{width_} * (piece + 1) / pieces);
                Translate(first, count, begin, end - begin);
            });
        } else {
            Translate(first, count, 0, width_);
        }
    }

private:
    template <typename Piece>
    void Share(unsigned pieces, const Piece& piece) {
        std::atomic<unsigned> next{0};
        WorkerPool::Instance().Share(std::min(threads_, pieces) - 1, [&] {
            for (unsigned taken; (taken = next.fetch_add(1, std::memory_order_relaxed)) < pieces;) piece(taken);
        });
    }

    void Translate(DWORD first, DWORD rows, DWORD column, DWORD columns) {
        if (rows == 0 || columns == 0) return;
        if (path_) {
            for (DWORD row = first; row < first + rows; ++row)
                path_->Run(in_.bits + row * in_.stride + column * in_.bytesPerPixel,
                           out_.bits + row * out_.stride + column * out_.bytesPerPixel, columns);
            return;
        }
        cmsDoTransformLineStride(transform_, in_.bits + first * in_.stride + column * in_.bytesPerPixel,
                                 out_.bits + first * out_.stride + column * out_.bytesPerPixel, columns, rows,
                                 static_cast<cmsUInt32Number>(in_.stride), static_cast<cmsUInt32Number>(out_.stride),
                                 0, 0);
    }

    const EightBitPath* path_;
    cmsHTRANSFORM transform_;
    Plane in_;
    Plane out_;
    DWORD width_;
    unsigned threads_;
    bool splitRows_;
    bool splitColumns_;
};

// A stride of 0 means rows padded to 4 bytes. A stride shorter than a row is
// harmless for a single row, which never steps to the next.
bool MakePlane(PVOID bits, DWORD width, DWORD height, DWORD stride, size_t bytesPerPixel, Plane& plane) {
    const uint64_t rowBytes = uint64_t{width} * bytesPerPixel;
    const uint64_t step = stride ? stride : (rowBytes + 3) & ~uint64_t{3};
    if (step > UINT32_MAX || (height > 1 && step < rowBytes)) return false;
    plane = {static_cast<uint8_t*>(bits), step, rowBytes, bytesPerPixel};
    return true;
}

}  // namespace
}  // namespace tesk::mscms

using namespace tesk::mscms;

// The callback gets (rows in all, rows done) between bands of rows; FALSE
// from it stops the translation, which then fails with ERROR_CANCELLED.
BOOL WINAPI TranslateBitmapBits(HTRANSFORM hColorTransform, PVOID pSrcBits, BMFORMAT bmInput, DWORD dwWidth,
                                DWORD dwHeight, DWORD dwInputStride, PVOID pDestBits, BMFORMAT bmOutput,
                                DWORD dwOutputStride, PBMCALLBACKFN pfnCallBack, LPARAM ulCallbackData) try {
    auto transform = FindTransform(hColorTransform);
    if (!transform) return FALSE;
    if (!pSrcBits || !pDestBits) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    BitmapLayout input, output;
    DWORD error = ERROR_SUCCESS;
    if (!LookUpBitmapLayout(bmInput, input, error) || !LookUpBitmapLayout(bmOutput, output, error)) {
        SetLastError(error);
        return FALSE;
    }
    const ChainTransforms& chain = *transform->chain;
    if (!FormatFitsColorSpace(input.lcmsFormat, chain.EntrySpace()) ||
        !FormatFitsColorSpace(output.lcmsFormat, chain.ExitSpace())) {
        SetLastError(ERROR_COLORSPACE_MISMATCH);
        return FALSE;
    }
    if (dwWidth == 0 || dwHeight == 0) return TRUE;
    Plane in, out;
    if (!MakePlane(pSrcBits, dwWidth, dwHeight, dwInputStride, input.bytesPerPixel, in) ||
        !MakePlane(pDestBits, dwWidth, dwHeight, dwOutputStride, output.bytesPerPixel, out)) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    const auto path = transform->chain->EightBitPathFor(input.lcmsFormat, output.lcmsFormat);
    const auto lcms = path ? nullptr : transform->chain->For(input.lcmsFormat, output.lcmsFormat);
    if (!path && !lcms) {
        SetLastError(ERROR_INVALID_TRANSFORM);
        return FALSE;
    }

    const uint64_t pixels = uint64_t{dwWidth} * dwHeight;
    RowTranslator translator(path.get(), lcms ? lcms->Get() : nullptr, in, out, dwWidth,
                             ThreadCount(pixels, path != nullptr), RowsIndependent(in, out, dwHeight),
                             PixelsIndependent(in, out, dwHeight));
    if (!pfnCallBack) {
        translator.Run(0, dwHeight);
        return TRUE;
    }
    const DWORD band = static_cast<DWORD>(std::clamp<uint64_t>(kCallbackBandPixels / dwWidth, 1, dwHeight));
    for (DWORD row = 0; row < dwHeight; row += band) {
        const DWORD rows = std::min(band, dwHeight - row);
        translator.Run(row, rows);
        const DWORD done = row + rows;
        if (done < dwHeight && !pfnCallBack(dwHeight, done, ulCallbackData)) {
            SetLastError(ERROR_CANCELLED);
            return FALSE;
        }
    }
    return TRUE;
} catch (...) {
    return tesk::FailAtBoundary(BOOL{FALSE});
}
