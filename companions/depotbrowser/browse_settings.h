// What a client asks of the browse dialog and what it receives.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "depotbrowser/entry_order.h"
#include "platform/win32.h"

namespace depot {

struct BrowseSettings {
    bool saves = false;
    bool allowEditing = true;
    bool allowFileOperations = true;
    bool showFolderTree = true;
    bool askBeforeOverwriting = true;
    bool rememberSize = true;
    bool allowMultipleSelection = false;
    std::int32_t fileType = 0;  // 0 shows every kind
    std::int32_t helpTopic = 0;
    EntryOrder order;
    bool hasOrder = false;  // the client wants this order and not the one the user had last
    std::wstring initialFileName;
    std::string resourceFolder;
    HWND owner = nullptr;

    bool OffersCommands() const { return allowEditing && allowFileOperations; }
    bool SelectsSeveral() const { return allowMultipleSelection && !saves; }
};

enum class BrowseOutcome { kConfirmed, kCancelled, kNotShown };

// Shows the dialog modally and waits for the user. The owner, if any, is disabled meanwhile; it may
// be closed while the window is open, which cancels. `chosen` receives the display paths that the
// user confirmed.
BrowseOutcome ShowBrowseWindow(const BrowseSettings& settings, std::vector<std::string>& chosen);

}  // namespace depot
