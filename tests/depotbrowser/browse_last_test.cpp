// What the default button of the browse dialog acts on: what was selected or typed last.
#include <gtest/gtest.h>

#include "depotbrowser/browse_fixture.h"

namespace depot::test {
namespace {

class BrowseLastTest : public BrowseTest {
protected:
    BrowseLastTest() {
        MakeFile("Sub\\inner.kra");
        MakeFile("there.kra");
    }
    void Saves() const {
        dialog_->put_Mode(27);
        dialog_->put_FileType(64);
    }
};

TEST_F(BrowseLastTest, OpenOpensTheFolderThatWasSelectedAfterAFile) {
    EXPECT_EQ(kConfirmed, Show([](const OpenBrowser& browser) {
                  browser.SelectRow(L"there.kra");
                  browser.WaitForText(CONTROL_NAME, L"there.kra");
                  browser.SelectRow(L"Sub");
                  browser.WaitForText(CONTROL_NAME, L"");
                  browser.Click(IDOK);
                  browser.WaitForRows({L"inner.kra"});
                  browser.WaitForLocation(L"Work profiles\\Sub");
                  browser.SelectRow(L"inner.kra");
                  browser.Click(IDOK);
              }));
    EXPECT_EQ(L"<Work>\\Sub\\inner.kra", ChosenPath());
}

TEST_F(BrowseLastTest, OpenOpensTheFolderThatWasSelectedAfterANameWasTyped) {
    EXPECT_EQ(kNotConfirmed, Show([](const OpenBrowser& browser) {
                  browser.WaitForRow(L"Sub");
                  browser.TypeName(L"there.kra");
                  browser.SelectRow(L"Sub");
                  browser.Click(IDOK);
                  browser.WaitForRows({L"inner.kra"});
                  browser.Press(VK_ESCAPE);
              }));
}

TEST_F(BrowseLastTest, SaveOpensTheSelectedFolderAndThenStoresUnderTheTypedName) {
    Saves();
    EXPECT_EQ(kConfirmed, Show([](const OpenBrowser& browser) {
                  browser.WaitForRow(L"Sub");
                  browser.TypeName(L"mine");
                  EXPECT_EQ(L"&Save", browser.Text(IDOK));
                  browser.SelectRow(L"Sub");
                  browser.WaitForText(IDOK, L"&Open");
                  browser.Click(IDOK);
                  browser.WaitForRows({L"inner.kra"});
                  browser.WaitForText(CONTROL_NAME, L"mine");
                  browser.WaitForText(IDOK, L"&Save");
                  browser.Click(IDOK);
              }));
    EXPECT_EQ(L"<Work>\\Sub\\mine.kra", ChosenPath());
}

TEST_F(BrowseLastTest, NameThatIsTypedAfterAFolderWasSelectedIsActedOn) {
    Saves();
    EXPECT_EQ(kConfirmed, Show([](const OpenBrowser& browser) {
                  browser.SelectRow(L"Sub");
                  browser.TypeName(L"mine");
                  browser.WaitForText(IDOK, L"&Save");
                  browser.Click(IDOK);
              }));
    EXPECT_EQ(L"<Work>\\mine.kra", ChosenPath());
}

TEST_F(BrowseLastTest, EnterInTheFieldIsAboutWhatStandsThere) {
    Saves();
    EXPECT_EQ(kConfirmed, Show([](const OpenBrowser& browser) {
                  browser.WaitForRow(L"Sub");
                  browser.TypeName(L"mine");
                  browser.SelectRow(L"Sub");
                  browser.Focus(CONTROL_NAME);
                  browser.Press(VK_RETURN);
              }));
    EXPECT_EQ(L"<Work>\\mine.kra", ChosenPath());
}

TEST_F(BrowseLastTest, NameOfASelectedFileLeavesTheFieldWithItsFolder) {
    MakeFileIn("Team", "other.kra", "");
    for (const bool saves : {false, true}) {
        if (saves) Saves();
        EXPECT_EQ(kNotConfirmed, Show([](const OpenBrowser& browser) {
                      browser.SelectRow(L"there.kra");
                      browser.WaitForText(CONTROL_NAME, L"there.kra");
                      browser.SelectDepot(L"Team profiles");
                      browser.WaitForRows({L"other.kra"});
                      EXPECT_EQ(L"", browser.Text(CONTROL_NAME));
                      browser.Press(VK_ESCAPE);
                  }));
    }
}

TEST_F(BrowseLastTest, InitialNameStaysOnlyWhereItCanBeMeant) {
    dialog_->put_InitialFileName(Bstr(L"<Work>\\Sub\\inner.kra").Get());
    for (const bool saves : {false, true}) {
        if (saves) Saves();
        EXPECT_EQ(kNotConfirmed, Show([&](const OpenBrowser& browser) {
                      browser.WaitForRows({L"inner.kra"});
                      EXPECT_EQ(L"inner.kra", browser.Text(CONTROL_NAME));
                      browser.Press(VK_UP, VK_MENU);
                      browser.WaitForSelection({L"Sub"});
                      EXPECT_EQ(saves ? L"inner.kra" : L"", browser.Text(CONTROL_NAME));
                      browser.Press(VK_ESCAPE);
                  }));
    }
}

TEST_F(BrowseLastTest, FolderThatTheUserCameFromIsNoChoice) {
    Saves();
    EXPECT_EQ(kConfirmed, Show([](const OpenBrowser& browser) {
                  browser.DoubleClickRow(L"Sub");
                  browser.WaitForRows({L"inner.kra"});
                  browser.TypeName(L"mine");
                  browser.Press(VK_UP, VK_MENU);
                  browser.WaitForSelection({L"Sub"});
                  EXPECT_EQ(L"&Save", browser.Text(IDOK));
                  browser.Click(IDOK);
              }));
    EXPECT_EQ(L"<Work>\\mine.kra", ChosenPath());
}

TEST_F(BrowseLastTest, LoadingAnewKeepsWhatIsActedOn) {
    Saves();
    EXPECT_EQ(kConfirmed, Show([this](const OpenBrowser& browser) {
                  browser.SelectRow(L"there.kra");
                  browser.TypeName(L"mine");
                  MakeFile("new.kra");
                  browser.Press(VK_F5);
                  browser.WaitForRow(L"new.kra");
                  browser.WaitForSelection({L"there.kra"});
                  EXPECT_EQ(L"mine", browser.Text(CONTROL_NAME));
                  browser.Click(IDOK);
              }));
    EXPECT_EQ(L"<Work>\\mine.kra", ChosenPath());
}

}  // namespace
}  // namespace depot::test
