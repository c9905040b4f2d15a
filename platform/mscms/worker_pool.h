// Threads kept for the life of the process, so that splitting one bitmap
// call (even a single long row) between cores costs microseconds, not the
// start of a thread.
#pragma once
#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace tesk::mscms {

class WorkerPool {
public:
    // The process's pool: one thread fewer than the cores, at most `kMaxWorkers`.
    static WorkerPool& Instance();

    // Runs task(part) for every part in [0, parts) and returns when all are
    // done. Part 0 runs on the calling thread. While another caller holds the
    // pool, or for parts beyond its threads, the caller runs them itself.
    void Run(unsigned parts, const std::function<void(unsigned)>& task);

    unsigned Workers() const { return static_cast<unsigned>(threads_.size()); }

    static constexpr unsigned kMaxWorkers = 7;

private:
    explicit WorkerPool(unsigned workers);
    void Work(unsigned part);

    std::mutex busy_;  // one Run at a time
    std::mutex mutex_;
    std::condition_variable wake_;
    std::condition_variable done_;
    std::vector<std::thread> threads_;
    const std::function<void(unsigned)>* task_ = nullptr;
    unsigned parts_ = 0;
    std::atomic<uint64_t> generation_{0};
    std::atomic<unsigned> remaining_{0};
    int ownerProcess_;  // a forked child has none of the threads
};

}  // namespace tesk::mscms
