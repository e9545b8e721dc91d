// Names of all letters that the code page has, in the browse dialog.
#include <gtest/gtest.h>

#include <algorithm>

#include "depotbrowser/browse_fixture.h"
#include "platform/wide_text.h"

namespace depot::test {
namespace {

constexpr wchar_t kJapanese[] = L"\u4E88\u5B9A\u8868";
constexpr wchar_t kWestern[] = L"B\u00FCro";

// The second bytes of some are separators, bars or letters in a code page.
constexpr const wchar_t* kNames[] = {
    L"B\u00FCro.kra", L"\u30BD.kra", L"\u30EC\u30DD\u30FC\u30C8.kra", L"\u5341.kra",
    L"\u8868.kra",    L"\uBCF4.kra", L"\u041F\u043B\u0430\u043D.kra", L"\U0001F600.kra",
};

std::string Narrow(const std::wstring& text) {
    return ExactAnsiFromWide(text).value();
}

Names HeldNames(bool held) {
    Names names;
    for (const wchar_t* name : kNames) {
        if (ExactAnsiFromWide(name).has_value() == held) names.emplace_back(name);
    }
    return names;
}

class BrowseNamesTest : public BrowseTest {
protected:
    BrowseNamesTest() { DefineDepot(Narrow(own_), Narrow(own_), 0); }

    void MakeOwn(const std::wstring& name) const { MakeFileIn(Narrow(own_), Narrow(name), "x"); }
    bool IsThere(const std::wstring& name) const {
        const std::wstring path = WideFromAnsi(folder_.At(Narrow(own_))) + L"\\" + name;
        return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
    }
    std::wstring Display(const std::wstring& name) const { return L"<" + own_ + L">\\" + name; }

    static void Edit(const OpenBrowser& browser, const std::wstring& row,
                     const std::wstring& name) {
        browser.SelectRow(row);
        browser.Press(VK_F2);
        TypeInPlace(browser, name);
    }
    static void TypeInPlace(const OpenBrowser& browser, const std::wstring& name) {
        const HWND list = browser.Control(CONTROL_LIST);
        EXPECT_TRUE(Eventually([&] { return ListView_GetEditControl(list) != nullptr; }));
        // The extension is not selected.
        browser.Press(VK_HOME);
        browser.Press(VK_END, VK_SHIFT);
        browser.Type(name);
        browser.Press(VK_RETURN);
    }
    // As kNames has it, without the extension.
    static Names HeldFolders() {
        Names folders = HeldNames(true);
        for (std::wstring& name : folders) name.resize(name.size() - 4);
        return folders;
    }

