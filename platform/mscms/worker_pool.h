// Threads kept for the life of the process, so that splitting one bitmap
// call (even a single long row) between cores costs microseconds, not the
// start of a thread.
#pragma once
#include <atomic>
#include <chrono>
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

    // Runs work() on the calling thread and on up to `helpers` pool threads,
    // and returns once every thread that ran it has finished. A pool thread
    // that has not started by the time the caller's own work() returns is
    // left out, so a busy machine never makes the caller wait for a thread
    // that is not running: work() must take its pieces from shared state
    // until none are left. While another caller holds the pool, the caller
    // works alone.
    void Share(unsigned helpers, const std::function<void()>& work);

    unsigned Workers() const { return static_cast<unsigned>(threads_.size()); }

    static constexpr unsigned kMaxWorkers = 7;

private:
    explicit WorkerPool(unsigned workers);
    void Serve();

    // One word for the current job: its number in the high half, a closed
    // flag, and how many helpers are inside work(). Joining and closing are
    // then a single atomic step each, so no helper can join a closed job or
    // a job that has since been replaced.
    static constexpr uint64_t kJobStep = uint64_t{1} << 32;
    static constexpr uint64_t kClosed = uint64_t{1} << 31;
    static constexpr uint64_t kInsideMask = kClosed - 1;

    std::mutex busy_;  // one job at a time
    std::mutex mutex_;
    std::condition_variable wake_;
    std::condition_variable done_;
    std::vector<std::thread> threads_;
    std::atomic<uint64_t> job_{kClosed};
    const std::function<void()>* work_ = nullptr;
    unsigned seats_ = 0;  // helpers the current job takes
    std::atomic<unsigned> seated_{0};
    int ownerProcess_;  // a forked child has none of the threads

    // A helper descheduled inside a job keeps its caller waiting until the
    // system runs it again: milliseconds, where a job of one row takes
    // microseconds. After such a wait the pool's callers work alone for a
    // multiple of the time lost, a larger multiple each time it happens
    // again soon, so that on a busy machine the waits cost a small share of
    // the time and threads are never much slower than one. Touched only by
    // the caller holding `busy_`.
    std::chrono::steady_clock::time_point aloneUntil_{};
    unsigned aloneFactor_ = kFirstAloneFactor;
    unsigned cleanJobs_ = 0;
    static constexpr unsigned kFirstAloneFactor = 32;
    static constexpr unsigned kMaxAloneFactor = 1024;
    static constexpr unsigned kCleanJobsToForgive = 256;
};

}  // namespace tesk::mscms
