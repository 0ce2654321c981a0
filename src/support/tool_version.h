#pragma once

namespace kelvorig {

// The version of this build, as the project states it: "1.1.0".
const char* ToolVersion();

} // namespace kelvorig
