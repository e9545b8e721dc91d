#include "manager/depot_session.h"

#include <gtest/gtest.h>

#include <utility>

#include "manager/depot_list.h"
#include "support/import_patch.h"
#include "support/leak_counts.h"
#include "support/scratch.h"

namespace depot {
namespace {

class DepotSessionTest : public testing::Test {
protected:
    DepotSessionTest() {
        product_.Text("13.00\\Wharfside", "UserDir", folder_.MakeFolder("Users\\Farrow"));
        folder_.MakeFolder("w");
    }

    void DefineWork() const { product_.Text("Depots\\Work", "Path1", folder_.At("w")); }

    void LeaveNoUserFolder() const {
        product_.Text("13.00\\Wharfside", "UserDir", std::string(260, 'x'));
    }

    test::ScratchFolder folder_;
    test::ScratchKey product_{HKEY_CURRENT_USER, "Software\\Quillon\\Farrow"};
    test::ScratchKey machine_{HKEY_LOCAL_MACHINE, "Software\\Quillon\\Farrow"};
};

TEST_F(DepotSessionTest, NewSessionHasNoFileNoResultsAndNoSelection) {
    const DepotSession session;
    EXPECT_FALSE(session.currentFile);
    EXPECT_FALSE(session.findResults);
    EXPECT_EQ("", session.selectedItemPath);
}

// A system that says it has that version.
class OtherSystem {
public:
    explicit OtherSystem(DWORD majorVersion) { version_ = majorVersion; }

private:
    static BOOL WINAPI Tell(OSVERSIONINFOA* told) {
        EXPECT_EQ(148u, told->dwOSVersionInfoSize);
        told->dwMajorVersion = version_;
        return TRUE;
    }

