// The names that are offered while one is typed.
#pragma once

#include <string>
#include <vector>

#include "depotbrowser/file_list.h"
#include "platform/not_copied.h"
#include "platform/win32.h"

namespace depot {

// A list over the dialog with the shown names that begin with what stands in the field. It never
// takes the keyboard: the field keeps it, and the dialog hands on the keys that the list knows.
class NameSuggestions : NotCopied {
public:
    NameSuggestions(HWND dialog, const FileList& list, const std::wstring& accessibleName);
    ~NameSuggestions();

    // The user typed: offers what fits.
    void FieldEdited();
    void Hide();
    bool IsShown() const;

    // Handles a key of the field: the arrows lead through the names, each of which stands in the
    // field then, and Escape brings back what was typed. False when the key is the dialog's.
    bool HandleKey(WPARAM key);
    // The field has lost the focus, perhaps to the list.
    void FocusLeft();
    // A name in the list was clicked.
    void Clicked();

    HWND Control() const { return control_; }

private:
    std::vector<std::wstring> Fitting(const std::wstring& beginning) const;
    void Show(const std::vector<std::wstring>& names);
    void Move(int by);
    void TakeSelected();
    void SetField(const std::wstring& text);

    HWND dialog_;
    HWND field_;
    HWND control_;
    const FileList& list_;
    std::wstring typed_;
    bool filling_ = false;  // while the field is changed from here
};

}  // namespace depot
