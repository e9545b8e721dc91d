#include "support/test_folders.h"

#include <algorithm>

#include "directory/dn.h"
#include "platform/paths.h"
#include "store/folder_store.h"
#include "support/results.h"
#include "support/scratch.h"

namespace depot::test {

void TestFolder::MakeTree(const std::string& name) {
    for (const auto& [path, bytes] : Tree()) {
        if (bytes == kFolderMark) {
            MakeFolder(name + "\\" + path);
        } else {
            MakeFile(name + "\\" + path, bytes);
        }
    }
}

StoreContents TestFolder::Tree() {
    return {{"README", "1"},       {"a.kra", "2"},        {"empty", kFolderMark},
            {"sub", kFolderMark},  {"sub\\b.kra", "3"},   {"sub\\deep", kFolderMark},
            {"sub\\deep\\c", "4"}, {"v1.2", kFolderMark}, {"v1.2\\d.kra", "5"}};
}

void TestFolder::MakeFile(const std::string& name, const std::string& bytes) {
    MakeFolder(RemoveTrailingBackslash(FolderPrefix(name)));
    FileBuffer buffer = {static_cast<std::uint32_t>(bytes.size()),
                         std::make_unique<std::uint8_t[]>(bytes.size() + kFileBufferReserve)};
    std::copy(bytes.begin(), bytes.end(), buffer.bytes.get());
    EXPECT_THAT(Reach().WriteFile(At(name), buffer, {ExistingEntries::kReplace}), IsDone()) << name;
}

void TestFolder::MakeFolder(const std::string& name) {
    if (name.empty()) return;
    EXPECT_THAT(Reach().MakeFolder(At(name), FoldersAbove::kAreMade), IsDone()) << name;
}

std::string TestFolder::Bytes(const std::string& name) {
    FileBuffer buffer;
    if (!Reach().ReadFile(At(name), SourceFate::kStays, buffer) || !buffer.bytes) return kMissing;
    return std::string(reinterpret_cast<const char*>(buffer.bytes.get()), buffer.length);
}

bool TestFolder::Holds(const std::string& name) {
    ItemKind kind = ItemKind::kMissing;
    return Reach().Look(At(name), kind) && kind != ItemKind::kMissing;
}

StoreContents TestFolder::Contents(const std::string& folder) {
    StoreContents contents;
    AddContents(folder, {}, contents);
    return contents;
}

void TestFolder::AddContents(const std::string& folder, const std::string& path,
                             StoreContents& contents) {
    std::vector<StoreItem> children;
    LeftOut left;
    // A folder that is not there holds nothing.
    (void)Reach().List(
        At(folder), [&](const StoreItem& child) { children.push_back(child); }, left);
    for (const StoreItem& child : children) {
        const std::string name = folder.empty() ? child.name : folder + "\\" + child.name;
        // Files whose paths are too long for the product are looked at, too.
        const std::optional<std::string> local = Reach().LocalPath(At(name));
        contents[path + child.name] = child.isFolder ? kFolderMark
                                      : local        ? FileBytes(*local)
                                                     : Bytes(name);
        if (child.isFolder) AddContents(name, path + child.name + "\\", contents);
    }
}

Store& LocalTestFolder::Reach() {
    return FolderStore::Instance();
}

DirectoryTestFolder::DirectoryTestFolder(DirectoryServer& server, std::string base,
                                         std::string prefix)
    : TestFolder(std::move(prefix)),
      base_(std::move(base)),
      location_(server.Location(base_).Clone()) {}

std::string DirectoryTestFolder::At(const std::string& name) const {
    if (name.empty()) return base_;
    const std::size_t end = FindLastSeparator(name);
    if (end == std::string::npos) return EntryDN("cn", name, base_);
    return EntryDN("cn", name.substr(end + 1), At(name.substr(0, end)));
}

Store& DirectoryTestFolder::Reach() {
    const bool answers =
        store_ && items_->IsConnected() && CodeOf(items_->Entries().Find(base_)) == LDAP_SUCCESS;
    if (!answers) {
        store_.reset();
        items_ = std::make_unique<CLDAPItems>(location_.get());
        EXPECT_THAT(items_->ConnectLocation(nullptr), IsDone());
        store_.emplace(*items_);
    }
    return *store_;
}

}  // namespace depot::test
