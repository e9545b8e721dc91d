// By what a file is recognised without being opened.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/win32.h"

namespace depot {

// A file as its folder shows it.
struct FileState {
    std::uint64_t size = 0;
    std::uint64_t time = 0;  // of its last write, as a FILETIME
    friend bool operator==(const FileState&, const FileState&) = default;
};

// Returns the state of a file; nothing where there is none.
std::optional<FileState> StateOf(const std::string& path);

// Whether what is written there from now on will have another state, also where the file system's
// clock has long ticks.
bool IsSettled(const FileState& state);

// Gives a file that is open for writing a time of its last write, about now, that what others write
// in its place will not have. Returns its state; nothing where the file system keeps no such times.
std::optional<FileState> GiveOwnState(HANDLE file);

}  // namespace depot
