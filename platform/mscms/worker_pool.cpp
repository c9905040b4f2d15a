#include "worker_pool.h"

#include <algorithm>
#include <chrono>

#include <unistd.h>

namespace tesk::mscms {
namespace {

// A caller waiting for a helper that is running lets it finish this long
// before sleeping; idle helpers never spin (a spinning helper takes the core
// from whatever else the machine runs).
constexpr auto kSpinTime = std::chrono::microseconds(50);
// Longer than any wait for a helper that is running; shorter than the slice
// a loaded system gives another thread before it runs ours again.
constexpr auto kStallTime = std::chrono::microseconds(50);

// True when ready() came true within `spin`. Readiness is looked at after
// every pause (a pause lasts up to some hundred cycles), the clock only now
// and then.
template <typename Ready>
bool SpinUntil(Ready ready, std::chrono::steady_clock::duration spin = kSpinTime) {
    const auto until = std::chrono::steady_clock::now() + spin;
    for (unsigned i = 1; !ready(); ++i) {
#if defined(__x86_64__) || defined(__i386__)
        __builtin_ia32_pause();
#endif
        if (i % 64 == 0 && std::chrono::steady_clock::now() > until) return ready();
    }
    return true;
}

}  // namespace

WorkerPool& WorkerPool::Instance() {
    // Never destroyed: its threads may still wait when static destructors run.
    static WorkerPool* pool = new WorkerPool(
        std::min(kMaxWorkers, std::max(1u, std::thread::hardware_concurrency()) - 1));
    return *pool;
}

WorkerPool::WorkerPool(unsigned workers) : ownerProcess_(getpid()) {
    for (unsigned i = 0; i < workers; ++i) {
        try {
            threads_.emplace_back([this] { Serve(); });
        } catch (const std::system_error&) {
            break;  // fewer threads: the caller does more itself
        }
    }
    for (std::thread& thread : threads_) thread.detach();
}

void WorkerPool::Serve() {
    uint64_t seenJob = 0;
    auto newJob = [&] { return (job_.load(std::memory_order_acquire) & ~(kJobStep - 1)) != seenJob; };
    for (;;) {
        if (!newJob()) {
            std::unique_lock lock(mutex_);
            wake_.wait(lock, newJob);
        }
        uint64_t state = job_.load(std::memory_order_acquire);
        seenJob = state & ~(kJobStep - 1);
        bool joined = false;
        while (!(state & kClosed) && (state & ~(kJobStep - 1)) == seenJob) {
            if (job_.compare_exchange_weak(state, state + 1, std::memory_order_acq_rel)) {
                joined = true;
                break;
            }
        }
        if (!joined) continue;
        // Inside the job the caller cannot return, so its work stays valid.
        if (seated_.fetch_add(1, std::memory_order_relaxed) < seats_) (*work_)();
        if ((job_.fetch_sub(1, std::memory_order_acq_rel) & kInsideMask) == 1) {
            std::lock_guard lock(mutex_);
            done_.notify_one();
        }
    }
}

void WorkerPool::Share(unsigned helpers, const std::function<void()>& work) {
    std::unique_lock busy(busy_, std::try_to_lock);
    const bool usable = busy.owns_lock() && getpid() == ownerProcess_;
    helpers = usable ? std::min(helpers, Workers()) : 0;
    if (helpers > 0 && std::chrono::steady_clock::now() < aloneUntil_) helpers = 0;
    if (helpers == 0) {
        work();
        return;
    }
    {
        std::lock_guard lock(mutex_);
        work_ = &work;
        seats_ = helpers;
        seated_.store(0, std::memory_order_relaxed);
        const uint64_t next = (job_.load(std::memory_order_relaxed) & ~(kJobStep - 1)) + kJobStep;
        job_.store(next, std::memory_order_release);
        wake_.notify_all();
    }
    const auto started = std::chrono::steady_clock::now();
    work();
    const auto finished = std::chrono::steady_clock::now();
    // Late helpers stay out from here on; wait only for those inside.
    const auto inside = [&] { return job_.load(std::memory_order_acquire) & kInsideMask; };
    if (job_.fetch_or(kClosed, std::memory_order_acq_rel) & kInsideMask) {
        SpinUntil([&] { return inside() == 0; });
        std::unique_lock lock(mutex_);
        done_.wait(lock, [&] { return inside() == 0; });
    }
    // Pieces are small, so a helper still inside when the caller is done
    // should be out within a fraction of the caller's own time; one the
    // system took off its core keeps the caller a scheduler slice or more.
    const auto waited = std::chrono::steady_clock::now() - finished;
    if (waited < std::max<std::chrono::steady_clock::duration>(kStallTime, (finished - started) / 2)) {
        if (++cleanJobs_ >= kCleanJobsToForgive) aloneFactor_ = kFirstAloneFactor;
        return;
    }
    const auto now = std::chrono::steady_clock::now();
    aloneUntil_ = now + waited * aloneFactor_;
    aloneFactor_ = std::min(aloneFactor_ * 2, kMaxAloneFactor);
    cleanJobs_ = 0;
}

}  // namespace tesk::mscms
