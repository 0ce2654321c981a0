#include "quality/worker_pool.h"

#include <algorithm>

namespace kelvorig {
namespace {

int32_t LogicalProcessors()
{
    const unsigned count = std::thread::hardware_concurrency();
    return count == 0 ? 1 : static_cast<int32_t>(count);
}

} // namespace

WorkerPool::WorkerPool(int32_t threads)
{
    const int32_t size = threads > 0 ? threads : LogicalProcessors();
    try
    {
        threads_.reserve(static_cast<size_t>(size - 1));
        for (int32_t worker = 1; worker < size; ++worker)
            threads_.emplace_back([this, worker] { WorkerLoop(worker); });
    }
    catch (...)
    {
        // The system refused a thread: end those already started before giving up.
        Stop();
        throw;
    }
}

WorkerPool::~WorkerPool()
{
    Stop();
}

void WorkerPool::Stop()
{
    stopping_.store(true, std::memory_order_relaxed);
    generation_.fetch_add(1, std::memory_order_release);
    generation_.notify_all();
    for (std::thread& thread : threads_)
        thread.join();
}

void WorkerPool::Run(size_t count, size_t grain, RangeTask task, void* context)
{
    grain = std::max<size_t>(grain, 1);
    if (threads_.empty() || count <= grain)
    {
        for (size_t begin = 0; begin < count; begin += grain)
            task(context, 0, begin, std::min(count, begin + grain));
        return;
    }

    task_ = task;
    context_ = context;
    count_ = count;
    grain_ = grain;
    nextItem_.store(0, std::memory_order_relaxed);
    running_.store(static_cast<uint32_t>(threads_.size()), std::memory_order_relaxed);
    generation_.fetch_add(1, std::memory_order_release);
    generation_.notify_all();

    TakeRanges(0);
    for (uint32_t left = running_.load(std::memory_order_acquire); left != 0;
         left = running_.load(std::memory_order_acquire))
        running_.wait(left, std::memory_order_acquire);
}

void WorkerPool::TakeRanges(int32_t worker)
{
    for (;;)
    {
        const size_t begin = nextItem_.fetch_add(grain_, std::memory_order_relaxed);
        if (begin >= count_)
            return;
        task_(context_, worker, begin, std::min(count_, begin + grain_));
    }
}

void WorkerPool::WorkerLoop(int32_t worker)
{
    uint32_t seen = 0;
    for (;;)
    {
        generation_.wait(seen, std::memory_order_acquire);
        seen = generation_.load(std::memory_order_acquire);
        if (stopping_.load(std::memory_order_relaxed))
            return;
        TakeRanges(worker);
        if (running_.fetch_sub(1, std::memory_order_acq_rel) == 1)
            running_.notify_one();
    }
}

} // namespace kelvorig
