// How a dialog of fixed size looks: in the colours that the user wants, on the screen it is on.
#pragma once

#include <optional>
#include <vector>

#include "depotbrowser/dialog_template.h"
#include "depotbrowser/window_colours.h"
#include "platform/win32.h"

namespace depot {

// A control and its text.
struct LabelledControl {
    int control;
    UINT text;
};

// Borrows the dialog's window, whose controls all stand where they belong when this is made.
class DialogLook {
public:
    explicit DialogLook(HWND dialog);

    // Answers the messages about resolution and colours; nothing for any other.
    std::optional<INT_PTR> HandleMessage(UINT message, WPARAM first, LPARAM second);

private:
    struct Placed {
        HWND control;
        RECT place;                // in the dialog, at the first resolution
        std::vector<int> columns;  // the widths of a list's; empty for another control
    };

    void ResolutionChanged(int pixelsPerInch, const RECT& place);
    void HandOn(UINT message, WPARAM first, LPARAM second) const;

    HWND dialog_;
    int firstResolution_;
    std::vector<Placed> controls_;
    UniqueFont font_;  // null as long as the template's serves
    WindowColours colours_;
};

}  // namespace depot
