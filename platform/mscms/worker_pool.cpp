#include "worker_pool.h"

#include <algorithm>
#include <chrono>

#include <unistd.h>

namespace tesk::mscms {
namespace {

// Between the rows of an image the caller spends a few microseconds on its
// own work; a worker that waits this long for the next call catches it
// without the cost of sleeping and being woken.
constexpr auto kSpinTime = std::chrono::microseconds(50);

template <typename Ready>
void SpinUntil(Ready ready) {
    const auto until = std::chrono::steady_clock::now() + kSpinTime;
    while (!ready()) {
        for (int i = 0; i < 64; ++i) {
#if defined(__x86_64__) || defined(__i386__)
            __builtin_ia32_pause();
#endif
        }
        if (std::chrono::steady_clock::now() > until) return;
    }
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
            threads_.emplace_back([this, i] { Work(i + 1); });
        } catch (const std::system_error&) {
            break;  // fewer threads: the caller runs the rest
        }
    }
    for (std::thread& thread : threads_) thread.detach();
}

void WorkerPool::Work(unsigned part) {
    uint64_t seen = 0;
    for (;;) {
        SpinUntil([&] { return generation_.load(std::memory_order_acquire) != seen; });
        const std::function<void(unsigned)>* task = nullptr;
        {
            std::unique_lock lock(mutex_);
            wake_.wait(lock, [&] { return generation_.load(std::memory_order_acquire) != seen; });
            seen = generation_.load(std::memory_order_acquire);
            if (part < parts_) task = task_;
        }
        if (!task) continue;
        (*task)(part);
        if (remaining_.fetch_sub(1, std::memory_order_acq_rel) == 1) {
            std::lock_guard lock(mutex_);
            done_.notify_one();
        }
    }
}

void WorkerPool::Run(unsigned parts, const std::function<void(unsigned)>& task) {
    std::unique_lock busy(busy_, std::try_to_lock);
    const bool usable = busy.owns_lock() && getpid() == ownerProcess_;
    const unsigned helpers = usable ? std::min(parts > 0 ? parts - 1 : 0, Workers()) : 0;
    if (helpers > 0) {
        std::lock_guard lock(mutex_);
        task_ = &task;
        parts_ = helpers + 1;
        remaining_.store(helpers, std::memory_order_release);
        generation_.fetch_add(1, std::memory_order_acq_rel);
        wake_.notify_all();
    }
    if (parts > 0) task(0);
    for (unsigned part = helpers + 1; part < parts; ++part) task(part);
    if (helpers > 0) {
        SpinUntil([&] { return remaining_.load(std::memory_order_acquire) == 0; });
        std::unique_lock lock(mutex_);
        done_.wait(lock, [&] { return remaining_.load(std::memory_order_acquire) == 0; });
        parts_ = 0;
        task_ = nullptr;
    }
}

}  // namespace tesk::mscms
