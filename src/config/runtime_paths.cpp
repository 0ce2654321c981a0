#include "config/runtime_paths.h"

namespace kelvorig {

// Placeholder until the runtime directory lookup lands.
std::string ReadRuntimeFile(const std::string&)
{
    return std::string();
}

} // namespace kelvorig