    const std::wstring own_ = ExactAnsiFromWide(kJapanese) ? kJapanese : kWestern;
};

TEST_F(BrowseNamesTest, FilesAreShownTypedAndChosenByTheirOwnNames) {
    const Names names = HeldNames(true);
    for (const std::wstring& name : names) MakeOwn(name);
    for (const std::wstring& name : names) {
        SCOPED_TRACE(testing::PrintToString(name));
        EXPECT_EQ(kConfirmed, Show([&](const OpenBrowser& browser) {
                      browser.SelectDepot(own_);
                      for (const std::wstring& row : names) browser.WaitForRow(row);
                      EXPECT_EQ(own_, browser.Text(CONTROL_LOCATION));
                      browser.TypeName(name);
                      browser.Press(VK_RETURN);
                  }));
        EXPECT_EQ(Display(name), ChosenPath());
    }
}

TEST_F(BrowseNamesTest, FileIsSavedInAFolderByItsOwnName) {
    MakeOwn(own_ + L"\\there.kra");
    dialog_->put_Mode(27);
    dialog_->put_FileType(64);
    for (const std::wstring& name : HeldNames(true)) {
        SCOPED_TRACE(testing::PrintToString(name));
        dialog_->put_InitialFileName(Bstr(Display(own_ + L"\\" + name)).Get());
        EXPECT_EQ(kConfirmed, Show([&](const OpenBrowser& browser) {
                      browser.WaitForRow(L"there.kra");
                      EXPECT_EQ(name, browser.Text(CONTROL_NAME));
                      EXPECT_EQ(own_ + L"\\" + own_, browser.Text(CONTROL_LOCATION));
                      browser.Press(VK_RETURN);
                  }));
        EXPECT_EQ(Display(own_ + L"\\" + name), ChosenPath());
    }
}

TEST_F(BrowseNamesTest, FileIsRenamedToANameInItsOwnLetters) {
    std::wstring from = L"plan.kra";
    MakeOwn(from);
    for (const std::wstring& name : HeldNames(true)) {
        SCOPED_TRACE(testing::PrintToString(name));
        Show([&](const OpenBrowser& browser) {
            browser.SelectDepot(own_);
            browser.WaitForRow(from);
            Edit(browser, from, name);
            browser.WaitForRows({name});
            browser.Press(VK_ESCAPE);
        });
        EXPECT_TRUE(IsThere(name));
        EXPECT_FALSE(IsThere(from));
        from = name;
    }
}

TEST_F(BrowseNamesTest, FoldersAreMadeByNamesInTheirOwnLettersAndOneIsEntered) {
    MakeOwn(L"there.kra");
    dialog_->put_Mode(27);
    dialog_->put_FileType(64);
    const Names folders = HeldFolders();
    const std::wstring& last = folders.back();
    EXPECT_EQ(kConfirmed, Show([&](const OpenBrowser& browser) {
                  browser.SelectDepot(own_);
                  browser.WaitForRow(L"there.kra");
                  for (const std::wstring& folder : folders) {
                      browser.Click(CONTROL_NEW_FOLDER);
                      TypeInPlace(browser, folder);
                      browser.WaitForSelection({folder});
                      EXPECT_TRUE(IsThere(folder));
                  }
                  for (const std::wstring& folder : folders) browser.WaitForRow(folder);
                  browser.DoubleClickRow(last);
                  browser.WaitForLocation(own_ + L"\\" + last);
                  browser.TypeName(last + L".kra");
                  browser.Press(VK_RETURN);
              }));
    EXPECT_EQ(Display(last + L"\\" + last + L".kra"), ChosenPath());
    EXPECT_FALSE(IsThere(L"New folder"));
}

TEST_F(BrowseNamesTest, FileIsCopiedAndDeletedByItsOwnNameAlone) {
    const Names names = HeldNames(true);
    for (const std::wstring& name : names) MakeOwn(name);
    Show([&](const OpenBrowser& browser) {
        browser.SelectDepot(own_);
        for (const std::wstring& name : names) {
            const std::wstring copy = name.substr(0, name.size() - 4) + L" - copy.kra";
            browser.SelectRow(name);
            browser.Click(CONTROL_MAKE_COPY);
            browser.WaitForSelection({copy});
            browser.SelectRow(name);
            browser.Press(VK_DELETE);
            AnswerQuestion(L"delete \"" + name + L"\"?", IDYES);
            EXPECT_TRUE(Eventually([&] {
                const Names rows = browser.Rows();
                return std::find(rows.begin(), rows.end(), name) == rows.end();
            }));
            EXPECT_FALSE(IsThere(name));
            EXPECT_TRUE(IsThere(copy));
        }
        browser.Press(VK_ESCAPE);
    });
}

TEST_F(BrowseNamesTest, NameThatTheCodePageLacksIsRefusedInPlace) {
    MakeOwn(L"plan.kra");
    dialog_->put_Mode(27);
    for (const std::wstring& name : HeldNames(false)) {
        SCOPED_TRACE(testing::PrintToString(name));
        const std::wstring refusal = L"\"" + name + L"\" is not a valid name.";
        EXPECT_EQ(kNotConfirmed, Show([&](const OpenBrowser& browser) {
                      browser.SelectDepot(own_);
                      browser.WaitForRow(L"plan.kra");
                      browser.TypeName(name);
                      browser.Press(VK_RETURN);
                      browser.WaitForMessage(refusal);
                      Edit(browser, L"plan.kra", name);
                      browser.WaitForMessage(refusal);
                      browser.WaitForRows({L"plan.kra"});
                      // The name stays to be edited.
                      const HWND list = browser.Control(CONTROL_LIST);
                      EXPECT_TRUE(Eventually([&] {
                          return OpenDialog(ListView_GetEditControl(list)).Text(0) == name;
                      }));
                      browser.Press(VK_ESCAPE);
                      browser.Press(VK_ESCAPE);
                  }));
        EXPECT_TRUE(IsThere(L"plan.kra"));
    }
}

}  // namespace
}  // namespace depot::test
