#include "support/tool_version.h"

namespace kelvorig {

const char* ToolVersion()
{
    return KELVORIG_VERSION;
}

} // namespace kelvorig
