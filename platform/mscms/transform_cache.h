// Process-wide cache of transform chains: identical profile bytes, intents
// and flags reuse the lcms2 transforms already made for them.
#pragma once
#include "transform_chain.h"

#include <memory>

namespace tesk::mscms {

// The chain for `key`, from the cache or newly made. A new chain has its
// usual format pair made at once, which proves the profiles can be joined
// (unless their tags already prove it); when they cannot, null with `error`
// set.
std::shared_ptr<ChainTransforms> AcquireChain(ChainKey key, DWORD& error);

// Chains held by the cache, least recently used first out beyond this.
constexpr size_t kChainCacheCapacity = 16;

}  // namespace tesk::mscms
