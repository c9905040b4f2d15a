// Pixel memory of images. A large block given back is kept for the next image
// that needs one of the same size: clearing memory the process already has is
// many times faster than the system faulting in and zeroing fresh pages one at
// a time, and an editor makes images of one size again and again (a
// separation re-created into the same four plates, a preview per change).
#pragma once
#include <cstddef>

#include "host/imaging/ImagingApi.h"

namespace vimaging {

// `bytes` of zeroed memory, or null when it cannot be had.
unsigned char* TakeZeroedBlock(size_t bytes);
// Returns a block from TakeZeroedBlock; it is kept or freed.
void GiveBackBlock(unsigned char* block, size_t bytes);

// What is kept at most, and the smallest block worth keeping (smaller ones
// the allocator already serves from memory it holds).
inline constexpr size_t kKeptBlocks = 8;
inline constexpr size_t kKeptBytes = size_t{384} << 20;
inline constexpr size_t kSmallestKeptBlock = size_t{1} << 20;

// Blocks kept now, for tests and diagnostics.
VIMAGING_API size_t KeptBlockCount();

}  // namespace vimaging
