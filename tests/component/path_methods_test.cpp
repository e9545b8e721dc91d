// Display paths, depot paths, file-system paths and existence, on depots kept in folders.
#include <vector>

#include "component/component.h"
#include "support/box_log.h"
#include "support/results.h"

namespace depot::test {
namespace {

std::wstring Checked(HRESULT result, const OutText& path) {
    EXPECT_EQ(path.IsNull() ? S_FALSE : S_OK, result);
    return path.Value();
}

// Each asks with a session or, for handle 0, with a temporary one. A refusal gives "(null)".
std::wstring DisplayPath(IDepotIntrApi& api, LONG_PTR session, const std::string& name) {
    OutText path;
    const HRESULT result = api.DPGetDepotDisplayPath(session, Text(name), path);
    return Checked(result, path);
}
std::wstring FromDisplayName(IDepotIntrApi& api, LONG_PTR session, const std::string& name) {
    OutText path;
    const HRESULT result = api.DPGetPathFromDisplayName(session, Text(name), path);
    return Checked(result, path);
}
std::wstring DefaultPath(IDepotIntrApi& api, LONG_PTR session) {
    OutText path;
    const HRESULT result = api.DPGetDefaultDPPath(session, path);
    return Checked(result, path);
}
std::wstring ToFileSystem(IDepotIntrApi& api, const std::string& name) {
    OutText path;
    const HRESULT result = api.DPPathConvertDPtoFS(Text(name), path);
    return Checked(result, path);
}

// Two configured depots.
class FolderDepotsTest : public ComponentTest {
protected:
    FolderDepotsTest() {
        folder_.MakeFolder("Work\\Sessions");
        folder_.MakeFile("Work\\Sessions\\office.kre", "");
        depots_.Dword("Team", "OrderIndex", 1);
        depots_.Dword("Work", "OrderIndex", 2);
    }

