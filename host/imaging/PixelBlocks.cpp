#include "host/imaging/PixelBlocks.h"

#include <cstdlib>
#include <cstring>
#include <mutex>
#include <vector>

namespace vimaging {
namespace {

struct SKeptBlock {
    unsigned char* block;
    size_t bytes;
};

struct SKeptBlocks {
    std::mutex mutex;
    std::vector<SKeptBlock> blocks;  // oldest first
    size_t bytes = 0;
};

SKeptBlocks& Kept() {
    // Never destroyed: images may be released while static destructors run.
    static SKeptBlocks* kept = new SKeptBlocks;
    return *kept;
}

}  // namespace

unsigned char* TakeZeroedBlock(size_t bytes) {
    if (bytes >= kSmallestKeptBlock) {
        SKeptBlocks& kept = Kept();
        unsigned char* reused = nullptr;
        {
            std::lock_guard lock(kept.mutex);
            for (auto it = kept.blocks.rbegin(); it != kept.blocks.rend(); ++it) {
                if (it->bytes != bytes) continue;
                reused = it->block;
                kept.bytes -= bytes;
                kept.blocks.erase(std::next(it).base());
                break;
            }
        }
        if (reused) return static_cast<unsigned char*>(std::memset(reused, 0, bytes));
    }
    // calloc: fresh blocks come from the system already zeroed.
    return static_cast<unsigned char*>(std::calloc(bytes, 1));
}

void GiveBackBlock(unsigned char* block, size_t bytes) {
    if (!block) return;
    if (bytes < kSmallestKeptBlock || bytes > kKeptBytes) {
        std::free(block);
        return;
    }
    std::vector<unsigned char*> released;
    {
        SKeptBlocks& kept = Kept();
        std::lock_guard lock(kept.mutex);
        kept.blocks.push_back({block, bytes});
        kept.bytes += bytes;
        while (kept.blocks.size() > kKeptBlocks || kept.bytes > kKeptBytes) {
            released.push_back(kept.blocks.front().block);
            kept.bytes -= kept.blocks.front().bytes;
            kept.blocks.erase(kept.blocks.begin());
        }
    }
    for (unsigned char* old : released) std::free(old);
}

size_t KeptBlockCount() {
    SKeptBlocks& kept = Kept();
    std::lock_guard lock(kept.mutex);
    return kept.blocks.size();
}

}  // namespace vimaging
