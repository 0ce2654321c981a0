#include "support/text_case.h"

#include <cctype>

namespace kelvorig {

std::string ToLowerCopy(const std::string& text)
{
    std::string lower = text;
    for (char& c : lower)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return lower;
}

} // namespace kelvorig