    const std::string work_ = DefineDepot("Work", "My Work");
    const std::string team_ = DefineDepot("Team", "The Team");
};

TEST_F(FolderDepotsTest, DisplayPathNamesTheFolderByTheDisplayName) {
    EXPECT_EQ(L"<My Work>\\Sessions\\", DisplayPath(*api_, 0, "<Work>\\Sessions\\office.kre"));
    EXPECT_EQ(L"<My Work>\\a\\b\\", DisplayPath(*api_, 0, "<WORK>\\a\\b\\c.kra"));
    EXPECT_EQ(L"<My Work>\\", DisplayPath(*api_, 0, "<Work>\\office.kre"));
    EXPECT_EQ(L"<My Work>\\", DisplayPath(*api_, 0, "<Work>\\"));
    EXPECT_EQ(L"<My Work>\\", DisplayPath(*api_, 0, "<Work>"));
    EXPECT_EQ(L"<My Work>\\a\\", DisplayPath(*api_, 0, "<Work>\\a\\"));
}

TEST_F(FolderDepotsTest, DisplayPathOfAFileSystemNameKeepsItsWholeFolder) {
    EXPECT_EQ(L"<My Work>" + Wide(work_) + L"\\Sessions\\",
              DisplayPath(*api_, 0, work_ + "\\Sessions\\office.kre"));
}

TEST_F(FolderDepotsTest, DisplayPathOutsideEveryDepotIsRefused) {
    for (const char* name : {"<Nobody>\\a.kra", "C:\\elsewhere\\a.kra", "a.kra", "", "\\", "<", ">",
                             "<>\\a.kra", "<My Work>\\a.kra"}) {
        EXPECT_EQ(L"(null)", DisplayPath(*api_, 0, name)) << name;
    }
}

TEST_F(FolderDepotsTest, DepotPathIsFoundByDisplayNameInAnyCase) {
    EXPECT_EQ(L"<Work>\\Sessions\\office.kre",
              FromDisplayName(*api_, 0, "<my WORK>\\Sessions\\office.kre"));
    EXPECT_EQ(L"<Team>\\", FromDisplayName(*api_, 0, "<The Team>\\"));
    EXPECT_EQ(L"<Team>\\", FromDisplayName(*api_, 0, "<The Team>"));
    EXPECT_EQ(L"<Team>\\", FromDisplayName(*api_, 0, "The Team"));
    EXPECT_EQ(L"<Team>\\a", FromDisplayName(*api_, 0, "<<<The Team>\\a"));
}

TEST_F(FolderDepotsTest, OfTwoDepotsOfOneDisplayNameTheFirstInTheListIsTaken) {
    DefineDepot("Alpha", "Twins");
    DefineDepot("Beta", "Twins");
    depots_.Dword("Alpha", "OrderIndex", 2);
    depots_.Dword("Beta", "OrderIndex", 1);
    EXPECT_EQ(L"<Beta>\\a.kra", FromDisplayName(*api_, 0, "<Twins>\\a.kra"));
}

TEST_F(FolderDepotsTest, UnknownDisplayNameIsRefused) {
    for (const char* name : {"<Nobody>\\a.kra", "<Work>\\a.kra", "", "<>\\", "<", ">", "\\",
                             "<The Teams>\\a", "<The Tea>\\a"}) {
        EXPECT_EQ(L"(null)", FromDisplayName(*api_, 0, name)) << name;
    }
}

TEST_F(FolderDepotsTest, DefaultPathIsThatOfTheFirstDepotUntilOneIsMarked) {
    EXPECT_EQ(L"<Team>\\", DefaultPath(*api_, 0));
    depots_.Dword("Work", "DefaultDepot", 1);
    EXPECT_EQ(L"<Work>\\", DefaultPath(*api_, 0));
}

TEST_F(FolderDepotsTest, DepotPathIsConvertedToTheFileSystem) {
    EXPECT_EQ(Wide(work_) + L"\\Sessions\\office.kre",
              ToFileSystem(*api_, "<Work>\\Sessions\\office.kre"));
    EXPECT_EQ(Wide(team_) + L"\\missing.kra", ToFileSystem(*api_, "<TEAM>\\missing.kra"));
    EXPECT_EQ(Wide(work_) + L"\\Sessions\\office.kre",
              ToFileSystem(*api_, work_ + "\\Sessions\\office.kre"));
}

TEST_F(FolderDepotsTest, BareNameOfADepotStandsForItsRoot) {
    const Session session(*api_);
    EXPECT_THAT(api_->DPFileExists(0, Text("<Work>")), IsOk());
    EXPECT_THAT(api_->DPFileExists(0, Text("<WORK>")), IsOk());
    EXPECT_THAT(api_->DPFileExists(0, Text("<Nobody>")), IsRefused());
    EXPECT_THAT(api_->DPIsPathWriteAble(session, Text("<Work>")), IsOk());
    EXPECT_THAT(api_->DPIsPathWriteAble(session, Text("<Nobody>")), IsRefused());
    EXPECT_EQ(Wide(work_) + L"\\", ToFileSystem(*api_, "<Work>"));
    EXPECT_EQ(ToFileSystem(*api_, "<Work>\\"), ToFileSystem(*api_, "<Work>"));
}

TEST_F(FolderDepotsTest, BracketedNameOfNoDepotIsConvertedToItself) {
    for (const char* path : {"<Nobody>\\office.kre", "<Nobody>", "<My Work>\\office.kre"}) {
        EXPECT_EQ(Wide(path), ToFileSystem(*api_, path)) << path;
    }
}

TEST_F(FolderDepotsTest, EmptyPathIsNotConverted) {
    EXPECT_EQ(L"(null)", ToFileSystem(*api_, ""));
}

TEST_F(FolderDepotsTest, ExistingFilesAreFoundInBothForms) {
    EXPECT_THAT(api_->DPFileExists(0, Text("<Work>\\Sessions\\office.kre")), IsOk());
    EXPECT_THAT(api_->DPFileExists(0, Text("<work>\\SESSIONS\\OFFICE.KRE")), IsOk());
    EXPECT_THAT(api_->DPFileExists(0, Text(work_ + "\\Sessions\\office.kre")), IsOk());
}

TEST_F(FolderDepotsTest, MissingFilesAndPathsOutsideEveryDepotDoNotExist) {
    const std::string outside = folder_.MakeFile("outside.kra", "");
    for (const std::string& name :
         {std::string("<Work>\\office.kre"), std::string("<Team>\\Sessions\\office.kre"),
          std::string("<Nobody>\\a.kra"), outside, std::string("office.kre"), std::string()}) {
        EXPECT_THAT(api_->DPFileExists(0, Text(name)), IsRefused()) << name;
    }
}

TEST_F(FolderDepotsTest, SessionAndHandleZeroGiveTheSameAnswers) {
    const Session session(*api_);
    for (const char* name : {"<Work>\\Sessions\\office.kre", "<Work>\\missing.kra",
                             "<Nobody>\\a.kra", "<My Work>\\a.kra", "", "C:\\a.kra"}) {
        SCOPED_TRACE(name);
        EXPECT_EQ(DisplayPath(*api_, session, name), DisplayPath(*api_, 0, name));
        EXPECT_EQ(FromDisplayName(*api_, session, name), FromDisplayName(*api_, 0, name));
        EXPECT_EQ(api_->DPFileExists(session, Text(name)), api_->DPFileExists(0, Text(name)));
    }
    EXPECT_EQ(DefaultPath(*api_, session), DefaultPath(*api_, 0));
}

TEST_F(FolderDepotsTest, ConvertedPathsLeadBack) {
    const std::string display = "<My Work>\\Sessions\\office.kre";
    const std::wstring depotPath = FromDisplayName(*api_, 0, display);
    EXPECT_EQ(L"<Work>\\Sessions\\office.kre", depotPath);
    const std::string narrow(depotPath.begin(), depotPath.end());
    EXPECT_EQ(L"<My Work>\\Sessions\\", DisplayPath(*api_, 0, narrow));
    EXPECT_THAT(api_->DPFileExists(0, Text(narrow)), IsOk());
}

TEST_F(FolderDepotsTest, SelectedItemIsTakenAsItIs) {
    const Session session(*api_);
    for (const char* path : {"<Work>\\a.kra", "no such place", ""}) {
        EXPECT_THAT(api_->DPSetSelItemPath(session, Text(path)), IsOk());
    }
    EXPECT_THAT(api_->DPSetSelItemPath(0, Text("<Work>\\a.kra")), IsRefused());
}

TEST_F(FolderDepotsTest, HugeAndBrokenPathsAreAnswered) {
    const std::string huge(100000, 'x');
    EXPECT_EQ(L"(null)", DisplayPath(*api_, 0, huge));
    EXPECT_EQ(L"<My Work>\\", DisplayPath(*api_, 0, "<Work>\\" + huge));
    EXPECT_EQ(L"(null)", FromDisplayName(*api_, 0, huge));
    EXPECT_EQ(L"<Work>\\" + Wide(huge), FromDisplayName(*api_, 0, "<My Work>\\" + huge));
    EXPECT_THAT(api_->DPFileExists(0, Text("<Work>\\" + huge)), IsRefused());
    EXPECT_EQ(L"(null)", ToFileSystem(*api_, "<Work>\\" + huge));
    EXPECT_THAT(api_->DPFileExists(0, Text(std::wstring_view(L"\0<Work>\\a", 9))), IsRefused());
    OutText path;
    EXPECT_THAT(
        api_->DPGetDepotDisplayPath(0, Text(std::wstring_view(L"<Work>\\a\\b\0\\c\\d", 15)), path),
        IsRefused());
    EXPECT_TRUE(path.IsNull());
}

TEST_F(FolderDepotsTest, DirectoryDepotHasNoFileSystemPaths) {
    // The missing server is reported in a box.
    const BoxLog boxes;
    depots_.Text("Remote", "Path1", "ou=profiles,dc=farrow,dc=test");
    depots_.Dword("Remote", "Type1", 1);
    depots_.Text("Remote", "Host1", "127.0.0.1");
    EXPECT_EQ(L"(null)", ToFileSystem(*api_, "<Remote>\\a.kra"));
    EXPECT_THAT(api_->DPFileExists(0, Text("<Remote>\\a.kra")), IsRefused());
    EXPECT_EQ(L"<Remote>\\", DisplayPath(*api_, 0, "<Remote>\\a.kra"));
}

// A machine on which nothing is configured: the only depot is the built-in one.
class BuiltInDepotTest : public ComponentTest {
protected:
    // The user folder's parent.
    const std::string root_ = folder_.At("Farrow\\");
};

TEST_F(BuiltInDepotTest, WithoutADefinedDepotThereIsNoDefaultPath) {
    EXPECT_EQ(L"(null)", DefaultPath(*api_, 0));
    const Session session(*api_);
    EXPECT_EQ(L"(null)", DefaultPath(*api_, session));
    DefineDepot("Work");
    EXPECT_EQ(L"(null)", DefaultPath(*api_, session))
        << "a session knows the depots that it began with";
    EXPECT_EQ(L"<Work>\\", DefaultPath(*api_, 0));
}

TEST_F(BuiltInDepotTest, FilesBelowTheRootAreFoundByTheirPath) {
    const std::string file = folder_.MakeFile("Farrow\\a.kra", "[S]\r\nK=1\r\n");
    EXPECT_THAT(api_->DPFileExists(0, Text(file)), IsOk());
    EXPECT_THAT(api_->DPFileExists(0, Text(root_ + "missing.kra")), IsRefused());
    EXPECT_EQ(Wide(file), ToFileSystem(*api_, file));
}

TEST_F(BuiltInDepotTest, DisplayNameLeadsToTheRoot) {
    EXPECT_EQ(Wide(root_) + L"x\\y.kra", FromDisplayName(*api_, 0, "<my depot>\\x\\y.kra"));
    EXPECT_EQ(L"(null)", FromDisplayName(*api_, 0, "<other>\\x\\y.kra"));
}

TEST_F(BuiltInDepotTest, DisplayPathAlwaysEndsInABackslash) {
    EXPECT_EQ(L"<My Depot>" + Wide(root_), DisplayPath(*api_, 0, root_ + "a.kra"));
    EXPECT_EQ(L"<My Depot>" + Wide(root_) + L"x\\", DisplayPath(*api_, 0, root_ + "x\\a.kra"));
}

TEST_F(BuiltInDepotTest, ValuesAreWrittenBelowTheRoot) {
    Session session(*api_);
    ASSERT_THAT(api_->DPLoadFile(session.Address(), Text(root_ + "new.kra")), IsOk());
    EXPECT_THAT(api_->DPSetProfileString(session, Text("S"), Text("K"), Text(" 1")), IsOk());
    EXPECT_EQ(L" 1", Read(session, L"S", L"K"));
    EXPECT_EQ("[S]\r\nK=' 1'\r\n", FileBytes(root_ + "new.kra"));
}

}  // namespace
}  // namespace depot::test
