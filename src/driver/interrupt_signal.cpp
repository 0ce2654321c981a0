#include "driver/interrupt_signal.h"

#include "support/stop_request.h"

#include <csignal>

#include <signal.h>
#include <unistd.h>

namespace kelvorig {
namespace {

// Touched from the signal handler: lock-free atomics only.
std::atomic<bool> stopRequest{false};
std::atomic<bool> reporting{false};
static_assert(std::atomic<bool>::is_always_lock_free);

extern "C" void OnInterrupt(int)
{
    if (reporting.load())
        _exit(kInterruptedStatus);
    stopRequest.store(true);
}

} // namespace

const std::atomic<bool>& CatchInterrupts()
{
    struct sigaction action = {};
    action.sa_handler = OnInterrupt;
    sigemptyset(&action.sa_mask);
    // note: restarts interrupted system calls, so that file writes need no retry loop of their own.
    action.sa_flags = SA_RESTART;
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    WatchStopRequest(&stopRequest);
    return stopRequest;
}

bool BeginReportUnlessInterrupted()
{
    // In this order: a signal that comes between the two steps is seen by the second.
    reporting.store(true);
    return !stopRequest.load();
}

} // namespace kelvorig
