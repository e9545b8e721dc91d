// What a move has copied, and the removal of just that.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "directory/ldap_items.h"

namespace depot {

// One file or folder of a source: its DN or its local path, and the digest of a file's bytes.
struct CopiedItem {
    std::string name;
    bool isFolder = false;
    std::size_t parent = 0;  // the index of the folder that holds it; the first one's is its own
    std::optional<Digest> contents = std::nullopt;  // nothing until the bytes were copied
};

// The items of a source, a folder before what it holds.
struct CopiedSource {
    std::vector<CopiedItem> items;

    // Makes the source the file of this name, with these bytes.
    void SetFile(const std::string& name, const void* bytes, std::size_t length) {
        items = {{name, false, 0, DigestOf(bytes, length)}};
    }
};

// What a removal has left of a source.
struct Leftovers {
    std::uint32_t files = 0;
    std::uint32_t folders = 0;
    // Why the first of them stayed; kContentsChanged for a file with other bytes than were copied,
    // LDAP_NOT_ALLOWED_ON_NONLEAF for a folder that holds more than was copied.
    std::uint32_t code = LDAP_SUCCESS;
    // Whether any of them stayed because somebody else changed it meanwhile.
    bool changed = false;
};

// Deletes what was copied as far as it still holds what was copied: a changed file and an entry
// that appeared meanwhile stay, with the folders above them. What is gone already counts as
// deleted. REQUIRES: the directory is connected.
Leftovers RemoveCopiedEntries(CLDAPItems& directory, const CopiedSource& copied);

// The same for local files and folders.
Leftovers RemoveCopiedFiles(const CopiedSource& copied);

// Tells whether the local files and folders hold exactly what was copied.
bool IsAsCopied(const CopiedSource& copied);

// Returns the text that tells a user what stays; empty for nothing.
std::string LeftoversText(const Leftovers& left);

}  // namespace depot
