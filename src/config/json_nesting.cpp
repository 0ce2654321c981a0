#include "config/json_nesting.h"

namespace kelvorig {

bool NestedTooDeep(std::string_view text)
{
    int depth = 0;
    bool inString = false;
    for (size_t i = 0; i < text.size(); ++i)
    {
        const char c = text[i];
        if (inString)
        {
            if (c == '\\')
                ++i; // the escaped character, a quote among them
            else if (c == '"')
                inString = false;
        }
        else if (c == '"')
            inString = true;
        else if ((c == '[' || c == '{') && ++depth > kMaxJsonNesting)
            return true;
        else if (c == ']' || c == '}')
            --depth;
    }
    return false;
}

} // namespace kelvorig
