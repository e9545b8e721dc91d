// The file system as a store.
#pragma once

#include "store/store.h"

namespace depot {

// Files and folders by their paths in the file system. It keeps nothing itself: one object serves
// all, on every thread.
class FolderStore final : public Store {
public:
    // Returns the object that serves all.
    static FolderStore& Instance();

    Result Open(bool& opened) override;
    void Close() override {}

    std::string PathOf(const std::string& path) const override { return path; }
    std::string ChildPath(const std::string& folder, const std::string& name,
                          bool isFolder) const override;
    bool CanHold(const std::string& name) const override;
    bool IsSame(const std::string& path, const std::string& other) const override;
    bool IsInside(const std::string& path, const std::string& folder) const override;
    TakePath UniquePaths() const override;
    std::optional<std::string> LocalPath(const std::string& path) const override { return path; }
    Result CheckTarget(const std::string& path) const override;
    std::string Space() const override { return {}; }

    Result Look(const std::string& path, ItemKind& kind) override;
    Result ReadIdentifiers(const std::string& path, ItemIdentifiers& identifiers) override;
    Result List(const std::string& folder, const TakeItem& take, LeftOut& left) override;
    Result ReadFile(const std::string& path, SourceFate fate, FileBuffer& contents) override;
    Result ReadSource(const std::string& path, SourceFate fate, StoreSource& source) override;
    const TreeBounds& Bounds() const override;
    Error IncompleteError(const LeftOut& left) const override;

    Result Prepare(std::vector<PlannedItem>& items, ExistingEntries existing) override;
    Result WriteFile(const std::string& path, const FileBuffer& contents,
                     WriteRules rules) override;
    Result MakeFolder(const std::string& path, FoldersAbove above) override;
    std::optional<Result> CopyFile(PathPair paths, WriteRules rules, std::uint64_t& bytes) override;
    Result Rename(PathPair paths, ExistingEntries existing, StoreSource& source) override;
    Result Remove(const std::string& path, ItemKind kind) override;
    Result RemoveUnchanged(const std::string& path, const Digest& contents) override;
    Result RemoveTree(const std::string& path) override;
    Result TestWritable(const std::string& path) override;

    Error Keep(Error error) override;
};

// Return the texts for the user that so many links to folders, and so many files and folders for
// their names, were left out; empty for none.
std::string LinksText(std::uint32_t count);
std::string UnsafeLocalNamesText(std::uint32_t count);

// Returns the failure of a system call on a path, with the system's text, and leaves its code as
// the thread's last error.
Error SystemError(DWORD code, const std::string& path);

}  // namespace depot
