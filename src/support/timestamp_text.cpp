#include "support/timestamp_text.h"

#include <cstdio>
#include <ctime>

namespace kelvorig {

std::string TimestampText(bool withMilliseconds)
{
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    const time_t seconds = now.tv_sec;
    const unsigned milliseconds = static_cast<unsigned>(now.tv_nsec / 1000000);
    tm local{};
    localtime_r(&seconds, &local);

    char buffer[128];
    if (!withMilliseconds)
    {
        std::strftime(buffer, sizeof buffer, "%a %b %d %H:%M:%S %Y", &local);
        return buffer;
    }
    // The first pass leaves "%03u" in the text for the milliseconds.
    char pattern[128];
    std::strftime(pattern, sizeof pattern, "%a %b %d %Y %H:%M:%S.%%03u", &local);
    std::snprintf(buffer, sizeof buffer, pattern, milliseconds);
    return buffer;
}

} // namespace kelvorig
