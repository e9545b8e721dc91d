// The browse dialog used to save a file.
#include <gtest/gtest.h>

#include "depotbrowser/browse_fixture.h"

namespace depot::test {
namespace {

constexpr LONG kSaveSkein = 27;

class BrowseSaveTest : public BrowseTest {
protected:
    BrowseSaveTest() {
        dialog_->put_Mode(kSaveSkein);
        dialog_->put_FileType(64);
    }

    // Types a name and presses Enter once the folder is loaded.
    static void Save(const OpenBrowser& browser, const std::wstring& name) {
        browser.WaitForRow(L"there.kra");
        browser.TypeName(name);
        browser.Press(VK_RETURN);
    }
};

TEST_F(BrowseSaveTest, NewNameGetsTheExtensionOfTheType) {
    MakeFile("there.kra");
    EXPECT_EQ(kConfirmed, Show([](const OpenBrowser& browser) {
                  EXPECT_EQ(L"Save As", browser.Text(0));
                  EXPECT_EQ(L"&Save", browser.Text(IDOK));
                  Save(browser, L"new");
              }));
    EXPECT_EQ(L"<Work>\\new.kra", ChosenPath());
    EXPECT_FALSE(Exists(At("new.kra")));
}

TEST_F(BrowseSaveTest, QuotedNameIsTakenAsItStands) {
    MakeFile("there.kra");
    EXPECT_EQ(kConfirmed, Show([](const OpenBrowser& browser) { Save(browser, L"\"new.txt\""); }));
    EXPECT_EQ(L"<Work>\\new.txt", ChosenPath());
}

TEST_F(BrowseSaveTest, ExistingFileIsChosenOnlyAfterAYes) {
    MakeFile("there.kra");
    EXPECT_EQ(kConfirmed, Show([](const OpenBrowser& browser) {
                  Save(browser, L"there");
                  AnswerQuestion(L"\"there.kra\" already exists", IDNO);
                  EXPECT_TRUE(IsWindow(browser.Window()));
                  browser.Press(VK_RETURN);
                  AnswerQuestion(L"\"there.kra\" already exists", IDYES);
              }));
    EXPECT_EQ(L"<Work>\\there.kra", ChosenPath());
}

TEST_F(BrowseSaveTest, NothingIsAskedWhereTheClientDoesNotWantIt) {
    MakeFile("there.kra");
    dialog_->put_AskBeforeOverwriting(0);
    EXPECT_EQ(kConfirmed, Show([](const OpenBrowser& browser) { Save(browser, L"there.kra"); }));
    EXPECT_EQ(L"<Work>\\there.kra", ChosenPath());
}

TEST_F(BrowseSaveTest, InitialNameStandsInTheFieldAndItsFolderIsOpen) {
    MakeFile("Sessions\\there.kra");
    const std::string plain = At("Sessions\\mine.kra");
    for (const std::wstring& path :
         {std::wstring(L"<Work>\\Sessions\\mine.kra"), std::wstring(plain.begin(), plain.end())}) {
        dialog_->put_InitialFileName(Bstr(path).Get());
        EXPECT_EQ(kConfirmed, Show([](const OpenBrowser& browser) {
                      browser.WaitForRow(L"there.kra");
                      EXPECT_EQ(L"mine.kra", browser.Text(CONTROL_NAME));
                      EXPECT_EQ(L"Work profiles\\Sessions", browser.Text(CONTROL_LOCATION));
                      browser.Press(VK_RETURN);
                  }));
        EXPECT_EQ(L"<Work>\\Sessions\\mine.kra", ChosenPath());
    }
}

TEST_F(BrowseSaveTest, PlaceThatCannotBeWrittenIsRefusedWithTheReason) {
    MakeFile("there.kra");
    const UniqueHandle held = OwnFile(
        CreateFileA(At("there.kra").c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    EXPECT_EQ(kNotConfirmed, Show([](const OpenBrowser& browser) {
                  Save(browser, L"there.kra");
                  browser.WaitForMessage(L"permission to write to \"<Work>\\there.kra\".\n");
                  browser.WaitForFocus(CONTROL_NAME);
                  browser.Press(VK_ESCAPE);
              }));
}

TEST_F(BrowseSaveTest, NamesThatNoFileCanHaveAreRefused) {
    MakeFile("there.kra");
    EXPECT_EQ(kNotConfirmed, Show([](const OpenBrowser& browser) {
                  Save(browser, L"a|b");
                  browser.WaitForMessage(L"\"a|b\" is not a valid name.");
                  Save(browser, std::wstring(252, L'n'));
                  browser.WaitForMessage(L"nnn\" is not a valid name.");
                  Save(browser, L"\u65E5");
                  browser.WaitForMessage(L"\"\u65E5\" is not a valid name.");
                  browser.Press(VK_ESCAPE);
              }));
}

TEST_F(BrowseSaveTest, NameOf255CharactersIsAccepted) {
    // Deeper down no path of the file system has room for it.
    depots_.Text("Work", "Path1", "C:\\");
    EXPECT_EQ(kConfirmed, Show([](const OpenBrowser& browser) {
                  browser.WaitForRow(L"windows");
                  browser.TypeName(std::wstring(251, L'x'));
                  browser.Press(VK_RETURN);
              }));
    EXPECT_EQ(L"<Work>\\" + std::wstring(251, L'x') + L".kra", ChosenPath());
}

TEST_F(BrowseSaveTest, PathThatIsTooLongIsRefusedInPlace) {
    MakeFile("there.kra");
    EXPECT_EQ(kNotConfirmed, Show([](const OpenBrowser& browser) {
                  Save(browser, std::wstring(251, L'x'));
                  browser.WaitForMessage(L"permission to write");
                  browser.Press(VK_ESCAPE);
              }));
}

TEST_F(BrowseSaveTest, NameOfAFolderOpensIt) {
    MakeFile("there.kra");
    MakeFile("Sub\\inner.kra");
    EXPECT_EQ(kNotConfirmed, Show([](const OpenBrowser& browser) {
                  Save(browser, L"Sub");
                  browser.WaitForRows({L"inner.kra"});
                  browser.Press(VK_ESCAPE);
              }));
}

}  // namespace
}  // namespace depot::test
