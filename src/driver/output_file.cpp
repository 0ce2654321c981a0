#include "driver/output_file.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <ostream>

#include <fcntl.h>
#include <unistd.h>

namespace kelvorig {
namespace {

bool Refuse(const std::string& path, int error)
{
    std::fprintf(stderr, "cannot write %s: %s\n", path.c_str(), std::strerror(error));
    return false;
}

// The whole text, then the disk: a full disk may show only at the flush.
bool WriteAll(int fd, const std::string& text)
{
    size_t done = 0;
    while (done < text.size())
    {
        const ssize_t written = write(fd, text.data() + done, text.size() - done);
        if (written < 0)
        {
            if (errno == EINTR)
                continue;
            return false;
        }
        done += static_cast<size_t>(written);
    }
    return fsync(fd) == 0;
}

} // namespace

bool WriteOutputFile(const std::string& path, const std::string& text)
{
    // The rename would replace a file the user has made read-only; refuse as an open would.
    if (access(path.c_str(), F_OK) == 0 && access(path.c_str(), W_OK) != 0)
        return Refuse(path, errno);

    // A short name beside the file, so that any name that can be written can be written.
    const std::filesystem::path target(path);
    const std::string temporary = (target.parent_path() / (".kelvorig-" + std::to_string(getpid()) + ".tmp")).string();
    const int fd = open(temporary.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
    if (fd < 0)
        return Refuse(path, errno);
    int error = 0;
    if (!WriteAll(fd, text))
        error = errno;
    if (close(fd) != 0 && error == 0)
        error = errno;
    if (error == 0 && rename(temporary.c_str(), path.c_str()) != 0)
        error = errno;
    if (error == 0)
        return true;
    unlink(temporary.c_str());
    return Refuse(path, error);
}

bool ReportStandardOutput(std::FILE* out)
{
    errno = 0;
    if (std::fflush(out) == 0 && !std::ferror(out))
        return true;
    return Refuse("standard output", errno != 0 ? errno : EIO);
}

bool ReportStandardOutput(std::ostream& out)
{
    // note: errno is not cleared here: a stream that failed earlier keeps it from its write.
    if (out.flush())
        return true;
    return Refuse("standard output", errno != 0 ? errno : EIO);
}

} // namespace kelvorig
