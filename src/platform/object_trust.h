// Whether a named object that somebody else made may be used: the decision, without a look at the
// system.
#pragma once

#include <cstdint>
#include <string_view>

namespace depot {

// Mandatory integrity levels, as the last number of their identifiers gives them.
inline constexpr std::uint32_t kMediumLevel = 0x2000;
inline constexpr std::uint32_t kHighLevel = 0x3000;

// Security identifiers are compared as the bytes that the system keeps of them.
// They lie as the system wants them.
alignas(4) inline constexpr char kSystemBytes[] = "\1\1\0\0\0\0\0\5\x12\0\0";
alignas(4) inline constexpr char kAdministratorsBytes[] = "\1\2\0\0\0\0\0\5\x20\0\0\0\x20\2\0";
inline constexpr std::string_view kSystemAccount(kSystemBytes, sizeof(kSystemBytes));
inline constexpr std::string_view kAdministrators(kAdministratorsBytes,
                                                  sizeof(kAdministratorsBytes));

// For whom a thread works.
struct Subject {
    std::string_view user;         // empty when it cannot be found out
    bool isAdministrator = false;  // and may use that
    std::uint32_t level = kMediumLevel;
};

// Whose an object is.
struct ObjectOrigin {
    std::string_view owner;  // empty when it has none or it cannot be read
    bool hasLevel = false;   // whether it carries an integrity level
    std::uint32_t level = kMediumLevel;
    // Whether the system was asked and has neither recorded. Windows gives every object an owner; a
    // system that does not cannot say whose an object is.
    bool isUnrecorded = false;
};

// Returns null when the subject may believe what is in the object, else why not. The owner has to
// be the subject's user, the system, or for an administrator the administrators, and the object's
// level no lower than the subject's. Of an object of which nothing is recorded nothing is asked.
// One without a level counts as medium, but as high enough where only the system or an
// administrator could give it its owner.
const char* ReasonForDistrust(const ObjectOrigin& object, const Subject& subject);

// Returns the level in the bytes of a level's identifier, the lowest for anything else.
std::uint32_t LevelIn(std::string_view identifier);

}  // namespace depot
