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

// Returns what can be done about a code, as a user is told it: in the language of the user's texts
// where these have it and are not English, else the advice of its words.
std::string HelpFor(std::uint32_t code, const std::string& advice);

// Returns whether the code says that no server answered.
bool MeansUnreachable(std::uint32_t code);

}  // namespace depot::ctl
