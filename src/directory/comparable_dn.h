// Comparing names of entries as text, without asking a server.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace depot {

// Returns the text by which two names of entries compare: in lower case, with each run of blanks as
// one and none at the ends of names and values, and with escapes in one form. Servers match names
// in this way.
std::string ComparableDN(std::string_view dn);

// Whether servers that match names in this way take both for one name. A server may know more
// rules: of width, composition and the like.
bool AreOneName(std::string_view name, std::string_view other);

// Whether servers differ in what else they take for this name: it is not of ASCII alone.
bool HasVariants(std::string_view name);

// Two entries at one level of a directory.
struct EntriesInDoubt {
    std::string first, second;
};

// Returns the two that a server has to be asked about, whether they are one, to know whether one of
// the given entries is the other or lies below it; nothing where the names alone show it.
//
// Each is the entry that was given or one above it.
std::optional<EntriesInDoubt> FindDoubt(std::string_view dn, std::string_view other);

// Returns the name of the entry above, as it is spelled in `dn`; empty where there is none.
std::string_view ParentDN(std::string_view dn);

}  // namespace depot
