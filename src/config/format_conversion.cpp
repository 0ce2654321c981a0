#include "config/format_conversion.h"

#include <cstdio>
#include <cstdlib>

namespace kelvorig {

// Placeholder until format conversion lands.
void ConvertModelFormat(const std::string&, int)
{
    std::fputs("/formatconvert is not available yet\n", stderr);
    std::exit(1);
}

} // namespace kelvorig
