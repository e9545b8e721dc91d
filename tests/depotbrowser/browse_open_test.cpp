// The browse dialog used to open files.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "depotbrowser/browse_fixture.h"

namespace depot::test {
namespace {

using BrowseOpenTest = BrowseTest;

TEST_F(BrowseOpenTest, DepotsStandInTheirOrderWithTheDefaultOneSelected) {
    depots_.Dword("Team", "DefaultDepot", 1);
    folder_.MakeFile("Team\\a.kra", "");
    EXPECT_EQ(kNotConfirmed, Show([](const OpenBrowser& browser) {
                  browser.WaitForRows({L"a.kra"});
                  EXPECT_EQ((Names{L"Work profiles", L"Team profiles"}), browser.Depots());
                  EXPECT_EQ(L"Team profiles", browser.SelectedInTree());
                  EXPECT_EQ(L"Team profiles", browser.Text(CONTROL_LOCATION));
                  browser.Press(VK_ESCAPE);
              }));
}

TEST_F(BrowseOpenTest, NameThatIsTypedIsChosenAsDisplayPath) {
    MakeFile("plan.kra");
    EXPECT_EQ(kConfirmed, Show([](const OpenBrowser& browser) {
                  browser.WaitForRow(L"plan.kra");
                  browser.TypeName(L"PLAN.kra");
                  browser.Press(VK_RETURN);
              }));
    EXPECT_EQ(L"<Work>\\plan.kra", ChosenPath());
    EXPECT_EQ((Names{L"<Work>\\plan.kra"}), ChosenPaths());
    VARIANT files = {};
    ASSERT_EQ(S_OK, dialog_->get_ChosenFiles(&files));
    ASSERT_EQ(VT_ARRAY | VT_VARIANT, V_VT(&files));
    const auto* const texts = static_cast<const VARIANT*>(V_ARRAY(&files)->pvData);
    ASSERT_EQ(1u, V_ARRAY(&files)->rgsabound[0].cElements);
    EXPECT_EQ(L"<Work>\\plan.kra", std::wstring(V_BSTR(texts)));
    VariantClear(&files);
    EXPECT_EQ(E_POINTER, dialog_->get_ChosenFiles(nullptr));
}

TEST_F(BrowseOpenTest, DoubleClickOpensAFolderAndThenChoosesAFile) {
    MakeFile("Sessions\\one.kra");
    EXPECT_EQ(kConfirmed, Show([](const OpenBrowser& browser) {
                  browser.DoubleClickRow(L"Sessions");
                  browser.WaitForRows({L"one.kra"});
                  EXPECT_EQ(L"Sessions", browser.SelectedInTree());
                  EXPECT_EQ(L"Work profiles\\Sessions", browser.Text(CONTROL_LOCATION));
                  browser.DoubleClickRow(L"one.kra");
              }));
    EXPECT_EQ(L"<Work>\\Sessions\\one.kra", ChosenPath());
}

TEST_F(BrowseOpenTest, EscapeCancelsAndForgetsAnEarlierChoice) {
    MakeFile("a.kra");
    EXPECT_EQ(kConfirmed,
              Show([](const OpenBrowser& browser) { browser.DoubleClickRow(L"a.kra"); }));
    EXPECT_EQ(kNotConfirmed, Show([](const OpenBrowser& browser) {
                  browser.SelectRow(L"a.kra");
                  browser.Press(VK_ESCAPE);
              }));
    EXPECT_EQ(L"", ChosenPath());
    EXPECT_EQ(Names{}, ChosenPaths());
}

TEST_F(BrowseOpenTest, SelectedFileStandsInTheNameFieldAndOpenChoosesIt) {
    MakeFile("a.kra");
    MakeFile("b.kra");
    EXPECT_EQ(kConfirmed, Show([](const OpenBrowser& browser) {
                  browser.SelectRow(L"b.kra");
                  browser.WaitForText(CONTROL_NAME, L"b.kra");
                  browser.Click(IDOK);
              }));
    EXPECT_EQ(L"<Work>\\b.kra", ChosenPath());
}

TEST_F(BrowseOpenTest, SeveralSelectedFilesAreChosenInTheOrderOfTheList) {
    for (const char* const name : {"c.kra", "a.kra", "b.kra"}) MakeFile(name);
    dialog_->put_AllowMultipleSelection(1);
    EXPECT_EQ(kConfirmed, Show([](const OpenBrowser& browser) {
                  browser.SelectRow(L"a.kra");
                  browser.Press(VK_DOWN, VK_SHIFT);
                  browser.Press(VK_DOWN, VK_SHIFT);
                  browser.WaitForText(CONTROL_NAME, L"\"a.kra\" \"b.kra\" \"c.kra\"");
                  browser.Press(VK_RETURN);
              }));
    EXPECT_EQ((Names{L"<Work>\\a.kra", L"<Work>\\b.kra", L"<Work>\\c.kra"}), ChosenPaths());
    EXPECT_EQ(L"<Work>\\a.kra", ChosenPath());
}

TEST_F(BrowseOpenTest, SeveralQuotedNamesAreChosen) {
    for (const char* const name : {"a.kra", "b.kra"}) MakeFile(name);
    dialog_->put_AllowMultipleSelection(1);
    EXPECT_EQ(kConfirmed, Show([](const OpenBrowser& browser) {
                  browser.WaitForRow(L"b.kra");
                  browser.TypeName(L"\"b.kra\" \"a.kra\"");
                  browser.Press(VK_RETURN);
              }));
    EXPECT_EQ((Names{L"<Work>\\b.kra", L"<Work>\\a.kra"}), ChosenPaths());
}

TEST_F(BrowseOpenTest, OnlyOneFileCanBeSelectedUnlessSeveralAreAllowed) {
    for (const char* const name : {"a.kra", "b.kra"}) MakeFile(name);
    EXPECT_EQ(kNotConfirmed, Show([](const OpenBrowser& browser) {
                  browser.SelectRow(L"a.kra");
                  browser.Press(VK_DOWN, VK_SHIFT);
                  browser.WaitForSelection({L"b.kra"});
                  browser.TypeName(L"\"a.kra\" \"b.kra\"");
                  browser.Press(VK_RETURN);
                  browser.WaitForMessage(L"is not a valid name");
                  browser.Press(VK_ESCAPE);
              }));
}

TEST_F(BrowseOpenTest, ControlASelectsAllFilesWhereSeveralAreAllowed) {
    for (const char* const name : {"a.kra", "b.kra"}) MakeFile(name);
    dialog_->put_AllowMultipleSelection(1);
    EXPECT_EQ(kNotConfirmed, Show([](const OpenBrowser& browser) {
                  browser.SelectRow(L"a.kra");
                  browser.Press('A', VK_CONTROL);
                  browser.WaitForSelection({L"a.kra", L"b.kra"});
                  browser.Press(VK_ESCAPE);
              }));
}

TEST_F(BrowseOpenTest, FileTypeShowsItsFilesAndAllFilesOnDemand) {
    MakeFile("a.kra");
    MakeFile("b.krv");
    MakeFile("c.txt");
    dialog_->put_FileType(64);
    EXPECT_EQ(kNotConfirmed, Show([](const OpenBrowser& browser) {
                  browser.WaitForRows({L"a.kra"});
                  EXPECT_EQ(L"Skein profile (*.kra)", browser.Text(CONTROL_TYPE));
                  browser.Focus(CONTROL_TYPE);
                  browser.Press(VK_DOWN);
                  browser.WaitForText(CONTROL_TYPE, L"All files (*.*)");
                  browser.WaitForRows({L"a.kra", L"b.krv", L"c.txt"});
                  browser.Press(VK_ESCAPE);
              }));
}

TEST_F(BrowseOpenTest, FilesThatATypeHidesAreCounted) {
    MakeFile("b.krv");
    MakeFile("c.txt");
    dialog_->put_FileType(64);
    EXPECT_EQ(kNotConfirmed, Show([](const OpenBrowser& browser) {
                  browser.WaitForMessage(L"No file here matches *.kra. Hidden files: 2.");
                  browser.Focus(CONTROL_TYPE);
                  browser.Press(VK_DOWN);
                  browser.WaitForRows({L"b.krv", L"c.txt"});
                  browser.WaitForText(CONTROL_MESSAGE, L"");
                  browser.TypeName(L"*.krx");
                  browser.Press(VK_RETURN);
                  browser.WaitForMessage(L"No file here matches *.krx. Hidden files: 2.");
                  browser.Press(VK_ESCAPE);
              }));
}

TEST_F(BrowseOpenTest, NameWithoutExtensionFindsTheFileOfTheType) {
    MakeFile("plan.krv");
    dialog_->put_FileType(62);
    EXPECT_EQ(kConfirmed, Show([](const OpenBrowser& browser) {
                  browser.WaitForRow(L"plan.krv");
                  browser.TypeName(L"plan");
                  browser.Press(VK_RETURN);
              }));
    EXPECT_EQ(L"<Work>\\plan.krv", ChosenPath());
}

TEST_F(BrowseOpenTest, PatternShowsTheFilesThatMatch) {
    for (const char* const name : {"a1.kra", "a2.kra", "b1.kra"}) MakeFile(name);
    EXPECT_EQ(kNotConfirmed, Show([](const OpenBrowser& browser) {
                  browser.WaitForRow(L"b1.kra");
                  browser.TypeName(L"a*.kra");
                  browser.Press(VK_RETURN);
                  browser.WaitForRows({L"a1.kra", L"a2.kra"});
                  browser.Press(VK_ESCAPE);
              }));
}

TEST_F(BrowseOpenTest, MissingFileIsReportedInPlace) {
    EXPECT_EQ(kNotConfirmed, Show([](const OpenBrowser& browser) {
                  browser.WaitForMessage(L"nothing to show");
                  browser.TypeName(L"missing.kra");
                  browser.Press(VK_RETURN);
                  browser.WaitForMessage(L"\"missing.kra\" was not found.");
                  browser.WaitForFocus(CONTROL_NAME);
                  browser.Press(VK_ESCAPE);
              }));
}

TEST_F(BrowseOpenTest, WholePathsOfAnyKindLeadToTheirFile) {
    MakeFileIn("Team", "Sub\\a.kra", "");
    const std::wstring plain(folder_.Path().begin(), folder_.Path().end());
    for (const std::wstring& path :
         {std::wstring(L"<Team>\\Sub\\a.kra"), std::wstring(L"<Team profiles>\\Sub\\a.kra"),
          plain + L"\\Team\\Sub\\a.kra"}) {
        SCOPED_TRACE(testing::PrintToString(path));
        EXPECT_EQ(kConfirmed, Show([&](const OpenBrowser& browser) {
                      browser.TypeName(path);
                      browser.Press(VK_RETURN);
                  }));
        EXPECT_EQ(L"<Team>\\Sub\\a.kra", ChosenPath());
    }
}

TEST_F(BrowseOpenTest, PathOutsideTheDepotsIsReportedInPlace) {
    EXPECT_EQ(kNotConfirmed, Show([](const OpenBrowser& browser) {
                  browser.TypeName(L"C:\\windows\\win.ini");
                  browser.Press(VK_RETURN);
                  browser.WaitForMessage(L"\"C:\\windows\\win.ini\" is not in any depot.");
                  browser.Press(VK_ESCAPE);
              }));
}

TEST_F(BrowseOpenTest, RelativePathsLeadDownAndUp) {
    MakeFile("One\\Two\\deep.kra");
    MakeFile("top.kra");
    EXPECT_EQ(kConfirmed, Show([](const OpenBrowser& browser) {
                  browser.WaitForRow(L"top.kra");
                  browser.TypeName(L"One\\Two");
                  browser.Press(VK_RETURN);
                  browser.WaitForRows({L"deep.kra"});
                  browser.WaitForLocation(L"Work profiles\\One\\Two");
                  browser.TypeName(L"..");
                  browser.Press(VK_RETURN);
                  browser.WaitForRows({L"Two"});
                  browser.TypeName(L"..\\top.kra");
                  browser.Press(VK_RETURN);
              }));
    EXPECT_EQ(L"<Work>\\top.kra", ChosenPath());
}

TEST_F(BrowseOpenTest, KeyboardAloneLeadsThroughFolders) {
    MakeFile("Sessions\\one.kra");
    MakeFile("top.kra");
    EXPECT_EQ(kConfirmed, Show([](const OpenBrowser& browser) {
                  browser.WaitForRow(L"top.kra");
                  browser.WaitForFocus(CONTROL_NAME);
                  browser.Press('D', VK_MENU);
                  browser.WaitForFocus(CONTROL_TREE);
                  browser.Press(VK_TAB);
                  browser.WaitForFocus(CONTROL_LIST);
                  browser.Press(VK_HOME);
                  browser.Press(VK_SPACE);
                  browser.WaitForSelection({L"Sessions"});
                  browser.Press(VK_RETURN);
                  browser.WaitForRows({L"one.kra"});
                  browser.Press(VK_BACK);
                  browser.WaitForSelection({L"Sessions"});
                  browser.Press(VK_DOWN);
                  browser.WaitForText(CONTROL_NAME, L"top.kra");
                  browser.Press(VK_RETURN);
              }));
    EXPECT_EQ(L"<Work>\\top.kra", ChosenPath());
}

TEST_F(BrowseOpenTest, TypingInTheListFindsAFile) {
    for (const char* const name : {"alpha.kra", "beta.kra", "gamma.kra"}) MakeFile(name);
    EXPECT_EQ(kNotConfirmed, Show([](const OpenBrowser& browser) {
                  browser.SelectRow(L"alpha.kra");
                  browser.Type(L"ga");
                  browser.WaitForSelection({L"gamma.kra"});
                  browser.WaitForText(CONTROL_NAME, L"gamma.kra");
                  browser.Press(VK_ESCAPE);
              }));
}

TEST_F(BrowseOpenTest, HeadersSortUpAndDownAndKeepFoldersFirst) {
    MakeFile("a.kra", std::string(5000, 'x'));
    MakeFile("b.kra", std::string(100, 'x'));
    MakeFile("c.kra", std::string(3000, 'x'));
    MakeFile("z\\inner.kra");
    EXPECT_EQ(kNotConfirmed, Show([](const OpenBrowser& browser) {
                  browser.WaitForRows({L"z", L"a.kra", L"b.kra", L"c.kra"});
                  browser.ClickHeader(2);
                  browser.WaitForRows({L"z", L"b.kra", L"c.kra", L"a.kra"});
                  browser.ClickHeader(2);
                  browser.WaitForRows({L"z", L"a.kra", L"c.kra", L"b.kra"});
                  browser.ClickHeader(0);
                  browser.WaitForRows({L"z", L"a.kra", L"b.kra", L"c.kra"});
                  browser.Press(VK_ESCAPE);
              }));
}

TEST_F(BrowseOpenTest, ClientsOrderIsTheFirstOne) {
    MakeFile("a.kra", std::string(5000, 'x'));
    MakeFile("b.kra", std::string(100, 'x'));
    dialog_->put_SortColumn(2);
    EXPECT_EQ(kNotConfirmed, Show([](const OpenBrowser& browser) {
                  browser.WaitForRows({L"b.kra", L"a.kra"});
                  browser.Press(VK_ESCAPE);
              }));
    dialog_->put_SortDescending(1);
    EXPECT_EQ(kNotConfirmed, Show([](const OpenBrowser& browser) {
                  browser.WaitForRows({L"a.kra", L"b.kra"});
                  browser.Press(VK_ESCAPE);
              }));
}

TEST_F(BrowseOpenTest, FilesRowReportsTypeSizeAndDate) {
    MakeFile("a.kra", std::string(1025, 'x'));
    EXPECT_EQ(kNotConfirmed, Show([](const OpenBrowser& browser) {
                  browser.WaitForRows({L"a.kra"});
                  const Names cells = browser.Cells(0);
                  EXPECT_EQ(L"Skein profile", cells[1]);
                  EXPECT_EQ(L"2 KB", cells[2]);
                  EXPECT_NE(L"", cells[3]);
                  browser.Press(VK_ESCAPE);
              }));
}

TEST_F(BrowseOpenTest, F5ShowsWhatIsNewAndKeepsTheSelection) {
    MakeFile("b.kra");
    EXPECT_EQ(kNotConfirmed, Show([this](const OpenBrowser& browser) {
                  browser.SelectRow(L"b.kra");
                  MakeFile("a.kra");
                  browser.Press(VK_F5);
                  browser.WaitForRows({L"a.kra", L"b.kra"});
                  browser.WaitForSelection({L"b.kra"});
                  browser.Press(VK_ESCAPE);
              }));
}

TEST_F(BrowseOpenTest, InitialFileNameOpensItsFolder) {
    MakeFile("Sessions\\one.kra");
    dialog_->put_InitialFileName(Bstr(L"<Work>\\Sessions\\one.kra").Get());
    EXPECT_EQ(kConfirmed, Show([](const OpenBrowser& browser) {
                  browser.WaitForRows({L"one.kra"});
                  EXPECT_EQ(L"one.kra", browser.Text(CONTROL_NAME));
                  browser.Press(VK_RETURN);
              }));
    EXPECT_EQ(L"<Work>\\Sessions\\one.kra", ChosenPath());
}

TEST_F(BrowseOpenTest, NamesOf255CharactersAreShownAndChosen) {
    const std::string longName = std::string(251, 'n') + ".kra";
    folder_.MakeFile("Team\\" + longName, "");
    EXPECT_EQ(kConfirmed, Show([&](const OpenBrowser& browser) {
                  browser.SelectDepot(L"Team profiles");
                  browser.SelectRow(std::wstring(longName.begin(), longName.end()));
                  browser.Press(VK_RETURN);
              }));
    EXPECT_EQ(L"<Team>\\" + std::wstring(longName.begin(), longName.end()), ChosenPath());
}

TEST_F(BrowseOpenTest, DepotWhoseFolderIsGoneIsReportedInPlaceAndOthersStayUsable) {
    folder_.MakeFile("Team\\a.kra", "");
    RemoveDirectoryA(folder_.At("Work").c_str());
    EXPECT_EQ(kConfirmed, Show([](const OpenBrowser& browser) {
                  browser.WaitForMessage(L"\"Work profiles\" cannot be opened.");
                  EXPECT_EQ(Names{}, browser.Rows());
                  browser.SelectDepot(L"Team profiles");
                  browser.WaitForRows({L"a.kra"});
                  EXPECT_EQ(L"", browser.Text(CONTROL_MESSAGE));
                  browser.DoubleClickRow(L"a.kra");
              }));
    EXPECT_EQ(L"<Team>\\a.kra", ChosenPath());
}

TEST_F(BrowseOpenTest, WithoutDepotsTheBuiltInOneIsShown) {
    RegDeleteTreeA(HKEY_CURRENT_USER, kDepotsKey);
    EXPECT_EQ(kNotConfirmed, Show([](const OpenBrowser& browser) {
                  EXPECT_EQ((Names{L"My Depot"}), browser.Depots());
                  browser.Press(VK_ESCAPE);
              }));
}

TEST_F(BrowseOpenTest, OfDepotsOfOneNameOnlyTheFirstIsShown) {
    const ScratchKey machine(HKEY_LOCAL_MACHINE, kDepotsKey);
    machine.Text("Work", "DisplayName.eng", "Shadowed");
    machine.Text("Work", "Path1", folder_.At("Team"));
    EXPECT_EQ(kNotConfirmed, Show([](const OpenBrowser& browser) {
                  EXPECT_EQ((Names{L"Work profiles", L"Team profiles"}), browser.Depots());
                  browser.Press(VK_ESCAPE);
              }));
}

TEST_F(BrowseOpenTest, FoldersOfTheSelectedDepotStandInTheTree) {
    MakeFile("Sessions\\one.kra");
    MakeFile("Archive\\two.kra");
    EXPECT_EQ(kNotConfirmed, Show([](const OpenBrowser& browser) {
                  browser.WaitForRow(L"Sessions");
                  EXPECT_EQ((Names{L"Archive", L"Sessions"}), browser.FoldersBelowSelected());
                  browser.Press(VK_ESCAPE);
              }));
}

TEST_F(BrowseOpenTest, WithoutFolderTreeTheDepotsAloneAreShown) {
    MakeFile("Sessions\\one.kra");
    dialog_->put_ShowFolderTree(0);
    EXPECT_EQ(kNotConfirmed, Show([](const OpenBrowser& browser) {
                  browser.DoubleClickRow(L"Sessions");
                  browser.WaitForRows({L"one.kra"});
                  EXPECT_EQ(L"Work profiles", browser.SelectedInTree());
                  EXPECT_EQ(Names{}, browser.FoldersBelowSelected());
                  browser.Press(VK_ESCAPE);
              }));
}

}  // namespace
}  // namespace depot::test
