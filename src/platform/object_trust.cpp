#include "platform/object_trust.h"

#include <algorithm>
#include <limits>

namespace depot {
namespace {

// A revision, a count, and an authority of six bytes; then numbers of four bytes each.
constexpr std::size_t kHeaderBytes = 8;
constexpr std::size_t kNumberBytes = 4;

bool IsPrivileged(std::string_view owner, const Subject& subject) {
    return owner == kSystemAccount || (subject.isAdministrator && owner == kAdministrators);
}

std::uint32_t LevelOf(const ObjectOrigin& object, const Subject& subject) {
    if (object.hasLevel) return object.level;
    // No process without these rights can make an object theirs.
    return IsPrivileged(object.owner, subject) ? std::numeric_limits<std::uint32_t>::max()
                                               : kMediumLevel;
}

}  // namespace

const char* ReasonForDistrust(const ObjectOrigin& object, const Subject& subject) {
    if (subject.user.empty()) return "the user is not known";
    if (object.isUnrecorded) return nullptr;
    if (object.owner.empty()) return "its owner is not known";
    if (object.owner != subject.user && !IsPrivileged(object.owner, subject)) {
        return "it belongs to another user";
    }
    if (LevelOf(object, subject) < subject.level) return "its integrity level is lower";
    return nullptr;
}

std::uint32_t LevelIn(std::string_view identifier) {
    if (identifier.size() < kHeaderBytes + kNumberBytes) return 0;
    const std::string_view last = identifier.substr(identifier.size() - kNumberBytes);
    std::uint32_t level = 0;
    std::for_each(last.rbegin(), last.rend(),
                  [&](char byte) { level = level << 8 | static_cast<unsigned char>(byte); });
    return level;
}

}  // namespace depot
