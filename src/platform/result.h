// What an operation came to: done, or why not.
//
// A failure is described where it happens: by its reason, in the terms that callers decide by, by
// the code of the system or the directory, and by the text that its user sees.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace depot {

enum class Reason : std::uint8_t {
    kMissing,      // nothing has that name
    kExists,       // something has that name and stays
    kChanged,      // it is not what the caller has seen
    kNotEmpty,     // it holds others
    kUnseen,       // it is there, but what it holds or is does not show
    kBadName,      // the place cannot hold such a name
    kSharedName,   // two things would become one
    kIncomplete,   // something had to be left out
    kStopped,      // the user stopped it
    kUnreachable,  // the place does not answer
    kInvalid,      // the arguments name nothing that could be done
    kRefused,      // any other refusal of the system or the directory
};

// Whose number a code is.
enum class CodeKind : std::uint8_t { kSystem, kDirectory };

// What failed. Its members that the compiler would make are in the source: failures are rare, and
// their clean-up would stand at every call.
struct Error {
    explicit Error(Reason why = Reason::kRefused);
    Error(Reason why, CodeKind whose, std::uint32_t number, std::string message = {});
    Error(const Error& other);
    Error(Error&& other) noexcept;
    Error& operator=(const Error& other);
    Error& operator=(Error&& other) noexcept;
    ~Error();

    Reason reason;
    CodeKind kind = CodeKind::kSystem;
    std::uint32_t code = 0;
    std::string text;  // for the user, in the ANSI code page; may be empty
};

struct ErrorDeleter {
    void operator()(Error* error) const;
};

// Must be looked at. A result that is not a failure is done.
class [[nodiscard]] Result {
public:
    Result() = default;
    // Not explicit: a failing operation returns its error.
    Result(Error error);
    Result(const Result& other);
    Result(Result&&) noexcept = default;
    Result& operator=(const Result& other);
    Result& operator=(Result&&) noexcept = default;
    ~Result() = default;

    bool IsDone() const { return !error_; }
    explicit operator bool() const { return IsDone(); }

    // REQUIRES: the operation failed.
    const Error& Why() const { return *error_; }
    bool Is(Reason reason) const { return error_ && error_->reason == reason; }

    // The text for the user; empty when the operation was done.
    std::string Text() const;

    // What operations of a given signature return: 1 or 0, with the text of a failure, unless it
    // is empty, in `errorText`, which may be null.
    int AsFlag(std::string* errorText) const;

private:
    std::unique_ptr<Error, ErrorDeleter> error_;  // null when the operation was done
};

}  // namespace depot
