#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <thread>
#include <vector>

namespace kelvorig {

// A fixed team of threads that share out the items of one loop at a time. The threads start
// with the pool and stay until it is destroyed, so a loop costs a wake-up, never a thread
// start. The calling thread takes part as worker 0; a pool of one starts no thread at all
// and runs every loop on the caller. Loops allocate nothing. The helper threads may run on
// every processor the process was allowed at start, whatever the creating thread's pinning.
class WorkerPool
{
public:
    // `threads` workers in all, the caller included; 0 or less means one per logical
    // processor. Throws std::system_error when the system refuses a thread.
    explicit WorkerPool(int32_t threads);
    ~WorkerPool();
    WorkerPool(const WorkerPool&) = delete;
    WorkerPool& operator=(const WorkerPool&) = delete;

    // Number of workers, the calling thread included; worker ids run from 0 to Size() - 1.
    int32_t Size() const { return static_cast<int32_t>(threads_.size()) + 1; }

    // Calls body(worker, begin, end) for consecutive ranges of [0, count), each of at most
    // `grain` items, and returns when all are done. Ranges go to whichever worker is free, so
    // the body may write only to the items of its range and to scratch of its own worker.
    // One loop at a time, from one thread; the body must not throw.
    template <typename Body>
    void ForEachRange(size_t count, size_t grain, Body& body)
    {
        Run(
            count, grain,
            [](void* context, int32_t worker, size_t begin, size_t end)
            { (*static_cast<Body*>(context))(worker, begin, end); },
            &body);
    }

private:
    using RangeTask = void (*)(void* context, int32_t worker, size_t begin, size_t end);

    void Run(size_t count, size_t grain, RangeTask task, void* context);
    void TakeRanges(int32_t worker);
    void WorkerLoop(int32_t worker);
    void Stop();

    std::vector<std::thread> threads_;

    // The loop under way. Written by the caller only while the loop is closed and no
    // worker is inside it.
    RangeTask task_ = nullptr;
    void* context_ = nullptr;
    size_t count_ = 0;
    size_t grain_ = 1;

    std::atomic<size_t> nextItem_{0};     // first item not yet handed out
    std::atomic<size_t> doneItems_{0};    // items whose range has been finished
    std::atomic<bool> open_{false};       // a loop is under way
    std::atomic<uint32_t> inside_{0};     // helper threads between entering and leaving a loop
    std::atomic<uint32_t> generation_{0}; // one step per loop; idle helpers wait on it
    std::atomic<bool> stopping_{false};
};

} // namespace kelvorig
