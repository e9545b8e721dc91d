// A person in front of the window of kept files.
#pragma once

#include <string>

#include "depotbrowser/browse_user.h"
#include "depotbrowser/kept_ids.h"

namespace depot::test {

// The open window, as seen and used from another thread.
class OpenKept : public OpenDialog {
public:
    using OpenDialog::OpenDialog;

    // What a list shows, row by row, each row's columns behind one another.
    std::vector<Names> Rows(int list = CONTROL_KEPT_LIST) const;
    bool WaitForCount(int count, int list = CONTROL_KEPT_LIST) const;
    bool WaitForMessage(const std::wstring& part) const;
    bool IsUsable(int control) const { return IsWindowEnabled(Control(control)) != FALSE; }
    bool WaitUntilUsable(int control) const;
    // Clicks a button once it can be used.
    void Use(int control) const;
    // Closes it and waits until it is gone.
    void Close() const;
};

// Waits for the window.
OpenKept WaitForKept();

// Opens it from the browse dialog.
OpenKept OpenKeptFrom(const OpenBrowser& browser);

}  // namespace depot::test