    static inline DWORD version_ = 0;
    const test::ImportPatch<decltype(&GetVersionExA)> patch_{"GetVersionExA", &Tell};
};

TEST_F(DepotSessionTest, CopiesAreNamedInTheNewStyleFromVersionSixOn) {
    for (const auto& [version, isNew] :
         {std::pair{4U, false}, {5U, false}, {6U, true}, {7U, true}, {10U, true}}) {
        const OtherSystem system(version);
        EXPECT_EQ(isNew, DepotSession().UsesNewCopyNames()) << version;
    }
}

TEST_F(DepotSessionTest, SystemIsAskedForItsVersionOncePerSession) {
    const OtherSystem system(5);
    const DepotSession session;
    const OtherSystem newer(6);
    EXPECT_FALSE(session.UsesNewCopyNames());
}

TEST_F(DepotSessionTest, WithoutDepotsTheBuiltInOneIsTheUserFoldersParent) {
    DepotSession session;
    ASSERT_EQ(1u, session.Depots().Count());
    EXPECT_EQ("My Depot", session.Depots().At(0)->displayName);
    EXPECT_EQ(folder_.At("Users\\"), session.Depots().At(0)->paths->GetActivePath());
    EXPECT_EQ(folder_.At("Users\\Farrow\\"), session.Depots().userDirOverride);
}

TEST_F(DepotSessionTest, WithAUserFolderTheDepotsAreLoadedAtOnce) {
    DepotSession session;
    DefineWork();
    EXPECT_EQ("My Depot", session.Depots().At(0)->displayName);
}

TEST_F(DepotSessionTest, WithoutAUserFolderTheDepotsAreLoadedOnFirstUse) {
    LeaveNoUserFolder();
    DepotSession session;
    EXPECT_EQ("", session.Folders().UserFolder());
    DefineWork();
    ASSERT_EQ(1u, session.Depots().Count());
    EXPECT_EQ("Work", session.Depots().At(0)->name);
}

TEST_F(DepotSessionTest, WithoutAUserFolderTheBuiltInDepotHasAnEmptyPath) {
    LeaveNoUserFolder();
    DepotSession session;
    ASSERT_EQ(1u, session.Depots().Count());
    EXPECT_EQ("", session.Depots().At(0)->paths->GetActivePath());
}

TEST_F(DepotSessionTest, LaterChangesOfTheRegistryAreNotSeen) {
    DefineWork();
    DepotSession session;
    const CDepots* const depots = &session.Depots();
    product_.Text("Depots\\Another", "Path1", "C:\\another");
    RegDeleteTreeA(HKEY_CURRENT_USER, "Software\\Quillon\\Farrow\\Depots\\Work");
    EXPECT_EQ(depots, &session.Depots());
    ASSERT_EQ(1u, session.Depots().Count());
    EXPECT_EQ("Work", session.Depots().At(0)->name);
    EXPECT_EQ("Another", DepotSession().Depots().At(0)->name);
}

TEST_F(DepotSessionTest, LoadingAFileReplacesTheCurrentOne) {
    DefineWork();
    DepotSession session;
    session.LoadFile("<Work>\\a.kra");
    ASSERT_TRUE(session.currentFile);
    session.currentFile->WriteString("S", "K", "v");
    session.LoadFile("<Work>\\b.kra");
    EXPECT_EQ("<Work>\\b.kra", session.currentFile->depotPath);
    EXPECT_FALSE(session.currentFile->changed);
    EXPECT_EQ("[S]\r\nK=v\r\n", test::FileBytes(folder_.At("w\\a.kra")));
}

TEST_F(DepotSessionTest, MissingOrEmptyFileIsLoadedAllTheSame) {
    DefineWork();
    DepotSession session;
    session.LoadFile("<Work>\\none.kra");
    ASSERT_TRUE(session.currentFile);
    EXPECT_EQ("default", session.currentFile->ReadString("S", "K", "default", 100));
    session.LoadFile("");
    ASSERT_TRUE(session.currentFile);
    EXPECT_EQ("", session.currentFile->localPath);
}

TEST_F(DepotSessionTest, ReleasedFileLeavesTheSessionWithoutOne) {
    DefineWork();
    DepotSession session;
    session.ReleaseFile();
    session.LoadFile("<Work>\\a.kra");
    session.ReleaseFile();
    EXPECT_FALSE(session.currentFile);
}

TEST_F(DepotSessionTest, EndOfASessionLeavesNothing) {
    DefineWork();
    EXPECT_EQ(0u, test::CountLeftovers([] {
                  DepotSession session;
                  session.LoadFile("<Work>\\a.kra");
                  session.findResults = std::make_unique<CDepotItems>();
                  session.findResults->AddPath("x", nullptr, kDepotsKey,
                                               [](CDepots&, const std::string&, CDepotItem&) {});
                  session.selectedItemPath = std::string(100, 's');
                  GetDefaultDepot(session.Depots(), 0);
              }));
}

TEST_F(DepotSessionTest, SessionsAreIndependentOfOneAnother) {
    DefineWork();
    DepotSession first;
    DepotSession second;
    first.LoadFile("<Work>\\a.kra");
    EXPECT_FALSE(second.currentFile);
    EXPECT_NE(&first.Depots(), &second.Depots());
}

TEST_F(DepotSessionTest, ThousandDepotsAreLoaded) {
    for (int number = 0; number < 1000; ++number) {
        product_.Text("Depots\\D" + std::to_string(number), "Path1", folder_.At("w"));
    }
    DepotSession session;
    EXPECT_EQ(1000u, session.Depots().Count());
    session.LoadFile("<D999>\\a.kra");
    EXPECT_EQ("D999", session.currentFile->depot->name);
}

TEST_F(DepotSessionTest, DepotKeyIsOnlyRead) {
    { DepotSession session; }
    EXPECT_FALSE(RegistryKey::Open(HKEY_CURRENT_USER, kDepotsKey));
    EXPECT_FALSE(RegistryKey::Open(HKEY_LOCAL_MACHINE, kDepotsKey));
}

}  // namespace
}  // namespace depot
