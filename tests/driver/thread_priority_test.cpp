#include "driver/thread_priority.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

#include <sys/resource.h>
#include <unistd.h>

namespace kelvorig {
namespace {

int CallingThreadNice()
{
    return getpriority(PRIO_PROCESS, static_cast<id_t>(gettid()));
}

TEST(LowerThreadPriority, RaisesOnlyTheCallingThreadsNiceValue)
{
    const int mainBefore = CallingThreadNice();
    int before = 0;
    int after = 0;
    // A thread of its own, so that the test runner keeps its priority.
    std::thread worker([&] {
        before = CallingThreadNice();
        LowerThreadPriority();
        after = CallingThreadNice();
    });
    worker.join();
    EXPECT_EQ(after, std::min(before + 5, 19));
    EXPECT_EQ(CallingThreadNice(), mainBefore);
}

} // namespace
} // namespace kelvorig
