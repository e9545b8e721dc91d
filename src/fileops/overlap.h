// Whether the two places of a transfer are one, or one holds the other.
#pragma once

#include <cstdint>

#include "store/store.h"

namespace depot {

// What two stores show of the items of two paths.
enum class ItemIdentity : std::uint8_t {
    kSame,
    kOther,
    kUnseen,  // the second store shows no item of the path
    kUnknown  // at least one of the two shows no identifier that the other one shows as well
};

// Compares two items: two names of one server, and two servers that replicate each other, show the
// same identifiers. REQUIRES: both stores are open.
ItemIdentity CompareItems(const StorePath& one, const StorePath& other);

// Whether the names alone say that the target is the source, lies in it or, for a source that
// is moved, is a folder above it, which is to hold what is removed with the source.
bool Overlaps(const StorePath& from, const StorePath& to, SourceFate fate);

// What the stores show of that where the names say so, or leave it open: kOther where source and
// target are apart. REQUIRES: both stores are open.
ItemIdentity FindOverlap(const StorePath& from, const StorePath& to, SourceFate fate);

// Whether both paths of one open store name one item, by whatever names: what is moved from one to
// the other is renamed.
bool AreOneItem(Store& store, PathPair paths);

}  // namespace depot
