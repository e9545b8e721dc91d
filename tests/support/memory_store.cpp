#include "support/memory_store.h"

#include <memory>
#include <set>

#include "directory/dn.h"
#include "platform/local_name.h"
#include "platform/paths.h"
#include "platform/text.h"
#include "store/tree.h"

namespace depot::test {
namespace {

FileBuffer BufferOf(const std::string& bytes) {
    FileBuffer buffer = {static_cast<std::uint32_t>(bytes.size()),
                         std::make_unique<std::uint8_t[]>(bytes.size() + kFileBufferReserve)};
    bytes.copy(reinterpret_cast<char*>(buffer.bytes.get()), bytes.size());
    return buffer;
}

std::string BytesOf(const FileBuffer& buffer) {
    return {reinterpret_cast<const char*>(buffer.bytes.get()), buffer.length};
}

}  // namespace

std::string MemoryStore::Key(const std::string& path) {
    return ToLower(RemoveTrailingBackslash(path));
}

Error MemoryStore::Failure(Reason reason, const std::string& path) {
    return {reason, CodeKind::kSystem, ERROR_GEN_FAILURE, "memory: " + path};
}

Result MemoryStore::Check(const std::string& path) const {
    if (open_ == 0) return Failure(Reason::kInvalid, path);
    return failure_ ? Result(Failure(*failure_, path)) : Result();
}

const MemoryStore::Item* MemoryStore::Find(const std::string& path) const {
    const auto found = items_.find(Key(path));
    return found == items_.end() ? nullptr : &found->second;
}

bool MemoryStore::IsFolder(const std::string& path) const {
    const Item* const item = Find(path);
    return item != nullptr && !item->bytes;
}

MemoryStore::Items::iterator MemoryStore::FirstInside(const std::string& folder) {
    const std::string prefix = Key(folder) + "\\";
    const auto found = items_.lower_bound(prefix);
    return found != items_.end() && found->first.starts_with(prefix) ? found : items_.end();
}

bool MemoryStore::IsEmpty(const std::string& folder) {
    return FirstInside(folder) == items_.end();
}

Result MemoryStore::Open(bool& opened) {
    opened = false;
    if (failure_) return Failure(*failure_, kRoot);
    opened = true;
    ++open_;
    return {};
}

std::string MemoryStore::ChildPath(const std::string& folder, const std::string& name,
                                   bool /*isFolder*/) const {
    return JoinPath(folder, name);
}

bool MemoryStore::CanHold(const std::string& name) const {
    return IsSafeLocalName(name);
}

bool MemoryStore::IsSame(const std::string& path, const std::string& other) const {
    return Key(path) == Key(other);
}

bool MemoryStore::IsInside(const std::string& path, const std::string& folder) const {
    return Key(path).starts_with(Key(folder) + "\\");
}

TakePath MemoryStore::UniquePaths() const {
    return [paths = std::make_shared<std::set<std::string>>()](const std::string& path) {
        return paths->insert(Key(path)).second;
    };
}

Result MemoryStore::CheckTarget(const std::string& /*path*/) const {
    return {};
}

Result MemoryStore::Look(const std::string& path, ItemKind& kind) {
    kind = ItemKind::kMissing;
    Result checked = Check(path);
    if (!checked) return checked;
    const Item* const item = Find(path);
    if (item == nullptr) return {};
    kind = item->bytes ? ItemKind::kFile : ItemKind::kFolder;
    return {};
}

Result MemoryStore::ReadIdentifiers(const std::string& path, ItemIdentifiers& identifiers) {
    identifiers = {};
    return Find(path) ? Result() : Failure(Reason::kMissing, path);
}

Result MemoryStore::List(const std::string& folder, const TakeItem& take, LeftOut& /*left*/) {
    Result checked = Check(folder);
    if (!checked) return checked;
    if (!IsFolder(folder)) return Failure(Reason::kMissing, folder);
    const std::string prefix = Key(folder) + "\\";
    for (auto at = FirstInside(folder); at != items_.end() && at->first.starts_with(prefix); ++at) {
        if (FindSeparator(at->first, prefix.size()) != std::string::npos) continue;
        StoreItem item;
        item.path = at->second.path;
        item.name = NamePart(item.path);
        item.isFolder = !at->second.bytes;
        item.isLink = at->second.isLink;
        item.isHostile = !IsSafeLocalName(item.name);
        take(item);
    }
    return {};
}

Result MemoryStore::ReadFile(const std::string& path, SourceFate /*fate*/, FileBuffer& contents) {
    contents = {};
    Result checked = Check(path);
    if (!checked) return checked;
    const Item* const item = Find(path);
    if (item == nullptr) return Failure(Reason::kMissing, path);
    if (!item->bytes) return Failure(Reason::kRefused, path);
    contents = BufferOf(*item->bytes);
    return {};
}

Result MemoryStore::ReadSource(const std::string& path, SourceFate fate, StoreSource& source) {
    source.isFolder = IsFolder(path);
    if (!source.isFolder) return ReadFile(path, fate, source.contents);
    return ListChildren(*this, path, source.children, source.left);
}

Error MemoryStore::IncompleteError(const LeftOut& left) const {
    return {Reason::kIncomplete, CodeKind::kSystem, ERROR_GEN_FAILURE,
            std::to_string(left.links + left.unsafeNames) + " left out"};
}

Result MemoryStore::Prepare(std::vector<PlannedItem>& items, ExistingEntries existing) {
    const TakePath isUnique = UniquePaths();
    for (PlannedItem& item : items) {
        if (!isUnique(item.path)) return Failure(Reason::kSharedName, item.path);
        const Item* const present = Find(item.path);
        if (present == nullptr) continue;
        const bool isFile = present->bytes.has_value();
        const bool refused = existing == ExistingEntries::kRefuse && isFile;
        if (refused || isFile == item.isFolder) return Failure(Reason::kExists, item.path);
        item.mayReplace = isFile;
    }
    return {};
}

Result MemoryStore::WriteFile(const std::string& path, const FileBuffer& contents,
                              WriteRules rules) {
    Result checked = Check(path);
    if (!checked) return checked;
    if (!CanHold(NamePart(path))) return Failure(Reason::kBadName, path);
    const Item* const present = Find(path);
    if (present && (rules.existing == ExistingEntries::kRefuse || !present->bytes)) {
        return Failure(Reason::kExists, path);
    }
    if (!IsFolder(ParentFolderKeepSlash(path))) return Failure(Reason::kMissing, path);
    if (room_ && contents.length > *room_) return Failure(Reason::kRefused, path);
    if (room_) *room_ -= contents.length;
    items_[Key(path)] = {present ? present->path : path, BytesOf(contents)};
    return {};
}

Result MemoryStore::MakeFolder(const std::string& path, FoldersAbove above) {
    Result checked = Check(path);
    if (!checked) return checked;
    if (IsFolder(path)) return {};
    if (Find(path)) return Failure(Reason::kExists, path);
    if (!CanHold(NamePart(path))) return Failure(Reason::kBadName, path);
    const std::string parent = ParentFolderKeepSlash(path);
    if (above == FoldersAbove::kAreMade && !Find(parent)) {
        Result made = MakeFolder(parent, above);
        if (!made) return made;
    }
    if (!IsFolder(parent)) return Failure(Reason::kMissing, path);
    items_[Key(path)] = {path, std::nullopt};
    return {};
}

std::optional<Result> MemoryStore::CopyFile(PathPair /*paths*/, WriteRules /*rules*/,
                                            std::uint64_t& /*bytes*/) {
    return std::nullopt;
}

Result MemoryStore::Rename(PathPair paths, ExistingEntries existing, StoreSource& source) {
    Result checked = Check(paths.from);
    if (!checked) return checked;
    const Item* const item = Find(paths.from);
    if (item == nullptr) return Failure(Reason::kMissing, paths.from);
    const bool isTaken = !IsSame(paths.from, paths.to) && Find(paths.to) != nullptr;
    if (isTaken && existing == ExistingEntries::kRefuse) {
        return Failure(Reason::kExists, paths.to);
    }
    if (!IsFolder(ParentFolderKeepSlash(paths.to))) return Failure(Reason::kMissing, paths.to);
    if (!item->bytes && !IsEmpty(paths.from)) {
        Result read = ReadSource(paths.from, SourceFate::kGoes, source);
        return read ? Result(Failure(Reason::kNotEmpty, paths.from)) : std::move(read);
    }
    Item renamed = *item;
    renamed.path = paths.to;
    items_.erase(Key(paths.from));
    items_[Key(paths.to)] = std::move(renamed);
    return {};
}

Result MemoryStore::Remove(const std::string& path, ItemKind /*kind*/) {
    Result checked = Check(path);
    if (!checked) return checked;
    if (!Find(path)) return Failure(Reason::kMissing, path);
    if (!IsEmpty(path)) return Failure(Reason::kNotEmpty, path);
    items_.erase(Key(path));
    return {};
}

Result MemoryStore::RemoveUnchanged(const std::string& path, const Digest& contents) {
    Result checked = Check(path);
    if (!checked) return checked;
    const Item* const item = Find(path);
    if (item == nullptr) return Failure(Reason::kMissing, path);
    if (!item->bytes || DigestOf(item->bytes->data(), item->bytes->size()) != contents) {
        return Failure(Reason::kChanged, path);
    }
    items_.erase(Key(path));
    return {};
}

Result MemoryStore::RemoveTree(const std::string& path) {
    Result checked = Check(path);
    if (!checked) return checked;
    if (!Find(path)) return Failure(Reason::kMissing, path);
    for (auto inside = FirstInside(path); inside != items_.end(); inside = FirstInside(path)) {
        items_.erase(inside);
    }
    items_.erase(Key(path));
    return {};
}

Result MemoryStore::TestWritable(const std::string& path) {
    Result checked = Check(path);
    if (!checked || Find(path)) return checked;
    return IsFolder(ParentFolderKeepSlash(path)) ? Result() : Failure(Reason::kMissing, path);
}

}  // namespace depot::test
