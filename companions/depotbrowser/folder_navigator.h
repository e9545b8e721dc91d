// Which folder is shown, and the loading of folders without ever waiting for one.
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "depotbrowser/browse_settings.h"
#include "depotbrowser/browse_texts.h"
#include "depotbrowser/depot_listing.h"
#include "depotbrowser/depot_worker.h"
#include "depotbrowser/file_list.h"
#include "depotbrowser/folder_tree.h"
#include "depotbrowser/status_line.h"
#include "depotbrowser/visited.h"

namespace depot {

// What happens once a folder is loaded.
struct AfterLoading {
    std::string select;          // the entry that is selected; empty for none
    std::wstring error;          // a failure to show, of what was done before
    std::function<void()> then;  // called last; may be null
    // The selection is put back or shows where the user came from; it is no choice.
    bool restores = false;
};

// Each depot has a worker of its own: one that hangs holds up no other. Borrows the parts of the
// window.
class FolderNavigator {
public:
    struct Parts {
        FolderTree& tree;
        FileList& list;
        StatusLine& status;
        const BrowseTexts& texts;
        std::shared_ptr<WindowMailbox> mailbox;
        std::function<void()> changed;  // the folder or what is known of it changed
    };
    explicit FolderNavigator(Parts parts);

    void Open(const FolderRef& folder, const AfterLoading& after = {});
    void Reload(const AfterLoading& after);
    void OpenAbove();
    // Opens what was shown before, or again what was left by that way.
    void OpenBack();
    void OpenForward();
    bool HasBack() const { return visited_.HasBack(); }
    bool HasForward() const { return visited_.HasForward(); }
    // Finds out which folders one holds, for the tree alone.
    void LoadFolders(const FolderRef& folder);
    // Shows the files that match; where none does, it is said how many others there are.
    void ShowMatching(const std::string& pattern);
    // Says so where no entry is shown.
    void ShowEmptiness();
    // Gives up what is at work. The depot that hangs gets another worker at the next need.
    void Stop();

    // The shown folder; nothing before the first one.
    const std::optional<FolderRef>& Current() const { return current_; }
    // Whether its entries are in the list. Its display path is known from then on.
    bool IsLoaded() const { return loaded_; }
    const std::string& FolderPath() const { return folderPath_; }
    // The folder and the display path of an entry, which may have been found in another folder.
    FolderRef FolderOf(const BrowseEntry& entry) const;
    std::string PathOf(const BrowseEntry& entry) const;
    // Whether a selection is being made that is no choice of the user.
    bool IsRestoring() const { return restoring_; }

    // Has work done in a depot while the window shows it as busy. `done` is called with the result
    // unless the user stopped it. Other work that begins meanwhile takes the status line over.
    template <class Work, class Done>
    void Run(const DepotRef& depot, UINT text, Work work, Done done) {
        const unsigned ticket = Begin(depot, text);
        Worker(depot).Post(std::move(work), [this, ticket, done = std::move(done)](auto&& result) {
            if (ticket == *newest_) parts_.status.Clear();
            done(result);
        });
    }

    // The same for work that is not about one depot.
    template <class Work, class Done>
    void RunAnywhere(UINT text, Work work, Done done) {
        Run(kNoDepot, text, std::move(work), std::move(done));
    }

    // The same without a change of what is shown and without an end by other work.
    template <class Work, class Done>
    void RunQuietly(const DepotRef& depot, Work work, Done done) {
        Worker(depot).Post(std::move(work), std::move(done));
    }
    // Shows the depot of the shown folder as busy: Stop ends its work.
    void ShowAsBusy(UINT text);

private:
    static const DepotRef kNoDepot;

    struct Placed {
        DepotRef depot;
        std::unique_ptr<DepotWorker> worker;
    };

    DepotWorker& Worker(const DepotRef& depot);
    unsigned Begin(const DepotRef& depot, UINT text);
    void Show(const FolderRef& folder, const Listing& listing, const AfterLoading& after);
    void ShowOutcome(const FolderRef& folder, const Listing& listing, const std::wstring& error);
    void ShowFolders(const FolderRef& folder, const Listing& listing);

    Parts parts_;
    std::optional<FolderRef> current_;
    Visited<FolderRef> visited_;
    bool loaded_ = false;
    bool restoring_ = false;
    std::string folderPath_;
    std::vector<Placed> workers_;
    DepotRef busyDepot_;
    // The number of the work that began last, which workers look at: outdated work is left out.
    std::shared_ptr<std::atomic<unsigned>> newest_ = std::make_shared<std::atomic<unsigned>>(0);
};

// What the user's choices and changes work with: parts of the window, all borrowed.
struct BrowseParts {
    HWND dialog;
    const BrowseSettings& settings;
    FolderNavigator& navigator;
    FileList& list;
    StatusLine& status;
    const BrowseTexts& texts;
    WindowMailbox& mailbox;
};

// The text of a failure followed, where one is known, by its reason.
std::wstring WithReason(const std::wstring& text, const std::string& reason);

}  // namespace depot
