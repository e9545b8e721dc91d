// A place that keeps files in folders: a file system, a directory, or memory in tests.
//
// Copies, moves, listings and removals work on this interface and do not ask what kind of store it
// is; the values of a file are those of a local file (manager/depot_file_context.h). To find the
// store that holds a path of a depot: manager/display_path.h.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "directory/comparable_dn.h"
#include "directory/entry_store.h"
#include "directory/tree_bounds.h"
#include "platform/digest.h"
#include "platform/not_copied.h"
#include "platform/result.h"
#include "platform/win32.h"

namespace depot {

// The file that is made in a folder to test whether it can be written.
inline constexpr char kProbeFileName[] = "____Test____Writable____File___.twr";

// What a path names. Something that is neither a file nor a folder, or does not show which, is
// kOther.
enum class ItemKind : std::uint8_t { kMissing, kFile, kFolder, kOther };

// What an operation does with files that exist where it writes.
enum class ExistingEntries {
    kRefuse = 1,   // fails before anything is stored
    kReplace = 2,  // replaces the contents of files
};

// What becomes of a source. That of a move is removed after it was copied: whatever of it cannot be
// seen to be whole makes the copy fail.
enum class SourceFate { kStays, kGoes };

// Whether the folders above a new folder are known to exist.
enum class FoldersAbove { kExist, kAreMade };

// A child of a folder. The object that a listing hands out is the listing's: whoever keeps it
// copies it.
struct StoreItem {
    std::string name;
    std::string path;
    bool isFolder = false;
    bool isLink = false;     // leads to a folder elsewhere, and is no part of a tree
    bool isHostile = false;  // has a name that no local file may have
    const WIN32_FIND_DATAA* details = nullptr;  // what the file system says of it
};
using TakeItem = std::function<void(const StoreItem& item)>;

// What a listing, or all listings of a tree, left out.
struct LeftOut {
    std::uint32_t links = 0;        // to folders
    std::uint32_t unsafeNames = 0;  // which narrow texts, or local files, cannot have
    bool IsNothing() const { return links == 0 && unsafeNames == 0; }
};

// One file or folder of a tree.
struct TreeItem {
    std::string name;
    std::string path;
    bool isFolder = false;
    std::size_t parent = 0;   // the index of the folder that holds it; the top's is its own
    std::uint32_t depth = 0;  // levels below the top
};

// A folder with all below it, a folder before what it holds; the first item is the folder itself.
struct Tree {
    std::vector<TreeItem> items;
    std::uint32_t files = 0;
    LeftOut left;
};

// What was read of a path to find out what it names: a file's bytes, or what a folder holds.
struct StoreSource {
    bool isFolder = false;
    FileBuffer contents;  // of a file
    std::vector<TreeItem> children;
    LeftOut left;
};

// One place that a transfer is going to write.
struct PlannedItem {
    std::string path;
    bool isFolder = false;
    bool mayReplace = false;  // set by Prepare: a file that may take the place of another one
};

// How a file is written.
struct WriteRules {
    ExistingEntries existing = ExistingEntries::kReplace;
    // The bytes must be where a power cut does not reach them before the operation ends.
    SourceFate fate = SourceFate::kStays;
};

// Parts of work that a store does on several items at once. Each receives its own result.
struct FileToRead {
    std::string path;
    FileBuffer contents{};
    Result result{};
};
struct FileToWrite {
    std::string path;
    const FileBuffer* contents = nullptr;  // never owned
    WriteRules rules{};
    Result result{};
};
struct FolderToMake {
    std::string path;
    Result result{};
};
struct FolderToList {
    std::string path;
    std::vector<TreeItem> children{};  // without their places in a tree
    LeftOut left{};
    Result result{};
};
struct ItemToRemove {
    std::string path;
    ItemKind kind = ItemKind::kFile;
    std::optional<Digest> contents{};  // of a file that is removed only while it holds these
    Result result{};
};

// Where a file is and where it is to be in the same store.
struct PathPair {
    const std::string& from;
    const std::string& to;
};

// The identifiers by which a store distinguishes items whatever becomes of their names; empty where
// it shows none.
using ItemIdentifiers = EntryIdentifiers;

// Two paths of which only what is stored shows whether they name the same.
using PathsInDoubt = EntriesInDoubt;

// The paths and names of one store that are in use so far: returns false for one that is the same
// there as an earlier one.
using TakePath = std::function<bool(const std::string& path)>;

// A place that keeps files in folders, named by its own storage paths. Used by one thread at a
// time. A failure is a result with its reason, its code and the user's text; without memory an
// operation throws std::bad_alloc.
//
// REQUIRES, of every operation that looks at or changes what is stored: the store is open.
class Store : NotCopied {
public:
    Store() = default;
    virtual ~Store() = default;

