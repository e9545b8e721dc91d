// Writing a value of a profile file so that it costs nothing else that the file held, neither by a
// disk without room nor by a code page that is not the file's.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/win32.h"

namespace depot {

// What a client wants a key to hold; no value deletes the key.
struct ProfileEdit {
    std::string section;
    std::string key;
    std::optional<std::string> value;
};

struct EditOutcome {
    // Why the file does not hold the edit.
    DWORD error = ERROR_SUCCESS;
    // Why nothing was written although nothing is wrong with the file: kProfileTextTooLong, or
    // ERROR_NO_UNICODE_TRANSLATION where the edit could not be read back.
    DWORD refusal = ERROR_SUCCESS;
    // What the file held before, where it was cut and could not be put back.
    std::optional<std::vector<std::uint8_t>> lost{};
};

// Whether the volume of a file has so much room that no write cuts the file. A look costs a tenth
// of a write: where there is plenty it holds for a second.
class AmpleRoom {
public:
    bool IsThere(const std::string& file);

private:
    ULONGLONG plentyUntil_ = 0;
};

// Writes one value through the system's profile functions, which write the whole file again and cut
// it where the disk is full; some systems call even that a success. A file that lost anything but
// the old value is put back as it was.
//
// Some systems convert the whole file by the program's code page and back on that way. A file whose
// bytes would not survive that never takes it: the value is written into its bytes, and taken back
// where the system does not read it there.
//
// `room` is that of the file's earlier edits. Throws only before anything is written.
EditOutcome EditProfile(const ProfileEdit& edit, const std::string& file, AmpleRoom& room);

// What a client wrote to a working copy since the first write that the copy does not hold. Such a
// copy is never whole again: what a later, successful write leaves still lacks the earlier one.
struct RefusedEdits {
    DWORD error = ERROR_SUCCESS;  // of the first one; without it there are none
    std::vector<ProfileEdit> edits;
    // What the copy last held whole, where the copy itself was cut.
    std::optional<std::vector<std::uint8_t>> whole;
};

}  // namespace depot
