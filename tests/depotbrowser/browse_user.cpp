#include "depotbrowser/browse_user.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace depot::test {
namespace {

constexpr int kColumns = 4;
constexpr int kLongestText = 600;

std::wstring CellText(HWND list, int row, int column) {
    std::wstring text(kLongestText, L'\0');
    LVITEMW item = {};
    item.iSubItem = column;
    item.pszText = text.data();
    item.cchTextMax = kLongestText;
    const LRESULT length = SendMessageW(list, LVM_GETITEMTEXTW, static_cast<WPARAM>(row),
                                        reinterpret_cast<LPARAM>(&item));
    text.resize(static_cast<std::size_t>(length));
    return text;
}

std::wstring TreeText(HWND tree, HTREEITEM handle) {
    if (handle == nullptr) return {};
    std::wstring text(kLongestText, L'\0');
    TVITEMW item = {};
    item.mask = TVIF_TEXT;
    item.hItem = handle;
    item.pszText = text.data();
    item.cchTextMax = kLongestText;
    SendMessageW(tree, TVM_GETITEMW, 0, reinterpret_cast<LPARAM>(&item));
    return text.c_str();
}

constexpr int kQuestionText = 0xFFFF;

struct QuestionSearch {
    const std::wstring& part;
    HWND found = nullptr;
};

BOOL CALLBACK ExamineQuestion(HWND window, LPARAM parameter) {
    auto* const search = reinterpret_cast<QuestionSearch*>(parameter);
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    if (process != GetCurrentProcessId() || GetDlgItem(window, kQuestionText) == nullptr)
        return TRUE;
    const std::wstring text = OpenDialog(window).Text(kQuestionText);
    if (text.find(search->part) == std::wstring::npos) return TRUE;
    search->found = window;
    return FALSE;
}

// From window to next window some systems do not come past one that closes meanwhile.
HWND FindQuestion(const std::wstring& part) {
    QuestionSearch search = {part};
    EnumWindows(ExamineQuestion, reinterpret_cast<LPARAM>(&search));
    return search.found;
}

HWND WaitForQuestion(const std::wstring& part) {
    HWND box = nullptr;
    EXPECT_TRUE(Eventually([&] { return (box = FindQuestion(part)) != nullptr; }))
        << "no question with " << testing::PrintToString(part);
    return box;
}

}  // namespace

Names OpenBrowser::Rows() const {
    const HWND list = Control(CONTROL_LIST);
    Names rows;
    for (int row = 0; row < ListView_GetItemCount(list); ++row) {
        rows.push_back(CellText(list, row, 0));
    }
    return rows;
}

Names OpenBrowser::Cells(int row) const {
    Names cells;
    for (int column = 0; column < kColumns; ++column) {
        cells.push_back(CellText(Control(CONTROL_LIST), row, column));
    }
    return cells;
}

Names OpenBrowser::SelectedRows() const {
    const HWND list = Control(CONTROL_LIST);
    Names rows;
    // A closed window answers 0 to everything.
    for (int last = -1, row; (row = ListView_GetNextItem(list, last, LVNI_SELECTED)) > last;
         last = row) {
        rows.push_back(CellText(list, row, 0));
    }
    return rows;
}

Names OpenBrowser::TreeTexts(HTREEITEM first) const {
    const HWND tree = Control(CONTROL_TREE);
    Names texts;
    for (HTREEITEM item = first; item != nullptr; item = TreeView_GetNextSibling(tree, item)) {
        texts.push_back(TreeText(tree, item));
    }
    return texts;
}

Names OpenBrowser::Depots() const {
    return TreeTexts(TreeView_GetRoot(Control(CONTROL_TREE)));
}

Names OpenBrowser::FoldersBelowSelected() const {
    const HWND tree = Control(CONTROL_TREE);
    return TreeTexts(TreeView_GetChild(tree, TreeView_GetSelection(tree)));
}

std::wstring OpenBrowser::SelectedInTree() const {
    const HWND tree = Control(CONTROL_TREE);
    return TreeText(tree, TreeView_GetSelection(tree));
}

bool OpenBrowser::WaitForRows(const Names& rows) const {
    const bool there = Eventually([&] { return Rows() == rows; });
    EXPECT_TRUE(there) << "the list shows " << testing::PrintToString(Rows()) << ", the message "
                       << testing::PrintToString(Text(CONTROL_MESSAGE));
    return there;
}

bool OpenBrowser::WaitForRow(const std::wstring& name) const {
    const bool there = Eventually([&] { return RowOf(name) >= 0; });
    EXPECT_TRUE(there) << "no row " << testing::PrintToString(name) << " among "
                       << testing::PrintToString(Rows());
    return there;
}

bool OpenBrowser::WaitForSelection(const Names& rows) const {
    const bool there = Eventually([&] { return SelectedRows() == rows; });
    EXPECT_TRUE(there) << "selected are " << testing::PrintToString(SelectedRows());
    return there;
}

