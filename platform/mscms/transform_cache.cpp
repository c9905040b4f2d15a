#include "transform_cache.h"

#include <windows.h>

#include <list>
#include <mutex>

#include "eight_bit_path.h"

namespace tesk::mscms {
namespace {

struct Cache {
    std::mutex mutex;
    std::list<std::shared_ptr<ChainTransforms>> recent;  // most recent first

    std::shared_ptr<ChainTransforms> Find(const ChainKey& key) {
        for (auto it = recent.begin(); it != recent.end(); ++it) {
            if ((*it)->Key() == key) {
                recent.splice(recent.begin(), recent, it);
                return recent.front();
            }
        }
        return nullptr;
    }
};

Cache& TheCache() {
    static Cache* cache = new Cache;  // never destroyed: in use until process exit
    return *cache;
}

}  // namespace

std::shared_ptr<ChainTransforms> AcquireChain(ChainKey key, DWORD& error) {
    Cache& cache = TheCache();
    {
        std::lock_guard lock(cache.mutex);
        if (auto found = cache.Find(key)) return found;
    }

    // Made outside the lock: building a transform takes long, and other
    // threads may meanwhile use chains already cached.
    auto chain = std::make_shared<ChainTransforms>(std::move(key));
    // Unoptimised, lcms2 joins the profiles without precalculating a table
    // that the platform's own 8-bit paths would never use. Two matrix shapers
    // are joined as the matrix-shaper path checks itself against, so that
    // this transform is the one it reuses rather than a second one made.
    // Where the tags alone prove the join, the transform waits for first
    // use: the display chain every run makes is seldom used, and reversing
    // sampled output curves is most of what a transform costs.
    const auto [input, output] = chain->UsualFormats();
    if (!MatrixShapersSurelyJoin(chain->Key())) {
        const cmsUInt32Number flags = JoinsTwoMatrixShapers(chain->Key()) ? 0 : cmsFLAGS_NOOPTIMIZE;
        if (!chain->For(input, output, &error, flags)) return nullptr;
    }

    std::lock_guard lock(cache.mutex);
    if (auto raced = cache.Find(chain->Key())) return raced;
    cache.recent.push_front(chain);
    if (cache.recent.size() > kChainCacheCapacity) cache.recent.pop_back();
    return chain;
}

}  // namespace tesk::mscms
