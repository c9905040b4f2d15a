// CheckBitmapBits: which pixels of a bitmap the transform's last profile
// cannot reproduce. lcms2 says in or out, not how far, so every pixel out
// of gamut gets the largest result.
#include <windows.h>

#include <icm.h>
#include <tesk/export_guard.h>

#include <algorithm>
#include <atomic>
#include <vector>

#include "bitmap_format.h"
#include "gamut_check.h"
#include "transform_handles.h"
#include "worker_pool.h"

namespace tesk::mscms {
namespace {

// Below this many pixels a call stays on the calling thread.
constexpr uint64_t kParallelPixels = 4096;
// With a progress callback, rows go in bands of about this many pixels.
constexpr uint64_t kCallbackBandPixels = uint64_t{1} << 18;

}  // namespace
}  // namespace tesk::mscms

using namespace tesk::mscms;

// Results are packed: one byte per pixel, row after row, whatever the stride.
BOOL WINAPI CheckBitmapBits(HTRANSFORM hColorTransform, PVOID pSrcBits, BMFORMAT bmInput, DWORD dwWidth,
                            DWORD dwHeight, DWORD dwStride, PBYTE paResult, PBMCALLBACKFN pfnCallback,
                            LPARAM lpCallbackData) try {
    auto transform = FindTransform(hColorTransform);
    if (!transform) return FALSE;
    if (!pSrcBits || !paResult) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    BitmapLayout input;
    DWORD error = ERROR_SUCCESS;
    if (!LookUpBitmapLayout(bmInput, input, error)) {
        SetLastError(error);
        return FALSE;
    }
    if (!FormatFitsColorSpace(input.lcmsFormat, transform->chain->EntrySpace())) {
        SetLastError(ERROR_COLORSPACE_MISMATCH);
        return FALSE;
    }
    if (dwWidth == 0 || dwHeight == 0) return TRUE;
    // A stride of 0 means rows padded to 4 bytes.
    const uint64_t rowBytes = uint64_t{dwWidth} * input.bytesPerPixel;
    const uint64_t step = dwStride ? dwStride : (rowBytes + 3) & ~uint64_t{3};
    if (step > UINT32_MAX || (dwHeight > 1 && step < rowBytes)) {
        SetLastError(ERROR_INVALID_PARAMETER);
        return FALSE;
    }
    const auto check = transform->gamutChecks.For(*transform->chain, input.lcmsFormat, input.bytesPerPixel, error);
    if (!check) {
        SetLastError(error);
        return FALSE;
    }

    const uint64_t pixels = uint64_t{dwWidth} * dwHeight;
    const unsigned threads =
        pixels < kParallelPixels ? 1 : std::min<unsigned>(WorkerPool::Instance().Workers() + 1, dwHeight);
    // Scratch for every thread, taken here so that no pool thread allocates.
    std::vector<GamutCheck::Scratch> scratch(threads, GamutCheck::Scratch(dwWidth, input.bytesPerPixel));
    const auto* bits = static_cast<const uint8_t*>(pSrcBits);
    auto checkRows = [&](DWORD first, DWORD count) {
        std::atomic<DWORD> nextRow{first};
        std::atomic<unsigned> nextSeat{0};
        WorkerPool::Instance().Share(std::min(threads, count) - 1, [&] {
            GamutCheck::Scratch& mine = scratch[nextSeat.fetch_add(1)];
            for (DWORD row; (row = nextRow.fetch_add(1, std::memory_order_relaxed)) < first + count;)
                check->Run(bits + row * step, paResult + uint64_t{row} * dwWidth, dwWidth, mine);
        });
    };
    if (!pfnCallback) {
        checkRows(0, dwHeight);
        return TRUE;
    }
    const DWORD band = static_cast<DWORD>(std::clamp<uint64_t>(kCallbackBandPixels / dwWidth, 1, dwHeight));
    for (DWORD row = 0; row < dwHeight; row += band) {
        const DWORD rows = std::min(band, dwHeight - row);
        checkRows(row, rows);
        const DWORD done = row + rows;
        if (done < dwHeight && !pfnCallback(dwHeight, done, lpCallbackData)) {
            SetLastError(ERROR_CANCELLED);
            return FALSE;
        }
    }
    return TRUE;
} catch (...) {
    return tesk::FailAtBoundary(BOOL{FALSE});
}
