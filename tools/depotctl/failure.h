// How a command fails, and what its caller receives.
#pragma once

#include <exception>
#include <string>
#include <utility>

namespace depot::ctl {

enum class ExitCode { kDone = 0, kRefused = 1, kUsage = 2, kUnreachable = 3, kFailed = 4 };

// Ends a command with a message of one line, in UTF-8, for its user.
class CommandFailure : public std::exception {
public:
    CommandFailure(ExitCode code, std::string message)
        : code_(code), message_(std::move(message)) {}

    ExitCode Code() const { return code_; }
    const char* what() const noexcept override { return message_.c_str(); }

private:
    ExitCode code_;
    std::string message_;
};

[[noreturn]] inline void Refuse(const std::string& message) {
    throw CommandFailure(ExitCode::kRefused, message);
}

// Thrown when the output has no reader any more: there is nothing left to do or to report.
struct OutputClosed {};

}  // namespace depot::ctl
