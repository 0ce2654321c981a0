#include "driver/thread_priority.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

#include <sys/resource.h>
#include <unistd.h>

namespace kelvorig {
namespace {

TEST(LowerThreadPriority, RaisesOnlyTheCallingThreadsNiceValue)
{
    const auto callingThreadNice = [] { return getpriority(PRIO_PROCESS, static_cast<id_t>(gettid())); };
    const int mainBefore = callingThreadNice();
    int before = 0, after = 0;
    // A thread of its own, so that the test runner keeps its priority.
    std::thread worker(
        [&]
        {
            before = callingThreadNice();
            LowerThreadPriority();
            after = callingThreadNice();
        });
    worker.join();
    EXPECT_EQ(after, std::min(before + 5, 19));
    EXPECT_EQ(callingThreadNice(), mainBefore);
}

} // namespace
} // namespace kelvorig
