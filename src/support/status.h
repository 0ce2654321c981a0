#pragma once

#include <string>
#include <utility>

namespace kelvorig {

// How a step that can fail ended. Only the driver prints a status's message and turns its code
// into the exit status (kFailed: 1, kInterrupted: 130); library code returns it and says nothing.
enum class StatusCode
{
    kOk,
    kFailed,
    kInterrupted
};

class [[nodiscard]] Status
{
public:
    Status() = default; // success

    // `message` is the whole text to show, each line ending in '\n'; it may be empty when the
    // user has already been told (an interrupt) or there is nothing more to say.
    static Status Failure(std::string message) { return Status(StatusCode::kFailed, std::move(message)); }
    static Status Interrupted(std::string message = {}) { return Status(StatusCode::kInterrupted, std::move(message)); }

    bool ok() const { return code_ == StatusCode::kOk; }
    explicit operator bool() const { return ok(); }
    StatusCode code() const { return code_; }
    const std::string& message() const { return message_; }

private:
    Status(StatusCode code, std::string message) : code_(code), message_(std::move(message)) {}

    StatusCode code_ = StatusCode::kOk;
    std::string message_;
};

} // namespace kelvorig
