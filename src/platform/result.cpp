#include "platform/result.h"

#include <utility>

namespace depot {
namespace {

std::unique_ptr<Error> CopyOf(const std::unique_ptr<Error>& error) {
    return error ? std::make_unique<Error>(*error) : nullptr;
}

}  // namespace

Result::Result(Error error) : error_(std::make_unique<Error>(std::move(error))) {}

Result::Result(const Result& other) : error_(CopyOf(other.error_)) {}

Result& Result::operator=(const Result& other) {
    error_ = CopyOf(other.error_);
    return *this;
}

std::string Result::Text() const {
    return error_ ? error_->text : std::string();
}

int Result::AsFlag(std::string* errorText) const {
    if (error_ && errorText != nullptr && !error_->text.empty()) *errorText = error_->text;
    return IsDone() ? 1 : 0;
}

}  // namespace depot
