#include "store/directory_store.h"

#include <algorithm>
#include <utility>

#include "directory/dn_escapes.h"
#include "platform/local_name.h"
#include "platform/text.h"
#include "store/tree.h"

namespace depot {
namespace {

// Whether servers say by this code that they do not rename a folder that holds entries, or nothing
// to another parent, or not to that one. Whoever lacks a right, and a name that is taken or
// invalid, gets another code, and no copy would change that.
bool CannotRenameTree(const Result& renamed) {
    switch (CodeOf(renamed)) {
        case LDAP_NOT_ALLOWED_ON_NONLEAF:
        case LDAP_UNWILLING_TO_PERFORM:
        case LDAP_AFFECTS_MULTIPLE_DSAS:
        case LDAP_PROTOCOL_ERROR:
        case LDAP_OTHER:
        case LDAP_NOT_SUPPORTED:  // the client's own, by the older version of the protocol
            return true;
        default:
            return false;
    }
}

ItemKind KindOf(EntryKind kind) {
    if (kind == EntryKind::kOther) return ItemKind::kOther;
    return kind == EntryKind::kFolder ? ItemKind::kFolder : ItemKind::kFile;
}

// Returns the directory's code for what another store, or the work itself, failed with.
std::uint32_t CodeOfReason(Reason reason) {
    if (reason == Reason::kExists) return LDAP_ALREADY_EXISTS;
    if (reason == Reason::kInvalid) return LDAP_PARAM_ERROR;
    return reason == Reason::kStopped ? LDAP_USER_CANCELLED : LDAP_LOCAL_ERROR;
}

// Returns the name of a child out of its DN, which begins with its naming attribute and ends with
// the folder's DN.
std::string NameOfChild(const std::string& dn, const std::string& folder) {
    const std::size_t start = dn.find('=') + 1;
    const std::size_t length = dn.size() - folder.size() - 1 - start;
    return UnescapedName(std::string_view(dn).substr(start, length));
}

}  // namespace

Result DirectoryStore::Looked(Result result) const {
    if (!result) directory_.SetLastError(CodeOf(result));
    return result;
}

Result DirectoryStore::Changed(Result result) const {
    directory_.SetLastError(CodeOf(result));
    return result;
}

Result DirectoryStore::Open(bool& opened) {
    return Looked(directory_.Connection().Acquire(opened));
}

std::string DirectoryStore::PathOf(const std::string& path) const {
    return Schema().PathToDN(path);
}

std::string DirectoryStore::ChildPath(const std::string& folder, const std::string& name,
                                      bool isFolder) const {
    const NamingAttributes naming = Schema().NamingNames();
    return EntryDN(isFolder ? naming.folder : naming.file, name, folder);
}

bool DirectoryStore::CanHold(const std::string& name) const {
    return !name.empty() && name != "." && name != "..";
}

Result DirectoryStore::CheckTarget(const std::string& /*path*/) const {
    return {};
}

std::string DirectoryStore::Space() const {
    return ToLower(directory_.GetHost()) + ":" + std::to_string(directory_.Location().port);
}

Result DirectoryStore::Look(const std::string& path, ItemKind& kind) {
    EntryKind found = EntryKind::kOther;
    Result looked = Looked(Entries().FindKind(path, found));
    kind = looked ? KindOf(found) : ItemKind::kMissing;
    return looked.Is(Reason::kMissing) ? Result() : std::move(looked);
}

Result DirectoryStore::ReadIdentifiers(const std::string& path, ItemIdentifiers& identifiers) {
    return Entries().ReadIdentifiers(path, identifiers);
}

Result DirectoryStore::List(const std::string& folder, const TakeItem& take, LeftOut& left) {
    LdapItemList children;
    Result listed = Looked(Entries().List(folder, children));
    left.unsafeNames += Entries().UnsafeNames();
    HandOut(children, folder, take);
    return listed;
}

void DirectoryStore::HandOut(const LdapItemList& children, const std::string& folder,
                             const TakeItem& take) {
    StoreItem item;
    for (const CLDAPItem* child : children) {
        item.path = child->path;
        item.name = NameOfChild(child->path, folder);
        item.isFolder = child->isFolder != 0;
        item.isHostile = !IsSafeLocalName(item.name);
        seesVariants_ = seesVariants_ || HasVariants(item.name);
        take(item);
    }
}

Result DirectoryStore::ReadFile(const std::string& path, SourceFate fate, FileBuffer& contents) {
    Result read = Looked(Entries().ReadSeen(path, contents));
    if (!read || fate == SourceFate::kStays) return read;
    // A file's name without a dot lets the deletion look for entries below it.
    return LooksLikeFolder(path) ? RefuseChildren(path) : std::move(read);
}

// Tells whether the name of an entry looks like a folder's. One that carries no naming attribute,
// such as the base itself, does.
bool DirectoryStore::LooksLikeFolder(const std::string& path) const {
    const std::optional<EntryName> name = Schema().SplitEntryName(path);
    return !name || name->isFolder;
}

// Both fail for a file with entries below it, which is removed with them but copied alone: the
// first for anything with children, the second for a file of which they are known.
Result DirectoryStore::RefuseChildren(const std::string& path) {
    LdapItemList children;
    Result listed = Looked(Entries().List(path, children));
    if (!listed) return listed;
    const bool isLeaf = children.Count() == 0 && Entries().UnsafeNames() == 0;
    return Of(isLeaf ? LDAP_SUCCESS : LDAP_NOT_ALLOWED_ON_NONLEAF);
}

Result DirectoryStore::RefuseFile(const std::string& path) {
    EntryKind kind = EntryKind::kOther;
    Result looked = Looked(Entries().FindKind(path, kind));
    if (!looked || kind != EntryKind::kFile) return looked;
    Error error = Of(LDAP_NOT_ALLOWED_ON_NONLEAF).Why();
    // No copy of it would be whole.
    error.reason = Reason::kRefused;
    return error;
}

// Lists what the entry holds; `isLeaf` is whether that is nothing that could be named.
Result DirectoryStore::ListSource(const std::string& path, StoreSource& source, bool& isLeaf) {
    Result listed =
        DirectoryStore::List(path, TakeChildren(path, source.children, source.left), source.left);
    isLeaf = source.children.empty() && source.left.unsafeNames == Entries().UnsafeNames();
    return listed;
}

Result DirectoryStore::ReadSource(const std::string& path, SourceFate fate, StoreSource& source) {
    const bool goes = fate == SourceFate::kGoes;
    if (!LooksLikeFolder(path)) {
        Result read = Looked(Entries().Read(path, source.contents));
        if (!read) return read;
        if (source.contents.bytes) return goes ? RefuseChildren(path) : std::move(read);
    }
    bool isLeaf = false;
    Result listed = ListSource(path, source, isLeaf);
    if (!listed) return listed;
    if (isLeaf) return ReadByClass(path, fate, source);
    source.isFolder = true;
    return goes ? RefuseFile(path) : std::move(listed);
}

// An entry that showed neither bytes nor children: only its class says what it is.
Result DirectoryStore::ReadByClass(const std::string& path, SourceFate fate, StoreSource& source) {
    const bool goes = fate == SourceFate::kGoes;
    EntryKind kind = EntryKind::kOther;
    Result looked = Looked(Entries().FindKind(path, kind));
    if (!looked) return looked;
    if (kind == EntryKind::kOther) {
        source.isFolder = LooksLikeFolder(path);
        if (goes) return Of(LDAP_OBJECT_CLASS_VIOLATION);
        return source.isFolder ? Result() : Looked(EntryStore::Unseen());
    }
    source.isFolder = kind == EntryKind::kFolder;
    if (source.isFolder) return {};
    return Looked(Entries().ReadSeen(path, source.contents));
}

Error DirectoryStore::IncompleteError(const LeftOut& left) const {
    return {Reason::kIncomplete, CodeKind::kDirectory, LDAP_NAMING_VIOLATION,
            UnsafeNamesText(left.unsafeNames)};
}

// Whether the folders can be made: none of the names is a file's, below which what is stored would
// be in nobody's sight, and the top is there only when that is allowed.
bool DirectoryStore::CanMakeFolders(const std::vector<PlannedItem>& items,
                                    ExistingEntries existing) {
    std::vector<KindLookup> lookups;
    for (const PlannedItem& item : items) {
        if (!item.isFolder) continue;
        const std::optional<EntryName> name = Schema().SplitEntryName(item.path);
        lookups.push_back({item.path, name ? name->name : std::string()});
    }
    if (lookups.empty()) return true;
    const auto mayBeTaken = [this](const KindLookup& lookup) { return MayBeTaken(lookup.name); };
    if (!std::any_of(lookups.begin(), lookups.end(), mayBeTaken)) {
        for (KindLookup& lookup : lookups) lookup.name.clear();
    }
    // Making the first one asks as well whether it is there. Under a new entry, or one whose parent
    // is missing, nothing else is.
    const std::string& first = lookups.front().dn;
    const std::optional<EntryName> name = Schema().SplitEntryName(first);
    const Result added = Entries().AddNewFolder(first, name ? name->name : std::string());
    if (added || added.Is(Reason::kExists)) madeFolder_ = first;
    if (added || added.Is(Reason::kMissing)) return true;
    const std::span<KindLookup> all = lookups;
    Entries().FindKindsTogether(all.first(1));
    if (!all.front().result) return true;
    if (items.front().isFolder && existing == ExistingEntries::kRefuse) return false;
    Entries().FindKindsTogether(all.subspan(1));
    return std::none_of(all.begin(), all.end(), [](const KindLookup& lookup) {
        return lookup.result && (lookup.kind == EntryKind::kFile || lookup.isOther);
    });
}

Result DirectoryStore::Prepare(std::vector<PlannedItem>& items, ExistingEntries existing) {
    madeFolder_.clear();
    const bool replaces = existing == ExistingEntries::kReplace;
    const TakePath isUnique = UniquePaths();
    bool anyShared = false;
    for (PlannedItem& item : items) {
        anyShared |= !isUnique(item.path);
        item.mayReplace = replaces && !item.isFolder;
    }
    // A file shows whether it is there when it is added.
    const bool refused = anyShared || !CanMakeFolders(items, existing);
    return Of(refused ? LDAP_ALREADY_EXISTS : LDAP_SUCCESS);
}

Result DirectoryStore::AddFile(const std::string& path, const std::string& name,
                               const FileBuffer& contents) {
    return Changed(Entries().AddFile(path, name, contents.bytes.get(), contents.length));
}

Result DirectoryStore::WriteFile(const std::string& path, const FileBuffer& contents,
                                 WriteRules rules) {
    const std::optional<EntryName> name = Schema().SplitEntryName(path);
    if (!name) return Of(LDAP_INVALID_DN_SYNTAX);
    const bool mayBeTaken = MayBeTaken(name->name) || rules.fate == SourceFate::kGoes;
    // Most files are new: adding first asks the server once where looking first asks twice.
    Result added = AddFile(path, name->name, contents);
    if (added.Is(Reason::kMissing)) {
        LdapItemList folders;
        // The name of a file may look like that of a folder.
        if (Entries().EnsureFoldersAbove(path, folders)) {
            added = AddFile(path, name->name, contents);
        }
    }
    if (!added.Is(Reason::kExists) || rules.existing == ExistingEntries::kRefuse) return added;
    if (mayBeTaken) {
        Result free = RefuseOther(path, name->name);
        if (!free) return Changed(std::move(free));
    }
    return Changed(Entries().Replace(path, contents.bytes.get(), contents.length));
}

Result DirectoryStore::AddFolder(const std::string& path) {
    const std::optional<EntryName> name = Schema().SplitEntryName(path);
    const bool mayBeTaken = name && MayBeTaken(name->name);
    bool added = false;
    Result made = Looked(Entries().AddFolder(path, name ? name->name : std::string(), added));
    return made && !added && mayBeTaken ? Looked(RefuseOther(path, name->name)) : std::move(made);
}

Result DirectoryStore::MakeFolder(const std::string& path, FoldersAbove above) {
    if (above == FoldersAbove::kExist) return AddFolder(path);
    if (!madeFolder_.empty() && path == std::exchange(madeFolder_, {})) return {};
    // Most often only this one is missing.
    const std::optional<EntryName> name = Schema().SplitEntryName(path);
    const bool mayBeTaken = name && MayBeTaken(name->name);
    const Result added = Entries().AddNewFolder(path, name ? name->name : std::string());
    if (added) return {};
    if (added.Is(Reason::kExists)) {
        return mayBeTaken ? Looked(RefuseOther(path, name->name)) : Result();
    }
    if (added.Is(Reason::kBadName)) return Looked(added);
    LdapItemList folders;
    Result made = Looked(Entries().EnsureFolders(path, folders));
    // A name with a dot is taken for a file's, and then only the folders above it are made.
    return !made || LooksLikeFolder(path) ? std::move(made) : AddFolder(path);
}

std::optional<Result> DirectoryStore::CopyFile(PathPair /*paths*/, WriteRules /*rules*/,
                                               std::uint64_t& /*bytes*/) {
    return std::nullopt;
}

// Renames after making the folders above the new name. They are removed again where the rename is
// refused for good.
Result DirectoryStore::RenameBelowNewFolders(PathPair paths) {
    LdapItemList added;
    Result renamed = Looked(Entries().EnsureFoldersAbove(paths.to, added));
    if (renamed) renamed = Changed(Entries().Rename(paths.from, paths.to));
    if (renamed || CannotRenameTree(renamed)) return renamed;
    for (std::size_t index = added.Count(); index > 0; --index) {
        static_cast<void>(Changed(Entries().Remove(added.At(index - 1).path)));
    }
    return renamed;
}

Result DirectoryStore::Rename(PathPair paths, ExistingEntries /*existing*/, StoreSource& source) {
    Result renamed = Changed(Entries().Rename(paths.from, paths.to));
    // What is missing may be the new parent, which is made for a folder with children.
    const bool isMissing = renamed.Is(Reason::kMissing);
    if (!CannotRenameTree(renamed) && !isMissing) return renamed;
    bool isLeaf = false;
    Result listed = ListSource(paths.from, source, isLeaf);
    if (!listed) return listed;
    if (isLeaf) return renamed;
    Result refused = RefuseFile(paths.from);
    if (!refused) return refused;
    if (isMissing) renamed = RenameBelowNewFolders(paths);
    if (!CannotRenameTree(renamed)) return renamed;
    source.isFolder = true;
    Error error = renamed.Why();
    error.reason = Reason::kNotEmpty;
    return error;
}

Result DirectoryStore::Remove(const std::string& path, ItemKind /*kind*/) {
    return Changed(Entries().Remove(path));
}

Result DirectoryStore::RemoveUnchanged(const std::string& path, const Digest& contents) {
    return Changed(Entries().RemoveUnchanged(path, contents));
}

Result DirectoryStore::RemoveTree(const std::string& path) {
    Result resisted;
    return Changed(Entries().RemoveTree(path, resisted));
}

DWORD DirectoryStore::LastSystemError() const {
    return directory_.Client().LdapMapErrorToWin32(directory_.LastError());
}

Error DirectoryStore::Keep(Error error) {
    if (error.kind == CodeKind::kSystem) {
        const bool hasOwnText = error.reason == Reason::kIncomplete;
        error.kind = CodeKind::kDirectory;
        error.code = CodeOfReason(error.reason);
        if (!hasOwnText) error.text.clear();
    }
    directory_.SetLastError(error.code);
    if (error.text.empty()) error.text = directory_.Connection().Text(error.code);
    return error;
}

}  // namespace depot
