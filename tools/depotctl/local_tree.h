// Copying and moving a tree within the file system.
#pragma once

#include <string>
#include <vector>

#include "fileops/transfer_progress.h"
#include "platform/win32.h"

namespace depot::ctl {

// One file or folder on its way.
struct TransferStep {
    std::string source;
    std::string target;
    bool isFolder = false;
};

// Where a copy ended, and why; the code is ERROR_SUCCESS for one that did not.
struct LocalFailure {
    std::string path;
    DWORD code = ERROR_SUCCESS;
};

// A local folder with all below it, as it was when the object was made. Links to folders are no
// part of it.
class LocalTree {
public:
    // Ends the command when a folder cannot be listed.
    LocalTree(const std::string& source, const std::string& target);

    // A folder before what it holds.
    const std::vector<TransferStep>& Steps() const { return steps_; }
    std::uint32_t Links() const { return links_; }
    // Whether files or folders would become one at the target.
    bool SharesNames() const { return sharesNames_; }

    // Copies everything; files that exist are replaced. Stops at the first failure, and with
    // ERROR_CANCELLED and no path when the watcher wants it to.
    LocalFailure Copy(const TransferWatcher& watcher);

    // Removes what was copied. What came or changed since, or is in use, stays; returns whether
    // nothing did. REQUIRES: Copy has succeeded.
    bool RemoveSource() const;

private:
    // What shows that a file was written to.
    struct Stamp {
        std::uint64_t size = 0;
        std::uint64_t written = 0;

        friend bool operator==(const Stamp&, const Stamp&) = default;
    };
    static Stamp StampOf(const std::string& path);
    static bool Remove(const TransferStep& step);

    std::vector<TransferStep> steps_;
    std::uint32_t files_ = 0;
    std::uint32_t links_ = 0;
    bool sharesNames_ = false;
    std::vector<Stamp> stamps_;  // one for each step
};

}  // namespace depot::ctl
