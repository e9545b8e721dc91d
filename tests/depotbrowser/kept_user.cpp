#include "depotbrowser/kept_user.h"

#include <gtest/gtest.h>

namespace depot::test {
namespace {

constexpr int kColumns = 5;
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

BOOL CALLBACK Examine(HWND window, LPARAM parameter) {
    DWORD process = 0;
    GetWindowThreadProcessId(window, &process);
    if (process != GetCurrentProcessId() || GetDlgItem(window, CONTROL_KEPT_VALUES) == nullptr) {
        return TRUE;
    }
    *reinterpret_cast<HWND*>(parameter) = window;
    return FALSE;
}

HWND FindKept() {
    HWND found = nullptr;
    EnumWindows(Examine, reinterpret_cast<LPARAM>(&found));
    return found;
}

}  // namespace

std::vector<Names> OpenKept::Rows(int list) const {
    const HWND control = Control(list);
    std::vector<Names> rows;
    for (int row = 0; row < ListView_GetItemCount(control); ++row) {
        Names& cells = rows.emplace_back();
        for (int column = 0; column < kColumns; ++column) {
            cells.push_back(CellText(control, row, column));
        }
    }
    return rows;
}

bool OpenKept::WaitForCount(int count, int list) const {
    const HWND control = Control(list);
    const bool shown = Eventually([&] { return ListView_GetItemCount(control) == count; });
    EXPECT_TRUE(shown) << ListView_GetItemCount(control) << " rows, expected " << count;
    return shown;
}

bool OpenKept::WaitForMessage(const std::wstring& part) const {
    const bool shown =
        Eventually([&] { return Text(CONTROL_KEPT_MESSAGE).find(part) != std::wstring::npos; });
    EXPECT_TRUE(shown) << testing::PrintToString(Text(CONTROL_KEPT_MESSAGE));
    return shown;
}

bool OpenKept::WaitUntilUsable(int control) const {
    const bool usable = Eventually([&] { return IsUsable(control); });
    EXPECT_TRUE(usable) << control << ": " << testing::PrintToString(Text(CONTROL_KEPT_MESSAGE));
    return usable;
}

void OpenKept::Use(int control) const {
    if (WaitUntilUsable(control)) Click(control);
}

void OpenKept::Close() const {
    Click(IDCANCEL);
    EXPECT_TRUE(Eventually([this] { return IsWindow(Window()) == FALSE; }));
}

OpenKept WaitForKept() {
    HWND window = nullptr;
    EXPECT_TRUE(Eventually([&] {
        window = FindKept();
        return window != nullptr && IsWindowVisible(window) && GetForegroundWindow() == window;
    })) << "no window of kept files";
    return OpenKept(window);
}

OpenKept OpenKeptFrom(const OpenBrowser& browser) {
    EXPECT_TRUE(Eventually([&] { return browser.IsShown(CONTROL_KEPT_LINE); }));
    browser.Click(CONTROL_KEPT_LINE);
    return WaitForKept();
}

}  // namespace depot::test
