#include "driver/interrupt_signal.h"

#include "support/stop_request.h"

#include <csignal>

#include <signal.h>

namespace kelvorig {
namespace {

// Touched from the signal handler: a lock-free atomic only. The handler does nothing else; every
// phase looks at the request between its items and ends in order, its files whole.
std::atomic<bool> stopRequest{false};
static_assert(std::atomic<bool>::is_always_lock_free);

extern "C" void OnInterrupt(int)
{
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

} // namespace kelvorig
