#include "directory/refused_sizes.h"

#include "platform/directory_client.h"
#include "platform/text.h"

namespace depot {

std::optional<Error> RefusedName(std::uint32_t code, std::string_view name,
                                 std::size_t characters) {
    // Domain controllers of different makers.
    const bool isOfAValue = code == LDAP_CONSTRAINT_VIOLATION || code == LDAP_INVALID_SYNTAX;
    if (!isOfAValue || characters <= kLongestCommonName) return std::nullopt;
    const auto count = static_cast<std::uint32_t>(characters);
    return Error{Reason::kBadName, CodeKind::kDirectory, code,
                 Concatenate({"\"", name, "\": the directory does not take this name of ",
                              NumberText(count), " characters. Some take 64 at most."})};
}

Error RefusedContents(std::string_view name, std::uint32_t bytes) {
    return {Reason::kRefused, CodeKind::kDirectory, LDAP_ADMIN_LIMIT_EXCEEDED,
            Concatenate({"\"", name, "\": the directory ended the connection over these ",
                         NumberText(bytes), " bytes. The file may be larger than it takes."})};
}

}  // namespace depot
