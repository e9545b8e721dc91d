// Places where files can be, made and looked at behind the back of what is tested.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>

#include "support/directory_server.h"
#include "support/scratch.h"

namespace depot::test {

// What a store holds: the path of each file with its bytes, and of each folder with kFolderMark.
using StoreContents = std::map<std::string, std::string>;
inline constexpr char kFolderMark[] = "(folder)";
inline constexpr char kMissing[] = "(missing)";

// One place. Paths are relative, with backslashes.
class Store {
public:
    virtual ~Store() = default;
    Store() = default;
    Store(const Store&) = delete;
    Store& operator=(const Store&) = delete;

    // How the component's clients name what is there.
    virtual std::string Path(const std::string& name) const = 0;

    // Makes a file, with its folders, or replaces it.
    virtual void MakeFile(const std::string& name, const std::string& bytes) = 0;
    virtual void MakeFolder(const std::string& name) = 0;
    // The bytes of a file; kMissing when there is none.
    virtual std::string Bytes(const std::string& name) = 0;
    virtual bool Holds(const std::string& name) = 0;
    // All that is there, or below a folder of it.
    virtual StoreContents Contents(const std::string& folder = {}) = 0;

    // A folder with files and folders of every shape: a file without a dot, a folder with one, an
    // empty folder.
    void MakeTree(const std::string& name);
    static StoreContents Tree();
};

// A folder of the file system, named by `prefix`: "<Work>\" or the folder itself.
class FolderStore : public Store {
public:
    FolderStore(std::string folder, std::string prefix)
        : folder_(std::move(folder)), prefix_(std::move(prefix)) {}

    std::string At(const std::string& name) const { return folder_ + "\\" + name; }

    std::string Path(const std::string& name) const override { return prefix_ + name; }
    void MakeFile(const std::string& name, const std::string& bytes) override;
    void MakeFolder(const std::string& name) override;
    std::string Bytes(const std::string& name) override;
    bool Holds(const std::string& name) override { return Exists(At(name)); }
    StoreContents Contents(const std::string& folder = {}) override;

private:
    std::string folder_;
    std::string prefix_;
};

// A folder of a directory, seen through a connection of the store's own.
class DirectoryStore : public Store {
public:
    DirectoryStore(DirectoryServer& server, std::string base, std::string prefix);

    // The name of the entry.
    std::string DN(const std::string& name) const;

    std::string Path(const std::string& name) const override { return prefix_ + name; }
    void MakeFile(const std::string& name, const std::string& bytes) override;
    void MakeFolder(const std::string& name) override;
    std::string Bytes(const std::string& name) override;
    bool Holds(const std::string& name) override;
    StoreContents Contents(const std::string& folder = {}) override;

private:
    // Connects anew after the server was away.
    CLDAPItems& Items();
    void AddContents(const std::string& dn, const std::string& path, StoreContents& contents);

    DirectoryServer& server_;
    std::string base_;
    std::string prefix_;
    std::unique_ptr<CDepotPath> location_;
    std::unique_ptr<CLDAPItems> items_;
};

}  // namespace depot::test