    // Opens the store for the work of one operation, see StoreScope; `opened` is whether Close is
    // due afterwards.
    virtual Result Open(bool& opened) = 0;
    virtual void Close() = 0;

    // Paths. Nothing of these asks for what is stored.

    // Returns the storage path of "root\folder\file", where the root is a location's.
    virtual std::string PathOf(const std::string& path) const = 0;
    // Returns the path of a named child; some stores name files and folders differently.
    virtual std::string ChildPath(const std::string& folder, const std::string& name,
                                  bool isFolder) const = 0;
    // Whether something of this name can be made here.
    virtual bool CanHold(const std::string& name) const = 0;
    // Whether both name the same, or the first lies at any depth inside the second, whatever
    // spelling the store pays no regard to.
    virtual bool IsSame(const std::string& path, const std::string& other) const = 0;
    virtual bool IsInside(const std::string& path, const std::string& folder) const = 0;
    virtual TakePath UniquePaths() const = 0;
    // Returns the paths that decide, by what is stored there, whether one of the two is the other
    // or lies inside it; nothing where the names alone do.
    virtual std::optional<PathsInDoubt> FindDoubt(const std::string& /*path*/,
                                                  const std::string& /*other*/) const {
        return {};
    }
    // Returns the path by which the shell and the system's own calls reach what is stored; nothing
    // where they cannot.
    virtual std::optional<std::string> LocalPath(const std::string& path) const = 0;
    // Whether there are such paths.
    bool IsLocal() const { return LocalPath({}).has_value(); }
    // Whether files and folders are named alike: the dot alone distinguishes them.
    bool NamesAlike() const {
        return !IsLocal() && ChildPath({}, "x", true) == ChildPath({}, "x", false);
    }
    // Fails with kInvalid for a path that names no place of its own, whatever is stored.
    virtual Result CheckTarget(const std::string& path) const = 0;
    // Returns what the paths of this store are relative to: stores of one space name the same by
    // the same path.
    virtual std::string Space() const = 0;

    // Looking.

    // What is missing is no failure.
    virtual Result Look(const std::string& path, ItemKind& kind) = 0;
    // Reads the identifiers of an item; kMissing for one that cannot be seen.
    virtual Result ReadIdentifiers(const std::string& path, ItemIdentifiers& identifiers) = 0;
    // Hands out each child of a folder, in the order of the store. What narrow texts cannot name is
    // counted in `left`. A listing that fails may have handed out some.
    virtual Result List(const std::string& folder, const TakeItem& take, LeftOut& left) = 0;
    // Reads a file; kUnseen for one whose bytes do not show. Below one that is to go nothing may be
    // kept.
    virtual Result ReadFile(const std::string& path, SourceFate fate, FileBuffer& contents) = 0;
    // Finds out what the path names, and reads it. Links and hostile names among the children are
    // left out and counted. Of a source that is to go the whole must be seen.
    virtual Result ReadSource(const std::string& path, SourceFate fate, StoreSource& source) = 0;
    // How much of a tree one operation looks at.
    virtual const TreeBounds& Bounds() const = 0;
    // Returns the failure of an operation that had to leave these out.
    virtual Error IncompleteError(const LeftOut& left) const = 0;

