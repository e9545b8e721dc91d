#include "platform/result.h"

#include <utility>

namespace depot {

Error::Error(Reason why) : reason(why) {}

Error::Error(Reason why, CodeKind whose, std::uint32_t number, std::string message)
    : reason(why), kind(whose), code(number), text(std::move(message)) {}

Error::Error(const Error& other) = default;
Error::Error(Error&& other) noexcept = default;
Error& Error::operator=(const Error& other) = default;
Error& Error::operator=(Error&& other) noexcept = default;
Error::~Error() = default;

void ErrorDeleter::operator()(Error* error) const {
    std::default_delete<Error>()(error);
}

Result::Result(Error error) : error_(std::make_unique<Error>(std::move(error)).release()) {}

Result::Result(const Result& other)
    : error_(other.error_ ? std::make_unique<Error>(*other.error_).release() : nullptr) {}

Result& Result::operator=(const Result& other) {
    return *this = Result(other);
}

std::string Result::Text() const {
    return error_ ? error_->text : std::string();
}

int Result::AsFlag(std::string* errorText) const {
    if (error_ && errorText != nullptr && !error_->text.empty()) *errorText = error_->text;
    return IsDone() ? 1 : 0;
}

}  // namespace depot
