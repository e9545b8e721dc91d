// A person in front of the browse dialog.
#pragma once

#include <initializer_list>
#include <string>
#include <vector>

#include "depotbrowser/browse_ids.h"
#include "depotbrowser/dialog_user.h"
#include "platform/win32.h"
// After the Windows headers.
#include <commctrl.h>

namespace depot::test {

using Names = std::vector<std::wstring>;

// The open browse dialog, as seen and used from another thread.
class OpenBrowser : public OpenDialog {
public:
    explicit OpenBrowser(const OpenDialog& dialog) : OpenDialog(dialog) {}

    // What the list shows, row by row, and one row with all its columns.
    Names Rows() const;
    Names Cells(int row) const;
    Names SelectedRows() const;
    // The names of the depots, or of the folders that are known below the selected one.
    Names Depots() const;
    Names FoldersBelowSelected() const;
    std::wstring SelectedInTree() const;

    bool WaitForRows(const Names& rows) const;
    bool WaitForRow(const std::wstring& name) const;
    bool WaitForSelection(const Names& rows) const;
    // Waits for a text in the message line.
    bool WaitForMessage(const std::wstring& part) const;
    bool WaitForLocation(const std::wstring& location) const;

    // Gives a control the focus, as a click into it does.
    void Focus(int control) const;
    // Selects a row with the mouse's effect, or the depot of that name in the tree.
    void SelectRow(const std::wstring& name) const;
    void SelectDepot(const std::wstring& name) const;
    void DoubleClickRow(const std::wstring& name) const;
    // Clicks with the mouse alone, whatever is selected.
    void ClickRow(const std::wstring& name) const;
    // Types into the file name field what shall stand there.
    void TypeName(const std::wstring& text) const;
    // Clicks on the header of a column.
    void ClickHeader(int column) const;

    bool IsShown(int control) const;
    bool IsUsable(int control) const { return IsWindowEnabled(Control(control)) != FALSE; }

private:
    int RowOf(const std::wstring& name) const;
    void PostToRow(const std::wstring& name, std::initializer_list<UINT> messages) const;
    Names TreeTexts(HTREEITEM first) const;
};

// Waits for the question for credentials that comes after `previous`, which is closed by then.
OpenDialog WaitForPrompt(HWND previous = nullptr);

// A box that asks a question: waits for it and presses a button, or Enter.
void AnswerQuestion(const std::wstring& part, int button);
void AnswerQuestionByEnter(const std::wstring& part);

// Recognises a browse dialog; with a name, the one that has it in its field.
bool IsBrowser(HWND window);
DialogUser::Recognises BrowserWithName(const std::wstring& fileName);

}  // namespace depot::test
