// Looking at dialogs: their fonts, the room that texts need, and the places of controls.
#pragma once

#include <string>

#include "depotbrowser/dark_palette.h"
#include "depotbrowser/dialog_user.h"
#include "platform/win32.h"
#include "support/scratch.h"

namespace depot::test {

LOGFONTW FontOf(HWND window);
SIZE SizeOf(HWND window);

// The system's fonts and measures of windows.
NONCLIENTMETRICSW SystemMetrics();

// The font of the system's messages, twice as large as the user has it, while it lives.
class LargerMessageFont {
public:
    LargerMessageFont();
    ~LargerMessageFont();
    LargerMessageFont(const LargerMessageFont&) = delete;
    LargerMessageFont& operator=(const LargerMessageFont&) = delete;

private:
    NONCLIENTMETRICSW original_ = SystemMetrics();
};

// The pixels that a text takes in a control: its width on one line, or its height when it is broken
// into lines of the control's width. The ampersand before a key takes none.
SIZE NeededSize(HWND control, const std::wstring& text, bool wrapped);

// The controls that are shown lie inside the dialog, and none lies over another.
void ExpectControlsApart(const OpenDialog& dialog);

// The user's switch between light and dark programs, as it was before when this goes.
class ThemeSwitch {
public:
    void WantLight(DWORD light) const;

    // As the system reports the change.
    static void Report(const OpenDialog& dialog);

private:
    static constexpr char kSettings[] =
        "Software\\Microsoft\\Windows\\CurrentVersion\\Themes\\Personalize";
    const ScratchKey settings_{HKEY_CURRENT_USER, kSettings};
};

// A label, or another control that asks with that message, is told to draw itself in these colours.
void ExpectColours(const OpenDialog& dialog, UINT message, int control, ColourPair colours);

// The same control is left to the system.
void ExpectColoursOfSystem(const OpenDialog& dialog, UINT message, int control);

// All controls grow with the resolution, stay apart, and stand where they were once it is as
// before.
void ExpectResolutionIsFollowed(const OpenDialog& dialog);

}  // namespace depot::test
