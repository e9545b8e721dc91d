// Existing files that are looked at and removed while no other program can reach them.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/handles.h"

namespace depot {

// An existing file that is open in no other place while this object lives, in no process and for no
// purpose. Links are not followed.
class HeldFile {
public:
    // Opens the file; afterwards the object is false when there is none, or when anybody else has
    // it open.
    explicit HeldFile(const std::string& path);

    explicit operator bool() const { return file_ != nullptr; }
    // Why it could not be opened.
    DWORD Error() const { return error_; }

    // Whether it is neither a link nor anything else that stands for another place.
    bool IsPlainFile() const;
    bool IsOwnedByUser() const;

    // Returns all bytes; nothing when there are more than `limit` or when they cannot be read.
    std::optional<std::vector<std::uint8_t>> Read(std::size_t limit) const;

    // Replaces bytes in the midst of the file.
    bool Write(std::size_t offset, std::span<const std::uint8_t> bytes) const;

    // Has the file, and no other that may bear its name by then, vanish with this object.
    bool Delete() const;

private:
    UniqueHandle file_;
    DWORD error_ = ERROR_SUCCESS;
};

// Writes bytes to a place in an open file; returns whether all of them were written.
bool WriteAt(HANDLE file, std::size_t offset, std::span<const std::uint8_t> bytes);

// Decides whether an open file vanishes once no program has it open any more, however that comes
// about.
bool VanishesWhenClosed(HANDLE file, bool vanishes);

}  // namespace depot
