// A script by which a prompt completes the program's commands and options.
#pragma once

#include <string>
#include <vector>

namespace depot::ctl {

// A word that may follow, and what the help says of it.
struct CompletedWord {
    std::string word;
    std::string help;
};

// A command by the words that name it, such as "depots add"; empty for the program itself.
struct CompletedCommand {
    std::string path;
    std::vector<CompletedWord> words;
};

// Returns the script for PowerShell. Of a word that a command has twice the first one counts.
std::string PowerShellCompletion(const std::vector<CompletedCommand>& commands);

}  // namespace depot::ctl