bool OpenBrowser::WaitForMessage(const std::wstring& part) const {
    const auto holds = [&] { return Text(CONTROL_MESSAGE).find(part) != std::wstring::npos; };
    const bool there = Eventually(holds);
    EXPECT_TRUE(there) << "the message is " << testing::PrintToString(Text(CONTROL_MESSAGE));
    return there;
}

bool OpenBrowser::WaitForLocation(const std::wstring& location) const {
    return WaitForText(CONTROL_LOCATION, location);
}

int OpenBrowser::RowOf(const std::wstring& name) const {
    const Names rows = Rows();
    const auto found = std::find(rows.begin(), rows.end(), name);
    return found == rows.end() ? -1 : static_cast<int>(found - rows.begin());
}

void OpenBrowser::Focus(int control) const {
    SendMessageW(Window(), WM_NEXTDLGCTL, reinterpret_cast<WPARAM>(Control(control)), TRUE);
    WaitForFocus(control);
}

void OpenBrowser::SelectRow(const std::wstring& name) const {
    WaitForRow(name);
    Focus(CONTROL_LIST);
    const HWND list = Control(CONTROL_LIST);
    ListView_SetItemState(list, -1, 0, LVIS_SELECTED);
    ListView_SetItemState(list, RowOf(name), LVIS_SELECTED | LVIS_FOCUSED,
                          LVIS_SELECTED | LVIS_FOCUSED);
}

void OpenBrowser::SelectDepot(const std::wstring& name) const {
    const HWND tree = Control(CONTROL_TREE);
    for (HTREEITEM item = TreeView_GetRoot(tree); item != nullptr;
         item = TreeView_GetNextSibling(tree, item)) {
        if (TreeText(tree, item) == name) TreeView_SelectItem(tree, item);
    }
    EXPECT_EQ(name, SelectedInTree());
}

void OpenBrowser::DoubleClickRow(const std::wstring& name) const {
    SelectRow(name);
    ClickRow(name);
    PostToRow(name, {WM_LBUTTONDBLCLK, WM_LBUTTONUP});
}

void OpenBrowser::ClickRow(const std::wstring& name) const {
    PostToRow(name, {WM_LBUTTONDOWN, WM_LBUTTONUP});
}

void OpenBrowser::PostToRow(const std::wstring& name, std::initializer_list<UINT> messages) const {
    RECT row = {};
    ListView_GetItemRect(Control(CONTROL_LIST), RowOf(name), &row, LVIR_LABEL);
    const LPARAM place = MAKELPARAM(row.left + 2, row.top + 2);
    for (const UINT message : messages) {
        PostMessageW(Control(CONTROL_LIST), message, 0, place);
    }
}

void OpenBrowser::TypeName(const std::wstring& text) const {
    Focus(CONTROL_NAME);
    SendMessageW(Control(CONTROL_NAME), EM_SETSEL, 0, -1);
    Type(text);
    WaitForText(CONTROL_NAME, text);
}

void OpenBrowser::ClickHeader(int column) const {
    const HWND header = ListView_GetHeader(Control(CONTROL_LIST));
    RECT item = {};
    Header_GetItemRect(header, column, &item);
    const LPARAM place = MAKELPARAM((item.left + item.right) / 2, (item.top + item.bottom) / 2);
    PostMessageW(header, WM_LBUTTONDOWN, MK_LBUTTON, place);
    PostMessageW(header, WM_LBUTTONUP, 0, place);
}

bool OpenBrowser::IsShown(int control) const {
    return (GetWindowLongW(Control(control), GWL_STYLE) & WS_VISIBLE) != 0;
}

OpenDialog WaitForPrompt(HWND previous) {
    HWND window = nullptr;
    EXPECT_TRUE(Eventually([&] {
        window = FindWindowW(nullptr, L"Directory Logon");
        return window != nullptr && window != previous && GetForegroundWindow() == window;
    }));
    return OpenDialog(window);
}

void AnswerQuestionByEnter(const std::wstring& part) {
    const HWND box = WaitForQuestion(part);
    EXPECT_TRUE(Eventually([box] { return GetForegroundWindow() == box; }));
    if (box != nullptr) OpenDialog(box).Press(VK_RETURN);
    EXPECT_TRUE(Eventually([&] { return FindQuestion(part) == nullptr; }));
}

void AnswerQuestion(const std::wstring& part, int button) {
    const HWND box = WaitForQuestion(part);
    if (box != nullptr) PostMessageW(box, WM_COMMAND, static_cast<WPARAM>(button), 0);
    EXPECT_TRUE(Eventually([&] { return FindQuestion(part) == nullptr; }));
}

bool IsBrowser(HWND window) {
    return GetDlgItem(window, CONTROL_LIST) != nullptr &&
           GetDlgItem(window, CONTROL_NAME) != nullptr;
}

DialogUser::Recognises BrowserWithName(const std::wstring& fileName) {
    return [fileName](HWND window) {
        return IsBrowser(window) && OpenDialog(window).Text(CONTROL_NAME) == fileName;
    };
}

}  // namespace depot::test
