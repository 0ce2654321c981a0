#include "support/worker_pool.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <thread>
#include <vector>

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

TEST(WorkerPool, SizeCountsTheCallingThread)
{
    EXPECT_EQ(WorkerPool(1).Size(), 1);
    EXPECT_EQ(WorkerPool(3).Size(), 3);
    const int32_t logical = static_cast<int32_t>(std::max(1u, std::thread::hardware_concurrency()));
    EXPECT_EQ(WorkerPool(0).Size(), logical);
    EXPECT_EQ(WorkerPool(-2).Size(), logical);
}

// Every item lands in exactly one range, ranges are at most `grain` long, and worker ids
// stay within the pool, for many loops in a row on the same threads.
TEST(WorkerPool, EveryItemOnceInRangesOfAtMostTheGrain)
{
    struct Case
    {
        int32_t threads;
        size_t count;
        size_t grain;
    } cases[] = {{1, 100, 7}, {2, 0, 4}, {2, 1, 4}, {2, 4, 4}, {2, 5, 4}, {3, 1000, 16}, {4, 333, 1}, {2, 10, 0}};
    for (const Case& c : cases)
    {
        WorkerPool workers(c.threads);
        for (int loop = 0; loop < 50; ++loop)
        {
            std::vector<int> visits(c.count, 0);
            std::vector<int32_t> worker(c.count, -1);
            bool rangesFit = true;
            auto body = [&](int32_t id, size_t begin, size_t end)
            {
                rangesFit = rangesFit && begin < end && end - begin <= std::max<size_t>(c.grain, 1);
                for (size_t i = begin; i < end; ++i)
                {
                    ++visits[i];
                    worker[i] = id;
                }
            };
            workers.ForEachRange(c.count, c.grain, body);
            ASSERT_TRUE(std::all_of(visits.begin(), visits.end(), [](int n) { return n == 1; }))
                << c.threads << " threads, " << c.count << " items, loop " << loop;
            EXPECT_TRUE(std::all_of(worker.begin(), worker.end(),
                                    [&](int32_t id) { return id >= 0 && id < c.threads; }));
            EXPECT_TRUE(rangesFit);
        }
    }
}

// A pool of one runs every range on the calling thread in order; in a larger pool the
// other threads take ranges while the caller waits in its own (items that wait rather than
// compute), so the work is really shared out.
TEST(WorkerPool, WhoRunsTheRanges)
{
    WorkerPool one(1);
    std::vector<size_t> begins;
    bool onCaller = true;
    const std::thread::id caller = std::this_thread::get_id();
    auto record = [&](int32_t id, size_t begin, size_t)
    {
        onCaller = onCaller && id == 0 && std::this_thread::get_id() == caller;
        begins.push_back(begin);
    };
    one.ForEachRange(10, 3, record);
    EXPECT_TRUE(onCaller);
    EXPECT_EQ(begins, (std::vector<size_t>{0, 3, 6, 9}));

    WorkerPool three(3);
    std::vector<int32_t> worker(12, -1);
    auto wait = [&](int32_t id, size_t begin, size_t end)
    {
        for (size_t i = begin; i < end; ++i)
            worker[i] = id;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    };
    three.ForEachRange(worker.size(), 1, wait);
    EXPECT_GT(std::count_if(worker.begin(), worker.end(), [](int32_t id) { return id != 0; }), 0);
}

// A thread pinned to one processor (as Embree pins the thread that starts it) still gets
// helpers that may run anywhere the process could at start.
TEST(WorkerPool, HelpersAreNotHeldToTheCreatorsProcessor)
{
    int creatorCount = 0;
    int helperCount = 0;
    std::thread creator(
        [&]
        {
            cpu_set_t first;
            CPU_ZERO(&first);
            CPU_SET(sched_getcpu(), &first);
            sched_setaffinity(0, sizeof first, &first);
            creatorCount = ProcessorCountOfThisThread();

            WorkerPool workers(2);
            auto body = [&](int32_t id, size_t, size_t)
            {
                if (id == 1)
                    helperCount = ProcessorCountOfThisThread();
                std::this_thread::sleep_for(std::chrono::milliseconds(20));
            };
            workers.ForEachRange(4, 1, body);
        });
    creator.join();
    EXPECT_EQ(creatorCount, 1);
    EXPECT_EQ(helperCount, kStartupProcessorCount);
}

} // namespace
} // namespace kelvorig
