#pragma once

#include <cstdio>
#include <memory>
#include <mutex>
#include <string>

namespace kelvorig {

// Line-oriented log: each line starts "<timestamp with milliseconds> - ". A message that
// does not end in a line feed leaves its line open; the next message either continues it
// (no prefix) or first closes it with a line feed. Thread-safe: one lock per write.
class LogWriter
{
public:
    static constexpr size_t kMaxMessageBytes = 2048;

    // A writer that is not open drops every message.
    LogWriter() = default;

    // `secondStream` may be null; it receives "<prefix><sourceName> - <text>" for each
    // message. Messages above `level` are dropped.
    void Open(FILE* stream, FILE* secondStream, const std::string& sourceName, int level);

    void Write(int level, bool continuesLine, const char* format, ...)
        __attribute__((format(printf, 4, 5)));

private:
    FILE* stream_ = nullptr;
    FILE* secondStream_ = nullptr;
    std::string sourceName_;
    int level_ = 0;
    bool lineOpen_ = false;
    std::unique_ptr<std::mutex> lock_;
};

} // namespace kelvorig
