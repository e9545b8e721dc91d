// The files and folders that commands name, by display paths and by plain paths alike.
#pragma once

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "depotctl/program.h"
#include "manager/display_path.h"
#include "model/depots.h"

namespace depot::ctl {

// A file or folder with the depot that holds it. A place outside of all depots belongs to a depot
// without a name, whose display paths are plain paths, so that every operation works on it.
struct Place {
    CDepot* depot = nullptr;  // never null, never owned
    std::string path;         // without a trailing backslash, unless it is a root
    bool isPlain = false;     // outside of all depots

    StorePath Stored() const { return PlaceOf(*depot, path); }
    std::string Shown() const;  // in UTF-8, quoted for a message
    std::string Utf8() const;

    // Whether each look at what is there is a request to a server.
    bool IsFarAway() const { return depot->ActiveStore().Window() > 1; }

    // The code of the last failure in a directory, 0 elsewhere, for operations that return none.
    std::uint32_t LastCode() const;
    void ForgetFailure() const;
};

// The store that holds a place, open as long as the object lives. Ends the command when it cannot
// be opened.
class OpenedPlace {
public:
    OpenedPlace(const Place& place, const char* action)
        : OpenedPlace(place, action, place.Stored()) {}

    Store& store;
    const std::string path;

private:
    OpenedPlace(const Place& place, const char* action, const StorePath& stored);

    const StoreScope scope_;
};

// A place that a command works on, and what it is where that was seen already.
struct Selected {
    Place place;
    std::optional<ItemKind> kind;
};

// What a path selects: one place, which need not be there, or with wildcards in its last part
// everything of a folder that they match, ordered by name.
struct Selection {
    std::vector<Selected> items;
    bool isPattern = false;
};

// Finds out what paths stand for.
class Places {
public:
    explicit Places(Program& program);

    // A path that begins with "<" is a display path, by the depot's key or by its display name; any
    // other one is a path of the file system, relative to the current folder. The depot is opened.
    // Fails for a depot that is not there or cannot be reached.
    Place Resolve(const std::string& utf8Path);

    // What the path selects. Wildcards are taken for characters where a name has just these. Fails
    // when they match nothing. Names that cannot be written, which they may match, are reported.
    Selection Select(const std::string& utf8Path);
    Selection Select(const std::vector<std::string>& utf8Paths);

    // The root of the default depot.
    Place DefaultRoot();

    // What there is at the place: nothing, a file or a folder.
    ItemKind KindOf(const Place& place) const;

    // The same of a place where something must be.
    ItemKind Require(const Place& place) const;

    ItemKind Require(const Selected& selected) const;
    std::vector<ItemKind> RequireAll(const Selection& selection) const;

    // Ends the command unless there is a file at the place.
    void RequireFile(const Place& place) const;
    void RequireFile(const Selected& selected) const;

private:
    Selection Matches(const Place& pattern) const;
    Place InDepot(CDepot& depot, const std::string& path);
    Place Plain(const std::string& path);

    Program& program_;
    CDepot local_;
    std::set<const CDepot*> opened_;
};

// The place of that name in a folder.
Place Child(const Place& folder, const std::string& name);

// The folder that holds the place.
Place FolderOf(const Place& place);

// Returns whether the place is the root of its depot or of a drive.
bool IsRoot(const Place& place);

// Returns whether the place's name has wildcards.
bool IsPattern(const Place& place);

// Returns whether the place's name has a dot.
bool HasDot(const Place& place);

// Ends the command because nothing is as the place's name has it.
[[noreturn]] void RefuseUnmatched(const Place& pattern);

// Ends the command because an operation on the place failed.
[[noreturn]] void Fail(const std::string& action, const Place& place, const Error& why);

// The same for an operation that returns no error: with the directory's reason, else with
// `systemError`, else with the text or what the component reported.
[[noreturn]] void Fail(const std::string& action, const Place& place, DWORD systemError = 0,
                       const std::string& errorText = {});

}  // namespace depot::ctl
