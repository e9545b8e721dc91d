// Passwords, of which no copy stays in memory that is given back.
#pragma once

#include <string>
#include <string_view>
#include <utility>

#include "platform/wipe.h"

namespace depot {

// A text that is wiped whenever it leaves its memory: at the end of its life, before another one
// takes its place, and where it is moved away. Short ones lie in the object, longer ones on the
// heap; both are covered.
template <class Character>
class BasicSecret {
public:
    using Text = std::basic_string<Character>;
    using View = std::basic_string_view<Character>;

    BasicSecret() = default;
    // A text that may be moved is wiped where it was.
    BasicSecret(Text&& text) noexcept : text_(std::move(text)) { Wipe(text); }
    BasicSecret(const Text& text) : text_(text) {}
    BasicSecret(const Character* text) : text_(text) {}
    explicit BasicSecret(View text) : text_(text) {}

    BasicSecret(const BasicSecret&) = default;
    BasicSecret(BasicSecret&& other) noexcept : text_(std::move(other.text_)) { Wipe(other.text_); }
    BasicSecret& operator=(const BasicSecret& other) {
        if (this == &other) return *this;
        Wipe(text_);
        text_ = other.text_;
        return *this;
    }
    BasicSecret& operator=(BasicSecret&& other) noexcept {
        if (this == &other) return *this;
        Wipe(text_);
        text_ = std::move(other.text_);
        Wipe(other.text_);
        return *this;
    }
    ~BasicSecret() { Wipe(text_); }

    // As long as the secret lives and is not changed.
    operator const Text&() const { return text_; }
    const Text& Plain() const { return text_; }

    bool empty() const { return text_.empty(); }
    void clear() { Wipe(text_); }

    friend bool operator==(const BasicSecret& one, const BasicSecret& other) {
        return one.text_ == other.text_;
    }

private:
    Text text_;
};

using SecretText = BasicSecret<char>;
using WideSecret = BasicSecret<wchar_t>;

}  // namespace depot
