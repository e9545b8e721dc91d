// Reading and writing the values of profile files through the system's private-profile functions.
//
// Names, values and defaults of more than 32,766 bytes and paths of MAX_PATH characters and more
// never reach the system: a value of such a name counts as missing, and nothing is written.
#pragma once

#include <cstdint>
#include <string>

#include "platform/win32.h"

namespace depot {

// The last error of a write that never reached the system.
inline constexpr DWORD kProfileTextTooLong = ERROR_BUFFER_OVERFLOW;

// Whether the system can be asked to write these texts, the value as it is to be stored.
bool FitsProfile(const char* section, const char* key, const char* stored, const char* file);

// Writes one value so that reading it back gives the same text; a null value deletes the key.
// Returns what WritePrivateProfileStringA returns, and leaves its last error: non-zero when the
// file was written.
int WriteProfileValue(const char* section, const char* key, const char* value, const char* file);

// What is read of a profile: at most `size` - 1 characters of a value, or of its default.
struct ProfileRead {
    const std::string& section;
    const std::string& key;
    const std::string& defaultValue;
    std::uint32_t size;
};

// Returns what GetPrivateProfileStringA gives for a buffer of that size. A large one costs no more
// memory than the value needs.
std::string ReadProfileString(const ProfileRead& read, const std::string& file);

// Returns what GetPrivateProfileIntA gives.
std::uint32_t ReadProfileInt(const std::string& section, const std::string& key,
                             std::uint32_t defaultValue, const std::string& file);

// Returns the terminal type of a profile file of type `code`; 0 asks for the type of the path.
std::uint32_t GetTerminalType(const std::string& path, std::int32_t code);

// Returns the whole file as text, or an empty text when it cannot be opened. A file that another
// program holds is tried again for three seconds.
//
// Kept: the file is read in blocks of 519 bytes, and what follows a NUL in its block is lost.
// Relied on by: copies of profile files, which are text by definition.
std::string ReadWholeFile(const std::string& path);

}  // namespace depot
