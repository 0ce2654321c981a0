#include "support/stop_request.h"

namespace kelvorig {
namespace {

std::atomic<const std::atomic<bool>*> watched{nullptr};

} // namespace

void WatchStopRequest(const std::atomic<bool>* request)
{
    watched.store(request);
}

bool StopRequested()
{
    const std::atomic<bool>* request = watched.load(std::memory_order_relaxed);
    return request != nullptr && request->load(std::memory_order_relaxed);
}

} // namespace kelvorig
