#include "support/random_draws.h"

#include <ctime>
#include <unistd.h>

namespace kelvorig {

uint32_t TimeAndProcessSeed()
{
    const uint32_t seconds = static_cast<uint32_t>(static_cast<uint64_t>(std::time(nullptr)));
    return seconds + static_cast<uint32_t>(getpid());
}

} // namespace kelvorig
