#include "support/text_file.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include <sys/stat.h>

namespace kelvorig {
namespace {

// Reads every byte of a regular file; empty when it can't be opened or read, or has none.
std::string ReadBytes(const std::string& path)
{
    std::FILE* file = std::fopen(path.c_str(), "rb");
    if (file == nullptr)
        return std::string();

    std::string bytes;
    struct stat status;
    // note: a directory opens fine here, so only regular files are read.
    if (fstat(fileno(file), &status) == 0 && S_ISREG(status.st_mode) && status.st_size > 0)
    {
        bytes.resize(static_cast<size_t>(status.st_size));
        if (std::fread(bytes.data(), 1, bytes.size(), file) != bytes.size())
            bytes.clear();
    }
    std::fclose(file);
    return bytes;
}

} // namespace

std::string ReadTextFile(const std::string& path)
{
    const std::string bytes = ReadBytes(path);
    std::string text;
    text.reserve(bytes.size());
    // A UTF-8 byte-order mark, which some editors write, is no part of the text.
    const size_t start = bytes.starts_with("\xEF\xBB\xBF") ? 3 : 0;
    for (size_t i = start; i < bytes.size(); ++i)
    {
        // A carriage return directly before a line feed is dropped; lone ones stay.
        if (bytes[i] == '\r' && i + 1 < bytes.size() && bytes[i + 1] == '\n')
            continue;
        text.push_back(bytes[i]);
    }
    return text;
}

std::string UnreadableReason(const std::string& path)
{
    // A missing file and an empty one are one case to the user.
    static const std::string kMissingOrEmpty = "file is empty or does not exist";
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(path, error);
    if (error)
        return error == std::errc::no_such_file_or_directory ? kMissingOrEmpty : error.message();
    if (std::filesystem::is_directory(status))
        return "is a directory";
    std::FILE* file = std::fopen(path.c_str(), "rb");
    if (file == nullptr)
        return std::strerror(errno);
    std::fclose(file);
    return kMissingOrEmpty;
}

} // namespace kelvorig
