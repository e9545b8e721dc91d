// What helps where a directory refuses, for those who read a message afterwards.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace depot {

// Returns words for a result code, in the language of the user; nothing for codes that have none.
using DirectoryHelp = std::optional<std::string> (*)(std::uint32_t code);

// Has the event log hold the words behind a directory's message. Called once, before any other
// thread uses the component; null, as at the beginning, adds nothing.
void InstallDirectoryHelp(DirectoryHelp help);

// Returns the message, with the words behind it where no person sees the message itself.
std::string WithHelpWhereUnseen(const std::string& message, std::uint32_t code);

}  // namespace depot
