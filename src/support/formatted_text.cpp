#include "support/formatted_text.h"

#include <cstdarg>
#include <cstdio>

namespace kelvorig {
namespace {

void AppendVFormatted(std::string& text, const char* format, va_list arguments)
{
    // note: most texts fit the buffer, so a report row costs one formatting pass and no allocation.
    char buffer[256];
    va_list again;
    va_copy(again, arguments);
    const int length = std::vsnprintf(buffer, sizeof buffer, format, arguments);
    if (length >= 0 && static_cast<size_t>(length) < sizeof buffer)
        text.append(buffer, static_cast<size_t>(length));
    else if (length >= 0)
    {
        const size_t end = text.size();
        text.resize(end + static_cast<size_t>(length) + 1);
        std::vsnprintf(text.data() + end, static_cast<size_t>(length) + 1, format, again);
        text.resize(end + static_cast<size_t>(length));
    }
    va_end(again);
}

} // namespace

void AppendFormatted(std::string& text, const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    AppendVFormatted(text, format, arguments);
    va_end(arguments);
}

std::string Formatted(const char* format, ...)
{
    std::string text;
    va_list arguments;
    va_start(arguments, format);
    AppendVFormatted(text, format, arguments);
    va_end(arguments);
    return text;
}

} // namespace kelvorig
