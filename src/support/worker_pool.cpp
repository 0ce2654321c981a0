#include "support/worker_pool.h"

#include <algorithm>
#include <chrono>

#include <sched.h>

namespace kelvorig {
namespace {

cpu_set_t ProcessorsOfThisThread()
{
    cpu_set_t processors;
    CPU_ZERO(&processors);
    if (sched_getaffinity(0, sizeof processors, &processors) != 0)
        CPU_ZERO(&processors);
    return processors;
}

// The processors the process may run on, taken before main. note: a new thread inherits its
// creator's pinning; a pool started from a thread that something pinned to one processor
// (Embree does this to the threads of its builds) would otherwise crowd onto it.
const cpu_set_t kStartupProcessors = ProcessorsOfThisThread();

// How long a thread keeps checking before it sleeps on a value it waits for. Loops follow
// each other closely during an anneal (a seat draw apart), and a sleeping thread can take
// up to a millisecond to wake on a virtual machine, longer than a whole loop.
constexpr std::chrono::microseconds kSpinTime{2000};

void Relax()
{
#if defined(__x86_64__) || defined(__i386__)
    __builtin_ia32_pause();
#endif
}

// Returns once `value` differs from `old`, with the new value: checks for a while, giving
// way to any other thread on the same processor, then sleeps.
template <typename T>
T WaitForChange(const std::atomic<T>& value, T old, std::memory_order order)
{
    const auto until = std::chrono::steady_clock::now() + kSpinTime;
    for (unsigned round = 1;; ++round)
    {
        const T now = value.load(order);
        if (now != old)
            return now;
        if (round % 64 == 0)
        {
            if (std::chrono::steady_clock::now() > until)
                break;
            std::this_thread::yield();
        }
        Relax();
    }
    value.wait(old, order);
    return value.load(order);
}

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

// note: the caller waits for the items, not for the helpers. A helper that wakes late (all
// ranges already taken) costs the caller nothing; the caller only makes sure that no helper
// still reads the loop's fields before it writes the next loop's.
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
    doneItems_.store(0, std::memory_order_relaxed);
    open_.store(true, std::memory_order_seq_cst);
    generation_.fetch_add(1, std::memory_order_release);
    generation_.notify_all();

    TakeRanges(0);
    for (size_t done = doneItems_.load(std::memory_order_acquire); done != count;)
        done = WaitForChange(doneItems_, done, std::memory_order_acquire);

    // A helper that entered before this sees at most an exhausted loop and leaves; one that
    // enters after it finds the loop closed.
    open_.store(false, std::memory_order_seq_cst);
    for (uint32_t inside = inside_.load(std::memory_order_seq_cst); inside != 0;)
        inside = WaitForChange(inside_, inside, std::memory_order_seq_cst);
}

void WorkerPool::TakeRanges(int32_t worker)
{
    for (;;)
    {
        const size_t begin = nextItem_.fetch_add(grain_, std::memory_order_relaxed);
        if (begin >= count_)
            return;
        const size_t end = std::min(count_, begin + grain_);
        task_(context_, worker, begin, end);
        if (doneItems_.fetch_add(end - begin, std::memory_order_acq_rel) + (end - begin) == count_)
            doneItems_.notify_one();
    }
}

void WorkerPool::WorkerLoop(int32_t worker)
{
    if (CPU_COUNT(&kStartupProcessors) > 0)
        sched_setaffinity(0, sizeof kStartupProcessors, &kStartupProcessors);
    uint32_t seen = 0;
    for (;;)
    {
        seen = WaitForChange(generation_, seen, std::memory_order_acquire);
        if (stopping_.load(std::memory_order_relaxed))
            return;
        inside_.fetch_add(1, std::memory_order_seq_cst);
        if (open_.load(std::memory_order_seq_cst))
            TakeRanges(worker);
        if (inside_.fetch_sub(1, std::memory_order_seq_cst) == 1)
            inside_.notify_one();
    }
}

} // namespace kelvorig
