// Folders of the stores, which tests fill and look at beside what they test.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>

#include "store/directory_store.h"
#include "support/directory_server.h"

namespace depot::test {

// What a folder holds: the path of each file with its bytes, and of each folder with kFolderMark.
using StoreContents = std::map<std::string, std::string>;
inline constexpr char kFolderMark[] = "(folder)";
inline constexpr char kMissing[] = "(missing)";

// One folder of a store. Names are paths below it, with backslashes.
class TestFolder {
public:
    virtual ~TestFolder() = default;
    TestFolder(const TestFolder&) = delete;
    TestFolder& operator=(const TestFolder&) = delete;

    // How the component's clients name what is there.
    std::string Path(const std::string& name) const { return prefix_ + name; }
    // The same in the store.
    virtual std::string At(const std::string& name) const = 0;

    // Makes a file, with its folders, or replaces it.
    void MakeFile(const std::string& name, const std::string& bytes);
    void MakeFolder(const std::string& name);
    // The bytes of a file; kMissing when there is none.
    std::string Bytes(const std::string& name);
    bool Holds(const std::string& name);
    // All that is there, or below a folder of it.
    StoreContents Contents(const std::string& folder = {});

    // A folder with files and folders of every shape: a file without a dot, a folder with one, an
    // empty folder.
    void MakeTree(const std::string& name);
    static StoreContents Tree();

protected:
    explicit TestFolder(std::string prefix) : prefix_(std::move(prefix)) {}

private:
    // The store, open.
    virtual Store& Reach() = 0;
    void AddContents(const std::string& folder, const std::string& path, StoreContents& contents);

    std::string prefix_;
};

// A folder of the file system, which clients name by `prefix`: "<Work>\" or the folder itself.
class LocalTestFolder : public TestFolder {
public:
    LocalTestFolder(std::string folder, std::string prefix)
        : TestFolder(std::move(prefix)), folder_(std::move(folder)) {}

    std::string At(const std::string& name) const override { return folder_ + "\\" + name; }

private:
    Store& Reach() override;

    std::string folder_;
};

// A folder of a directory, seen through a connection of its own.
class DirectoryTestFolder : public TestFolder {
public:
    DirectoryTestFolder(DirectoryServer& server, std::string base, std::string prefix);

    // The DN of the entry.
    std::string At(const std::string& name) const override;

private:
    // Connects anew after the server was away.
    Store& Reach() override;

    std::string base_;
    std::unique_ptr<CDepotPath> location_;
    std::unique_ptr<CLDAPItems> items_;
    std::optional<DirectoryStore> store_;
};

}  // namespace depot::test
