// What is neither copied nor moved.
#pragma once

namespace depot {

// The base of owners that stand for one thing, such as a scope, a lock or a connection.
class NotCopied {
protected:
    constexpr NotCopied() = default;
    ~NotCopied() = default;

public:
    NotCopied(const NotCopied&) = delete;
    NotCopied& operator=(const NotCopied&) = delete;
};

}  // namespace depot
