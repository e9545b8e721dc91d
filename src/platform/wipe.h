// Overwriting secrets before their memory is given back.
#pragma once

#include <cstddef>

#include "platform/not_copied.h"

namespace depot {

// Empties a text, what longer ones left behind its end included. A plain fill would be left out by
// the compiler, because nothing reads it.
template <class Text>
void Wipe(Text& text) noexcept {
    // Within the capacity nothing is allocated. A text that was moved from has some room.
    text.resize(text.capacity());  // NOLINT(clang-analyzer-cplusplus.Move)
    volatile auto* const characters = text.data();
    for (std::size_t at = 0; at < text.size(); ++at) characters[at] = 0;
    text.clear();
}

// Wipes a text that is in use at the end of a scope.
template <class Text>
class WipeAtEnd : NotCopied {
public:
    explicit WipeAtEnd(Text& text) : text_(text) {}
    ~WipeAtEnd() { Wipe(text_); }

private:
    Text& text_;
};

}  // namespace depot
