// The dialog in which the user chooses profile files: a dialog of another component.
#pragma once

#include <string>
#include <vector>

#include "DepotBrowser.h"
#include "DepotIntr.h"
#include "com/automation.h"
#include "platform/win32.h"

namespace depot {

// What kind of choice the dialog offers, in the dialog component's own codes.
struct BrowseKind {
    LONG mode = 0;
    LONG fileType = 0;
};

// Returns the codes for an application and a kind of browsing; zeroes for any other combination.
BrowseKind BrowseKindOf(APP_TYPE application, BROWSE_TYPE browseType);

struct BrowseOptions {
    LONG_PTR ownerWindow = 0;  // 0 for none
    bool allowEditing = false;
    bool allowFileOperations = false;
    bool allowMultipleSelection = false;
};

// The dialog as the browse methods use it. Where the component cannot be created, or no person sees
// the process's windows, the dialog is absent, and running it chooses nothing. Single settings that
// the dialog refuses are passed over.
//
// REQUIRES: COM is initialised on the calling thread.
class BrowseDialog {
public:
    BrowseDialog();

    void SetKind(const BrowseKind& kind);
    void SetKindAndOptions(const BrowseKind& kind, const BrowseOptions& options);
    void SetInitialFileName(const std::string& path);

    // Shows the dialog and waits for the user. Returns the path that was chosen, the first of
    // several; empty when the user did not confirm. A topic of 0 offers no help.
    std::string Run(ULONG helpTopic, const std::string& resourceFolder);

    // Returns every path that was chosen, in the dialog's order. Throws std::bad_alloc rather than
    // leave some of them out.
    std::vector<std::string> ChosenPaths();

private:
    // Dialogs that know only the first interface let the user choose one file.
    void AllowMultipleSelection();

    UniqueCom<IDepotBrowseDialog> dialog_;
};

}  // namespace depot
