#include "support/runtime_paths.h"

#include "support/text_case.h"
#include "support/text_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include <climits>

namespace kelvorig {
namespace {

bool PathExists(const std::string& path)
{
    struct stat status;
    return stat(path.c_str(), &status) == 0;
}

bool IsDirectory(std::string path)
{
    if (path.size() > 1 && path.back() == '/')
        path.pop_back();
    struct stat status;
    return stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

// Position of the separator before the last component, or npos for a bare name.
size_t LastSeparator(const std::string& path)
{
    return path.find_last_of('/');
}

std::string LastComponent(const std::string& path)
{
    const size_t separator = LastSeparator(path);
    return separator == std::string::npos ? path : path.substr(separator + 1);
}

// The path one component up; empty when there is nothing above it.
std::string ParentOf(const std::string& path)
{
    const size_t separator = LastSeparator(path);
    if (separator == std::string::npos || path == "/")
        return std::string();
    return separator == 0 ? std::string("/") : path.substr(0, separator);
}

std::string CurrentDirectory()
{
    char buffer[PATH_MAX];
    return getcwd(buffer, sizeof buffer) != nullptr ? std::string(buffer) : std::string();
}

std::string ExecutablePath()
{
    char buffer[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", buffer, sizeof buffer - 1);
    return length > 0 ? std::string(buffer, static_cast<size_t>(length)) : std::string();
}

} // namespace

std::string FixSlashes(const std::string& path)
{
    std::string fixed = path;
    for (char& c : fixed)
    {
        if (c == '\\')
            c = '/';
    }
    return fixed;
}

std::string FindAncestorNamed(const std::string& start, const std::string& name)
{
    for (std::string path = FixSlashes(start); !path.empty() && PathExists(path); path = ParentOf(path))
    {
        if (EqualsIgnoringCase(LastComponent(path), name))
            return path;
    }
    return std::string();
}

std::string FindChildInAncestors(const std::string& start, const std::string& name)
{
    const std::string fixed = FixSlashes(start);
    if (fixed.empty() || !PathExists(fixed))
        return std::string();
    for (std::string parent = ParentOf(fixed); !parent.empty(); parent = ParentOf(parent))
    {
        const std::string candidate = JoinPath(parent, name);
        if (PathExists(candidate))
            return candidate;
    }
    return std::string();
}

// Searches, first match wins: an ancestor of the current directory named "Qyrnix", then
// one named "MainBrumeVR", then a "runtime" beside an ancestor of the executable; each
// gives <root>/vorlax/drivers. Failing all three, a "vorlax" beside an ancestor of the
// current directory is itself the answer.
std::string RuntimeDriversPath()
{
    const std::string current = CurrentDirectory();
    std::string root = FindAncestorNamed(current, "Qyrnix");
    if (root.empty())
        root = FindAncestorNamed(current, "MainBrumeVR");
    if (root.empty())
        root = FindChildInAncestors(ExecutablePath(), "runtime");
    if (root.empty())
    {
        // note: this one is returned without "drivers" appended.
        const std::string candidate = FindChildInAncestors(current, "vorlax");
        if (IsDirectory(candidate))
            return candidate;
    }
    return JoinPath(JoinPath(root, "vorlax"), "drivers");
}

std::string ReadRuntimeFile(const std::string& relativePath)
{
    return ReadTextFile(JoinPath(RuntimeDriversPath(), relativePath));
}

std::string JoinPath(const std::string& a, const std::string& b, char separator)
{
    if (a.empty())
        return b;
    std::string head = a;
    if (head.back() == '/' || head.back() == '\\')
        head.pop_back();
    return head + (separator == 0 ? '/' : separator) + b;
}

} // namespace kelvorig
