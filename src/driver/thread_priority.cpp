#include "driver/thread_priority.h"

#include <cerrno>

#include <sys/resource.h>
#include <unistd.h>

namespace kelvorig {

void LowerThreadPriority()
{
    // On Linux the nice value belongs to the thread named by its id, so this touches the
    // calling thread only (Embree's workers keep theirs). A step of 5 is a moderate drop,
    // much like a step of two below normal on a desktop scheduler.
    const pid_t thread = gettid();
    errno = 0;
    const int current = getpriority(PRIO_PROCESS, static_cast<id_t>(thread));
    if (errno != 0)
        return;
    setpriority(PRIO_PROCESS, static_cast<id_t>(thread), current + 5);
}

} // namespace kelvorig
