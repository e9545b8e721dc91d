// The place where bytes are kept that could not be stored where they belong.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "config/profile_edit.h"

namespace depot {

// Below the user's local application data.
inline constexpr char kRecoveredFolder[] = "Quillon\\Farrow\\Recovered";

// Writes the bytes into a new file of that folder, which is created when it is missing. The file is
// named after `name` with the date, the time and a number: "office 2024-05-31 14-07-09 (1).kra"; a
// name that no local file can have becomes "file". Returns the new file's path; empty when not all
// bytes could be kept. What is kept is on the disk itself: nothing else may hold it afterwards.
std::string KeepRecovered(const std::string& name, const void* bytes, std::size_t length);

// The full path of that folder, which may not exist yet; empty when the shell knows no place for
// it.
std::string RecoveredFolder();

// KeepRecovered for those who must not ask the shell any more: `folder` is what RecoveredFolder
// returned before.
std::string KeepRecoveredIn(const std::string& folder, const std::string& name, const void* bytes,
                            std::size_t length);

// Keeps a profile's bytes with edits that the profile itself could not take, as far as there is
// room for them here.
std::string KeepRecoveredProfile(const std::string& folder, const std::string& name,
                                 const std::vector<std::uint8_t>& bytes,
                                 const std::vector<ProfileEdit>& edits);

}  // namespace depot
