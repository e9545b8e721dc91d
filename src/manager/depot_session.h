// The state of one client, behind the handle that it holds.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "manager/call_failure.h"
#include "manager/depot_file_context.h"
#include "manager/standard_folders.h"
#include "model/depot_items.h"
#include "model/depots.h"
#include "platform/not_copied.h"
#include "platform/win32.h"

namespace depot {

// One session. It owns its depot list, its current file, its find results and its folders. Used by
// one thread at a time; registry changes made while it lives are not seen by it.
class DepotSession : NotCopied {
public:
    // Looks up the user's folder and, when there is one, loads the depots and gives it to the
    // path macros.
    DepotSession();
    // Releases the current file first, then everything else.
    ~DepotSession();

    // The depots of this session, loaded on first use.
    CDepots& Depots();

    // Replaces the current file by the one that `path` names; the old one is released first:
    // `released` receives why a change of that one could not be stored.
    void LoadFile(const std::string& path, Result* released = nullptr);

    // Releases the current file and loads it again, with the same result. What it was stored as, or
    // loaded as, serves on where its server is lost in between. REQUIRES: there is a current file.
    void ReloadFile(Result* released);

    // Leaves the session without a current file, with the same result.
    void ReleaseFile(Result* released = nullptr);

    // Prepares the session for its end while the library is being taken out of the process, where
    // nothing may wait: a changed working copy is kept among the recovered files, and connections
    // are left to the system. Returns whether there were any.
    bool Leave() noexcept;

    StandardFolders& Folders() { return folders_; }

    // Whether copies are named in the new style, "name - copy".
    bool UsesNewCopyNames() const { return newCopyNames_; }

    std::string selectedItemPath;
    CallFailure lastFailure;               // of the last call that worked on this session
    std::vector<std::string> chosenFiles;  // by the last dialog
    bool isQuiet = false;                  // whether its calls show no boxes
    std::unique_ptr<CDepotItems> findResults;
    std::unique_ptr<DepotFileContext> currentFile;

private:
    // Stores the user's folder where the path macros of the whole process find it.
    void ShareUserFolder();

    DWORD systemMajorVersion_ = 0;
    bool newCopyNames_ = false;
    std::unique_ptr<CDepots> depots_;
    StandardFolders folders_;
};

}  // namespace depot
