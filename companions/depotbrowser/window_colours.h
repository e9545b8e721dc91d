// The colours of a dialog: the system's, or dark ones where the user wants them.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <type_traits>

#include "depotbrowser/dark_palette.h"
#include "platform/handles.h"
#include "platform/win32.h"

namespace depot {

struct BrushDeleter {
    void operator()(HBRUSH brush) const { DeleteObject(brush); }
};
using UniqueBrush = std::unique_ptr<std::remove_pointer_t<HBRUSH>, BrushDeleter>;

// Borrows the controls of the dialog, those that it has when it is made. What the system draws
// itself it draws in its own dark theme, as far as it has one.
class WindowColours {
public:
    explicit WindowColours(HWND dialog);

    // The user may have chosen others. Called for each change of the system's settings.
    void Update();

    // Answers the dialog's messages that ask for the colours of a control; nothing for any other
    // message, and where the system's own serve.
    std::optional<INT_PTR> Answer(UINT message, WPARAM first) const;

    // The same for the notification with which the tree asks for the colours of its items.
    std::optional<LRESULT> AnswerDraw(const NMHDR& header) const;

    // For what the dialog draws itself.
    Palette Current() const;

private:
    void Use();
    void UseInTitle();
    template <class Work>
    void ForEachControl(Work work) const;
    void UseIn(HWND control, const std::wstring& kind, const Palette& palette);
    void UseInList(HWND list, const Palette& palette);
    void UseTheme(HWND control, const wchar_t* light, const wchar_t* dark) const;
    static LRESULT CALLBACK DrawHeader(HWND list, UINT message, WPARAM first, LPARAM second,
                                       UINT_PTR id, DWORD_PTR self) noexcept;

    HWND dialog_;
    bool dark_ = false;
    bool wasDark_ = false;      // when it was used last
    bool lightHeader_ = false;  // its theme has a ground on which no light text can be read
    UniqueModule frames_;       // which draws title bars; null until one is to be dark
    UniqueBrush dialogBrush_, fieldBrush_;  // null in the system's colours
};

}  // namespace depot
