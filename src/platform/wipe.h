// Overwriting secrets before their memory is given back.
#pragma once

#include <cstddef>

namespace depot {

// Empties a text. A plain fill would be left out by the compiler, because nothing reads it.
template <class Text>
void Wipe(Text& text) {
    volatile auto* const characters = text.data();
    for (std::size_t at = 0; at < text.size(); ++at) characters[at] = 0;
    text.clear();
}

}  // namespace depot
