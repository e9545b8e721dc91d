#include "support/stores.h"

#include <gtest/gtest.h>

#include "platform/paths.h"

namespace depot::test {
namespace {

struct FindCloser {
    void operator()(void* search) const { FindClose(search); }
};

void AddFolderContents(const std::string& folder, const std::string& path,
                       StoreContents& contents) {
    WIN32_FIND_DATAA found = {};
    const HANDLE search = FindFirstFileA((folder + "\\*").c_str(), &found);
    if (search == INVALID_HANDLE_VALUE) return;
    const std::unique_ptr<void, FindCloser> owner(search);
    do {
        const std::string name = found.cFileName;
        if (name == "." || name == "..") continue;
        const bool isFolder = (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
        contents[path + name] = isFolder ? kFolderMark : FileBytes(folder + "\\" + name);
        if (isFolder) AddFolderContents(folder + "\\" + name, path + name + "\\", contents);
    } while (FindNextFileA(search, &found));
}

}  // namespace

void Store::MakeTree(const std::string& name) {
    for (const auto& [path, bytes] : Tree()) {
        if (bytes == kFolderMark) {
            MakeFolder(name + "\\" + path);
        } else {
            MakeFile(name + "\\" + path, bytes);
        }
    }
}

StoreContents Store::Tree() {
    return {{"README", "1"},       {"a.kra", "2"},        {"empty", kFolderMark},
            {"sub", kFolderMark},  {"sub\\b.kra", "3"},   {"sub\\deep", kFolderMark},
            {"sub\\deep\\c", "4"}, {"v1.2", kFolderMark}, {"v1.2\\d.kra", "5"}};
}

void FolderStore::MakeFile(const std::string& name, const std::string& bytes) {
    MakeFolder(FolderPrefix(name));
    const HANDLE file = CreateFileA(At(name).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(INVALID_HANDLE_VALUE, file) << name;
    DWORD written = 0;
    WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
    CloseHandle(file);
}

void FolderStore::MakeFolder(const std::string& name) {
    for (std::size_t end = FindSeparator(name);; end = FindSeparator(name, end + 1)) {
        CreateDirectoryA(At(name.substr(0, end)).c_str(), nullptr);
        if (end == std::string::npos) break;
    }
}

std::string FolderStore::Bytes(const std::string& name) {
    const DWORD attributes = GetFileAttributesA(At(name).c_str());
    const bool isFile =
        attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
    return isFile ? FileBytes(At(name)) : kMissing;
}

StoreContents FolderStore::Contents(const std::string& folder) {
    StoreContents contents;
    AddFolderContents(folder.empty() ? folder_ : At(folder), {}, contents);
    return contents;
}

DirectoryStore::DirectoryStore(DirectoryServer& server, std::string base, std::string prefix)
    : server_(server),
      base_(std::move(base)),
      prefix_(std::move(prefix)),
      location_(server.Location(base_).Clone()),
      items_(std::make_unique<CLDAPItems>(location_.get())) {}

std::string DirectoryStore::DN(const std::string& name) const {
    if (name.empty()) return base_;
    const std::size_t end = FindLastSeparator(name);
    if (end == std::string::npos) return "cn=" + name + "," + base_;
    return "cn=" + name.substr(end + 1) + "," + DN(name.substr(0, end));
}

void DirectoryStore::MakeFile(const std::string& name, const std::string& bytes) {
    MakeFolder(RemoveTrailingBackslash(FolderPrefix(name)));
    const auto length = static_cast<std::uint32_t>(bytes.size());
    const std::uint32_t code =
        Holds(name) ? Items().ReplaceFileContents(DN(name), bytes.data(), length)
                    : Items().AddFileEntry(DN(name), NamePart(name), bytes.data(), length);
    EXPECT_EQ(0u, code) << name;
}

void DirectoryStore::MakeFolder(const std::string& name) {
    if (name.empty() || Holds(name)) return;
    MakeFolder(RemoveTrailingBackslash(FolderPrefix(name)));
    EXPECT_EQ(1, Items().AddFolderEntry(DN(name), NamePart(name), nullptr)) << name;
}

std::string DirectoryStore::Bytes(const std::string& name) {
    FileBuffer buffer;
    if (Items().ReadFileContents(DN(name), buffer) == 0 || !buffer.bytes) return kMissing;
    return std::string(reinterpret_cast<const char*>(buffer.bytes.get()), buffer.length);
}

bool DirectoryStore::Holds(const std::string& name) {
    return CodeOf(Items().Entries().Find(DN(name))) == LDAP_SUCCESS;
}

StoreContents DirectoryStore::Contents(const std::string& folder) {
    StoreContents contents;
    AddContents(DN(folder), {}, contents);
    return contents;
}

void DirectoryStore::AddContents(const std::string& dn, const std::string& path,
                                 StoreContents& contents) {
    LdapItemList children;
    Items().ListChildren(dn, children);
    for (const CLDAPItem* child : children) {
        const std::string name = child->path.substr(3, child->path.size() - dn.size() - 4);
        FileBuffer buffer;
        if (child->isFolder == 0) Items().ReadFileContents(child->path, buffer);
        contents[path + name] =
            child->isFolder != 0
                ? kFolderMark
                : std::string(reinterpret_cast<const char*>(buffer.bytes.get()), buffer.length);
        AddContents(child->path, path + name + "\\", contents);
    }
}

CLDAPItems& DirectoryStore::Items() {
    const bool answers =
        items_->IsConnected() && CodeOf(items_->Entries().Find(base_)) == LDAP_SUCCESS;
    if (!answers) {
        items_ = std::make_unique<CLDAPItems>(location_.get());
        EXPECT_EQ(1, items_->ConnectLocation(nullptr));
    }
    return *items_;
}

}  // namespace depot::test
