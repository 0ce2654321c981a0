#include "support/log_writer.h"

#include "support/timestamp_text.h"

#include <cstdarg>

namespace kelvorig {

void LogWriter::Open(FILE* stream, FILE* secondStream, const std::string& sourceName, int level)
{
    stream_ = stream;
    secondStream_ = secondStream;
    sourceName_ = sourceName;
    level_ = level;
    lineOpen_ = false;
    lock_ = std::make_unique<std::mutex>();
}

void LogWriter::Write(int level, bool continuesLine, const char* format, ...)
{
    if (!lock_ || level > level_)
        return;
    std::lock_guard<std::mutex> guard(*lock_);

    const bool continuing = continuesLine && lineOpen_;
    char message[kMaxMessageBytes];
    size_t used = 0;
    if (lineOpen_ && !continuing)
        message[used++] = '\n';

    char prefix[kMaxMessageBytes] = "";
    if (!continuing)
        std::snprintf(prefix, sizeof prefix, "%s - ", TimestampText(true).c_str());
    const int prefixLength = std::snprintf(message + used, sizeof message - used, "%s", prefix);
    used += static_cast<size_t>(prefixLength);
    const size_t textStart = used;

    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(message + used, sizeof message - used, format, arguments);
    va_end(arguments);
    const std::string whole(message);
    const std::string text = whole.substr(textStart);

    std::fputs(whole.c_str(), stream_);
    std::fflush(stream_);
    if (secondStream_ != nullptr)
    {
        std::fprintf(secondStream_, "%s%s - %s", prefix, sourceName_.c_str(), text.c_str());
        std::fflush(secondStream_);
    }
    if (!text.empty())
        lineOpen_ = text.back() != '\n';
}

} // namespace kelvorig
