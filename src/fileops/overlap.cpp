#include "fileops/overlap.h"

namespace depot {

ItemIdentity CompareItems(const StorePath& one, const StorePath& other) {
    const bool isOneSpace = one.store->Space() == other.store->Space();
    if (isOneSpace && one.store->IsSame(one.path, other.path)) return ItemIdentity::kSame;
    ItemIdentifiers first, second;
    const Result seen = other.store->ReadIdentifiers(other.path, second);
    if (seen.Is(Reason::kMissing)) return ItemIdentity::kUnseen;
    if (!seen || !one.store->ReadIdentifiers(one.path, first)) return ItemIdentity::kUnknown;
    for (std::size_t index = 0; index < first.size(); ++index) {
        if (first[index].empty() || second[index].empty()) continue;
        return first[index] == second[index] ? ItemIdentity::kSame : ItemIdentity::kOther;
    }
    return ItemIdentity::kUnknown;
}

bool Overlaps(const StorePath& from, const StorePath& to, SourceFate fate) {
    const Store& names = *from.store;
    return names.IsSame(to.path, from.path) || names.IsInside(to.path, from.path) ||
           (fate == SourceFate::kGoes && names.IsInside(from.path, to.path));
}

ItemIdentity FindOverlap(const StorePath& from, const StorePath& to, SourceFate fate) {
    if (from.store->IsLocal() != to.store->IsLocal()) return ItemIdentity::kOther;
    if (Overlaps(from, to, fate)) return CompareItems(from, {to.store, from.path});
    const std::optional<PathsInDoubt> doubt = from.store->FindDoubt(from.path, to.path);
    if (!doubt) return ItemIdentity::kOther;
    // A copy may be made in a folder above its source.
    const bool isAbove = doubt->first != from.path;
    if (isAbove && fate == SourceFate::kStays) return ItemIdentity::kOther;
    return CompareItems({from.store, doubt->first}, {to.store, doubt->second});
}

bool AreOneItem(Store& store, PathPair paths) {
    if (store.IsSame(paths.from, paths.to)) return true;
    return store.FindDoubt(paths.from, paths.to) &&
           CompareItems({&store, paths.from}, {&store, paths.to}) == ItemIdentity::kSame;
}

}  // namespace depot
