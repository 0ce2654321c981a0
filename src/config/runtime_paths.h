#pragma once

#include <string>

namespace kelvorig {

// Text of relativePath under the runtime's drivers directory; empty on any failure.
std::string ReadRuntimeFile(const std::string& relativePath);

} // namespace kelvorig