    // Changing.

    // Looks at what stands where a tree, or a file, is to be written, and sets for each file
    // whether it may replace another one. Fails with kSharedName or kExists when two of the places
    // are one, with kExists where something is in the way. A store may find out that the first
    // folder is new by making it. REQUIRES: a folder before what it holds.
    //
    // A store that takes several names for one shows only by what is there that a place is taken
    // under another name: writing a file there, or making a folder, fails with kExists, and nothing
    // is replaced.
    virtual Result Prepare(std::vector<PlannedItem>& items, ExistingEntries existing) = 0;
    // Writes a file; with the folders above it where they are missing and the store can. A write
    // that fails leaves what was there.
    virtual Result WriteFile(const std::string& path, const FileBuffer& contents,
                             WriteRules rules) = 0;
    // Makes sure that a folder exists. One that is there is left as it is.
    virtual Result MakeFolder(const std::string& path, FoldersAbove above) = 0;
    // Copies a file, of so many bytes, by the store's own means; nothing where it has none.
    virtual std::optional<Result> CopyFile(PathPair paths, WriteRules rules,
                                           std::uint64_t& bytes) = 0;
    // Gives a file or folder another name, or another folder above it. A folder that the store
    // would have to copy for that fails with kNotEmpty, and `source` is what it holds.
    virtual Result Rename(PathPair paths, ExistingEntries existing, StoreSource& source) = 0;
    // Removes a file, or a folder that holds nothing: kNotEmpty else.
    virtual Result Remove(const std::string& path, ItemKind kind) = 0;
    // Removes a file only while it holds these bytes: kChanged else.
    virtual Result RemoveUnchanged(const std::string& path, const Digest& contents) = 0;
    // Removes a file or folder with everything below it, and continues after what resists. Links
    // are not followed.
    virtual Result RemoveTree(const std::string& path) = 0;

    // Finds out by trying whether the path can be written: a folder by a new file in it, a file by
    // opening it, what is missing by making it. What the test made is removed again, and what was
    // there stays.
    virtual Result TestWritable(const std::string& path) = 0;

    // Several at once.

    // How many items the operations below are given at most: a store that is far away has the
    // requests of so many under way together. They do what those above do for each item, in any
    // order, so that no item may depend on another one; where this is 1 they are given one.
    virtual std::size_t Window() const { return 1; }
    // Whether what has this path is a file if bytes can be read of it.
    virtual bool ReadsAsFile(const std::string& /*path*/) const { return false; }
    virtual void ReadFiles(std::span<FileToRead> files, SourceFate fate);
    virtual void WriteFiles(std::span<FileToWrite> files);
    // In folders that exist.
    virtual void MakeFolders(std::span<FolderToMake> folders);
    virtual void ListFolders(std::span<FolderToList> folders);
    virtual void RemoveItems(std::span<ItemToRemove> items);

    // Makes a failure the last one that the store's clients can ask for, in the store's own codes,
    // and returns it so.
    virtual Error Keep(Error error) = 0;
    // Return the last failure: the first where the store keeps it, the second, as a code of the
    // system, of every store.
    virtual Result LastFailure() const { return {}; }
    virtual DWORD LastSystemError() const { return GetLastError(); }
};

// A path together with the store that holds it.
struct StorePath {
    Store* store = nullptr;  // never null, never owned
    std::string path;
};

// Keeps a store open for the work of one operation; does nothing inside another scope.
class StoreScope : NotCopied {
public:
    explicit StoreScope(Store& store) : store_(store), result_(store.Open(opened_)) {}
    ~StoreScope() {
        if (opened_) store_.Close();
    }

    explicit operator bool() const { return result_.IsDone(); }
    const Result& Outcome() const { return result_; }

private:
    Store& store_;
    bool opened_ = false;
    Result result_;
};

}  // namespace depot
