// The line of the browse dialog that counts the files that could not be stored.
#pragma once

#include <functional>
#include <memory>

#include "depotbrowser/browse_texts.h"
#include "depotbrowser/depot_worker.h"
#include "depotbrowser/window_mailbox.h"
#include "model/depots.h"
#include "platform/win32.h"

namespace depot {

// A button that is hidden as long as nothing is kept of the shown depots. It opens the window with
// what there is. A worker of its own counts: those of the depots may be waiting for a server, which
// is when files are kept.
class KeptLine {
public:
    // Borrows the dialog and the texts. `changed` is called when the line comes or goes.
    KeptLine(HWND dialog, const BrowseTexts& texts, std::shared_ptr<WindowMailbox> mailbox,
             std::function<void()> changed);

    // Counts what is kept of the depots; where none has a directory there is nothing to count.
    void Begin(const CDepots& depots);

    // Counts anew, if there was anything to count.
    void Refresh() {
        if (worker_) Count();
    }

    // Shows the window, waits for its user and counts anew.
    void Open();

    bool IsShown() const { return isShown_; }

private:
    void Count();
    void Show(std::size_t count);

    HWND dialog_;
    HWND button_;
    const BrowseTexts& texts_;
    const std::shared_ptr<WindowMailbox> mailbox_;
    const std::function<void()> changed_;
    std::unique_ptr<DepotWorker> worker_;  // null until there is something to count
    bool isShown_ = false;
    bool isOpen_ = false;
};

}  // namespace depot
