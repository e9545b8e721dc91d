// A location of a directory as a store.
#pragma once

#include "directory/ldap_items.h"
#include "store/store.h"

namespace depot {

// The entries of one location by their distinguished names. Borrows the directory, whose last error
// is that of the last request, or what Keep was given. An operation that takes several steps takes
// them here, whatever a store that derives from this one adds to them.
class DirectoryStore : public Store {
public:
    explicit DirectoryStore(CLDAPItems& directory) : directory_(directory) {}

    // Connects and binds, and asks for credentials where none are known or the known ones fail.
    Result Open(bool& opened) override;
    void Close() override {
        madeFolder_.clear();
        directory_.Connection().Release();
    }

    std::string PathOf(const std::string& path) const override;
    std::string ChildPath(const std::string& folder, const std::string& name,
                          bool isFolder) const override;
    bool CanHold(const std::string& name) const override;
    bool IsSame(const std::string& path, const std::string& other) const override;
    bool IsInside(const std::string& path, const std::string& folder) const override;
    TakePath UniquePaths() const override;
    std::optional<PathsInDoubt> FindDoubt(const std::string& path,
                                          const std::string& other) const override;
    std::optional<std::string> LocalPath(const std::string& /*path*/) const override { return {}; }
    Result CheckTarget(const std::string& path) const override;
    // The host and the port.
    std::string Space() const override;

    Result Look(const std::string& path, ItemKind& kind) override;
    Result ReadIdentifiers(const std::string& path, ItemIdentifiers& identifiers) override;
    Result List(const std::string& folder, const TakeItem& take, LeftOut& left) override;
    Result ReadFile(const std::string& path, SourceFate fate, FileBuffer& contents) override;
    // What the directory says of an entry decides; the dot in its name only what is looked for
    // first.
    Result ReadSource(const std::string& path, SourceFate fate, StoreSource& source) override;
    const TreeBounds& Bounds() const override { return directory_.Bounds(); }
    Error IncompleteError(const LeftOut& left) const override;

    // Makes the first folder, which shows whether it was there.
    Result Prepare(std::vector<PlannedItem>& items, ExistingEntries existing) override;
    Result WriteFile(const std::string& path, const FileBuffer& contents,
                     WriteRules rules) override;
    Result MakeFolder(const std::string& path, FoldersAbove above) override;
    std::optional<Result> CopyFile(PathPair paths, WriteRules rules, std::uint64_t& bytes) override;
    // Makes the folders above the new name for a folder that holds entries.
    Result Rename(PathPair paths, ExistingEntries existing, StoreSource& source) override;
    Result Remove(const std::string& path, ItemKind kind) override;
    Result RemoveUnchanged(const std::string& path, const Digest& contents) override;
    Result RemoveTree(const std::string& path) override;
    Result TestWritable(const std::string& path) override;

    std::size_t Window() const override { return Entries().Window(); }
    bool ReadsAsFile(const std::string& path) const override { return !LooksLikeFolder(path); }
    void ReadFiles(std::span<FileToRead> files, SourceFate fate) override;
    void WriteFiles(std::span<FileToWrite> files) override;
    void MakeFolders(std::span<FolderToMake> folders) override;
    void ListFolders(std::span<FolderToList> folders) override;
    void RemoveItems(std::span<ItemToRemove> items) override;

    Error Keep(Error error) override;
    Result LastFailure() const override { return Of(directory_.LastError()); }
    DWORD LastSystemError() const override;

protected:
    // Hands out children of a folder by their names.
    void HandOut(const LdapItemList& children, const std::string& folder, const TakeItem& take);

private:
    EntryStore& Entries() const { return directory_.Entries(); }
    const LocationSchema& Schema() const { return directory_.Schema(); }
    // The code as a result, with its text.
    Result Of(std::uint32_t code) const { return directory_.Connection().Outcome(code); }
    // Keeps a failure as the last error; after a change also that there was none.
    Result Looked(Result result) const;
    Result Changed(Result result) const;

    // Whether an entry that is there may have another name, which the server takes for this one.
    bool MayBeTaken(const std::string& name);
    // Fails with kExists where it has. Nothing takes its place, and nothing is put below it.
    Result RefuseOther(const std::string& path, const std::string& name);
    static Error TakenName();
    // Replaces those of these files that are there under their own names.
    void ReplaceFiles(const std::vector<FileToWrite*>& files, std::vector<KindLookup> there);

    bool LooksLikeFolder(const std::string& path) const;
    Result RefuseChildren(const std::string& path);
    Result RefuseFile(const std::string& path);
    Result ListSource(const std::string& path, StoreSource& source, bool& isLeaf);
    Result ReadByClass(const std::string& path, SourceFate fate, StoreSource& source);
    Result AddFile(const std::string& path, const std::string& name, const FileBuffer& contents);
    Result AddFolder(const std::string& path);
    Result RenameBelowNewFolders(PathPair paths);
    bool CanMakeFolders(const std::vector<PlannedItem>& items, ExistingEntries existing);

    CLDAPItems& directory_;
    // The folder that Prepare has made, or found, and MakeFolder is to make.
    std::string madeFolder_;
    // Whether a name was listed or given that servers may take for others.
    bool seesVariants_ = false;
};

}  // namespace depot
