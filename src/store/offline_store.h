// A directory location that can be read, and edited, while its server is away.
#pragma once

#include "offline/offline_location.h"
#include "store/directory_store.h"

namespace depot {

// A directory store, of which what was read or listed is kept. While no server answers files and
// folders are served from there, and what is written to a file that is kept, or to a new one, waits
// for the server; everything else that would change the directory fails with a text that says why.
//
// Borrows both. What it does while the server is there is what any directory store does.
class OfflineStore final : public DirectoryStore {
public:
    OfflineStore(CLDAPItems& directory, OfflineLocation& kept)
        : DirectoryStore(directory), kept_(kept), connection_(directory.Connection()) {}

    // Succeeds without a connection where the server is away.
    Result Open(bool& opened) override;

    // What is not kept is no answer but where a kept listing lacks it.
    Result Look(const std::string& path, ItemKind& kind) override;
    Result ReadIdentifiers(const std::string& path, ItemIdentifiers& identifiers) override;
    // Lists new files that wait, too.
    Result List(const std::string& folder, const TakeItem& take, LeftOut& left) override;
    Result ReadFile(const std::string& path, SourceFate fate, FileBuffer& contents) override;
    Result ReadSource(const std::string& path, SourceFate fate, StoreSource& source) override;

    Result Prepare(std::vector<PlannedItem>& items, ExistingEntries existing) override;
    Result WriteFile(const std::string& path, const FileBuffer& contents,
                     WriteRules rules) override;
    Result MakeFolder(const std::string& path, FoldersAbove above) override;
    Result Rename(PathPair paths, ExistingEntries existing, StoreSource& source) override;
    Result Remove(const std::string& path, ItemKind kind) override;
    Result RemoveUnchanged(const std::string& path, const Digest& contents) override;
    Result RemoveTree(const std::string& path) override;
    // Says yes of what is kept.
    Result TestWritable(const std::string& path) override;

    std::size_t Window() const override { return isApart_ ? 1 : DirectoryStore::Window(); }
    void ReadFiles(std::span<FileToRead> files, SourceFate fate) override;
    void WriteFiles(std::span<FileToWrite> files) override;
    void MakeFolders(std::span<FolderToMake> folders) override;
    void ListFolders(std::span<FolderToList> folders) override;
    void RemoveItems(std::span<ItemToRemove> items) override;

private:
    // The failure of what needs the server.
    Error Away(const std::string& path);
    ItemKind KindOf(const std::string& path) const;
    std::string FolderOf(const std::string& path) const;
    void KeepFile(const std::string& path, const FileBuffer& contents);
    Result ListApart(const std::string& folder, const TakeItem& take);

    OfflineLocation& kept_;
    LdapConnection& connection_;
    bool isApart_ = false;
};

}  // namespace depot
