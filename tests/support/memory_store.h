// A store in memory.
#pragma once

#include <map>
#include <optional>
#include <string>

#include "store/store.h"

namespace depot::test {

// Files and folders by paths with backslashes, whose letter case makes no difference. The folder
// "root" is always there. Its operations fail one by one where a test says so.
class MemoryStore final : public Store {
public:
    static constexpr char kRoot[] = "root";

    MemoryStore() { items_[kRoot] = {kRoot, std::nullopt}; }

    // Every further operation on what is stored fails with this reason; nothing ends that.
    void FailWith(std::optional<Reason> reason) { failure_ = reason; }
    // How many bytes further files may have together.
    void SetRoom(std::size_t bytes) { room_ = bytes; }
    // Adds a link to a folder.
    void AddLink(const std::string& path) { items_[Key(path)] = {path, std::nullopt, true}; }

    Result Open(bool& opened) override;
    void Close() override { --open_; }
    int TimesOpen() const { return open_; }

    std::string PathOf(const std::string& path) const override { return path; }
    std::string ChildPath(const std::string& folder, const std::string& name,
                          bool isFolder) const override;
    bool CanHold(const std::string& name) const override;
    bool IsSame(const std::string& path, const std::string& other) const override;
    bool IsInside(const std::string& path, const std::string& folder) const override;
    TakePath UniquePaths() const override;
    std::optional<std::string> LocalPath(const std::string& /*path*/) const override { return {}; }
    Result CheckTarget(const std::string& path) const override;
    std::string Space() const override { return std::to_string(reinterpret_cast<ULONG_PTR>(this)); }

    Result Look(const std::string& path, ItemKind& kind) override;
    Result ReadIdentifiers(const std::string& path, ItemIdentifiers& identifiers) override;
    Result List(const std::string& folder, const TakeItem& take, LeftOut& left) override;
    Result ReadFile(const std::string& path, SourceFate fate, FileBuffer& contents) override;
    Result ReadSource(const std::string& path, SourceFate fate, StoreSource& source) override;
    const TreeBounds& Bounds() const override { return bounds; }
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

    Error Keep(Error error) override { return error; }

    TreeBounds bounds;

private:
    struct Item {
        std::string path;
        std::optional<std::string> bytes;  // nothing for a folder
        bool isLink = false;
    };
    using Items = std::map<std::string, Item>;

    static std::string Key(const std::string& path);
    static Error Failure(Reason reason, const std::string& path);
    // Fails where a test says so, and where the store is not open.
    Result Check(const std::string& path) const;
    const Item* Find(const std::string& path) const;
    bool IsFolder(const std::string& path) const;
    // What lies at any depth inside the folder.
    Items::iterator FirstInside(const std::string& folder);
    bool IsEmpty(const std::string& folder);

    Items items_;
    std::optional<Reason> failure_;
    std::optional<std::size_t> room_;
    int open_ = 0;
};

}  // namespace depot::test
