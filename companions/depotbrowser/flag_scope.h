// Marks what is being done, for as long as it is.
#pragma once

#include "platform/not_copied.h"

#include <utility>

namespace depot {

// Sets a flag until its end and then gives it the value that it had.
class FlagScope : NotCopied {
public:
    explicit FlagScope(bool& flag) : flag_(flag), before_(std::exchange(flag, true)) {}
    ~FlagScope() { flag_ = before_; }

private:
    bool& flag_;
    bool before_;
};

}  // namespace depot
