#include "support/text_case.h"

#include <algorithm>
#include <cctype>

namespace kelvorig {
namespace {

char Lower(char c)
{
    return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
}

} // namespace

std::string ToLowerCopy(const std::string& text)
{
    std::string lower = text;
    std::transform(lower.begin(), lower.end(), lower.begin(), Lower);
    return lower;
}

bool EqualsIgnoringCase(std::string_view a, std::string_view b)
{
    return a.size() == b.size() &&
           std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) { return Lower(x) == Lower(y); });
}

bool EndsWithIgnoringCase(std::string_view text, std::string_view ending)
{
    return text.size() >= ending.size() && EqualsIgnoringCase(text.substr(text.size() - ending.size()), ending);
}

} // namespace kelvorig
