// What a move has copied, and the removal of just that.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "store/store.h"

namespace depot {

// One file or folder of a source, by its path in its store, and the digest of a file's bytes.
struct CopiedItem {
    std::string path;
    bool isFolder = false;
    std::size_t parent = 0;  // the index of the folder that holds it; the first one's is its own
    std::optional<Digest> contents = std::nullopt;  // nothing until the bytes were copied
    std::uint32_t length = 0;                       // of these

    void SetContents(const FileBuffer& copied) {
        contents = DigestOf(copied);
        length = copied.length;
    }
};

// The items of a source, a folder before what it holds.
struct CopiedSource {
    std::vector<CopiedItem> items;

    // Makes the source the file of this path, with these bytes.
    void SetFile(const std::string& path, const FileBuffer& contents) {
        items = {{path}};
        items.front().SetContents(contents);
    }
    // Makes the source this tree, of which nothing was copied yet.
    void SetTree(const Tree& tree);
};

// What a removal has left of a source.
struct Leftovers {
    std::uint32_t files = 0;
    std::uint32_t folders = 0;
    // Why the first of them stayed; kChanged for a file with other bytes than were copied,
    // kNotEmpty for a folder that holds more than was copied.
    Result why{};
    // Whether any of them stayed because somebody else changed it meanwhile.
    bool changed = false;
};

// Removes what was copied as far as it still holds what was copied: a changed file and an entry
// that appeared meanwhile stay, with the folders above them. What is gone already counts as
// removed. REQUIRES: the store is open.
Leftovers RemoveCopied(Store& store, const CopiedSource& copied);

// Whether the source holds exactly what was copied. REQUIRES: the store is open.
bool IsAsCopied(Store& store, const CopiedSource& copied);

// Returns the text for the user about what stays; empty for nothing.
std::string LeftoversText(const Leftovers& left);

// The failure of a move whose source stays in part; nothing where all of it is gone.
Result LeftoversResult(const Leftovers& left);

}  // namespace depot
