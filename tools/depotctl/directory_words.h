// What a directory's result codes mean, in plain words.
#pragma once

#include <cstdint>
#include <string>

namespace depot::ctl {

// A result code as a user understands it: what it says, and what can be done.
struct DirectoryWords {
    std::string text;
    std::string advice;
};

// Returns the words for a code other than 0; the text ends with the code's number.
DirectoryWords WordsFor(std::uint32_t code);

// Returns whether the code says that no server answered.
bool MeansUnreachable(std::uint32_t code);

}  // namespace depot::ctl
