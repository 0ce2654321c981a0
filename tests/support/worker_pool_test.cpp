#include "support/worker_pool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <thread>

#include <sched.h>

namespace kelvorig {
namespace {

int ProcessorCountOfThisThread()
{
    cpu_set_t processors;
    CPU_ZERO(&processors);
    sched_getaffinity(0, sizeof processors, &processors);
    return CPU_COUNT(&processors);
}

// Taken before main, as the test binary started; building a surface later pins the thread
// that does it.
const int kStartupProcessorCount = ProcessorCountOfThisThread();

// Every item lands in exactly one range of at most `grain` items, on a worker of the pool,
// for many loops in a row on the same threads; a pool of one runs the ranges on the calling
// thread in order.
TEST(WorkerPool, EveryItemOnceInRangesOfAtMostTheGrain)
{
    const struct
    {
        int32_t threads;
        size_t count, grain;
    } cases[] = {{1, 100, 7}, {2, 0, 4}, {2, 1, 4}, {2, 4, 4}, {2, 5, 4}, {3, 1000, 16}, {4, 333, 1}, {2, 10, 0}};
    for (const auto& c : cases)
    {
        WorkerPool workers(c.threads);
        const std::thread::id caller = std::this_thread::get_id();
        for (int loop = 0; loop < 50; ++loop)
        {
            std::vector<int> visits(c.count, 0);
            std::vector<size_t> begins;
            bool fit = true;
            std::mutex mutex; // guards fit and begins; the visits are disjoint
            auto body = [&](int32_t id, size_t begin, size_t end)
            {
                const std::lock_guard<std::mutex> lock(mutex);
                fit = fit && begin < end && end - begin <= std::max<size_t>(c.grain, 1) && id >= 0 && id < c.threads;
                fit = fit && (c.threads > 1 || std::this_thread::get_id() == caller);
                begins.push_back(begin);
                for (size_t i = begin; i < end; ++i)
                    ++visits[i];
            };
            workers.ForEachRange(c.count, c.grain, body);
            ASSERT_TRUE(fit && std::all_of(visits.begin(), visits.end(), [](int n) { return n == 1; }))
                << c.threads << " threads, " << c.count << " items, loop " << loop;
            EXPECT_TRUE(c.threads > 1 || std::is_sorted(begins.begin(), begins.end()));
        }
    }
}

// In a larger pool the other threads take ranges while the caller waits in its own, and a
// creator pinned to one processor (as Embree pins the thread that starts it) still gets
// helpers that may run anywhere the process could at start.
TEST(WorkerPool, HelpersShareTheWorkAndAreNotHeldToTheCreatorsProcessor)
{
    int creatorCount = 0, helperCount = 0;
    std::atomic<int> helped = 0;
    std::thread creator(
        [&]
        {
            cpu_set_t first;
            CPU_ZERO(&first);
            CPU_SET(sched_getcpu(), &first);
            sched_setaffinity(0, sizeof first, &first);
            creatorCount = ProcessorCountOfThisThread();
            WorkerPool workers(3);
            auto wait = [&](int32_t id, size_t, size_t)
            {
                helped += id != 0;
                if (id == 1)
                    helperCount = ProcessorCountOfThisThread();
                std::this_thread::sleep_for(std::chrono::milliseconds(20));
            };
            workers.ForEachRange(12, 1, wait);
        });
    creator.join();
    EXPECT_EQ(creatorCount, 1);
    EXPECT_EQ(helperCount, kStartupProcessorCount);
    EXPECT_GT(helped, 0);
}

} // namespace
} // namespace kelvorig
