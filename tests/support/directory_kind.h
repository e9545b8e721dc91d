// Which product's server the tests of a program share.
#pragma once

#include <cstdlib>
#include <string>

namespace depot::test {

enum class DirectoryKind { kSlapd, kPair, k389, kSamba };

// Named by DEPOTINTR_DIRECTORY: "slapd", as without it, "pair" (the first of two that replicate
// each other), "389" or "samba".
inline DirectoryKind SharedKind() {
    const char* const named = std::getenv("DEPOTINTR_DIRECTORY");
    const std::string kind = named ? named : "slapd";
    if (kind == "pair") return DirectoryKind::kPair;
    if (kind == "389") return DirectoryKind::k389;
    return kind == "samba" ? DirectoryKind::kSamba : DirectoryKind::kSlapd;
}

// Whether the shared server is another product's than slapd.
inline bool IsOtherProduct() {
    return SharedKind() == DirectoryKind::k389 || SharedKind() == DirectoryKind::kSamba;
}

// The port of a domain controller that is not secured from the start.
inline constexpr unsigned kPlainPort = 389;

}  // namespace depot::test
