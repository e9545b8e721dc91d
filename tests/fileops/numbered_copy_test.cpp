#include "fileops/numbered_copy.h"

#include <gtest/gtest.h>

#include "fileops/publish.h"
#include "model/localization.h"
#include "support/box_log.h"
#include "support/scratch.h"

namespace depot {
namespace {

using test::Exists;
using test::FileBytes;

// A session with the folder depots "Work" and "Workshop".
class NumberedCopyTest : public testing::Test {
protected:
    NumberedCopyTest() {
        product_.Text("", "UserDir", folder_.MakeFolder("Farrow\\User"));
        for (const char* name : {"Work", "Workshop"}) {
            depots_.Text(name, "Path1", folder_.MakeFolder(name));
        }
    }

    const test::ScratchFolder folder_;
    const test::BoxLog boxes_;
    const test::ScratchKey product_{HKEY_CURRENT_USER,
                                    "Software\\Quillon\\Farrow\\13.00\\Wharfside"};
    const test::ScratchKey depots_{HKEY_CURRENT_USER, "Software\\Quillon\\Farrow\\Depots"};
};

TEST_F(NumberedCopyTest, NamesThatLookLikeFormatsAreCopied) {
    for (const char* name : {"100%.kra", "%s%n.kra", "%99999d.kra", "a (.kra", "((3).kra",
                             "a (99999999999).kra", "%"}) {
        SCOPED_TRACE(name);
        const std::string source = folder_.MakeFile(std::string("Work\\") + name, "1");
        DepotSession session;
        const auto copy = MakeNumberedCopy(session, std::string("<Work>\\") + name);
        ASSERT_TRUE(copy.has_value());
        ASSERT_TRUE(copy->starts_with("<Work>\\"));
        const std::string path = folder_.At("Work\\" + copy->substr(7));
        EXPECT_NE(source, path);
        EXPECT_EQ("1", FileBytes(path));
    }
}

TEST_F(NumberedCopyTest, FirstFreeNumberIsUsed) {
    folder_.MakeFile("Work\\a.kra", "1");
    DepotSession session;
    for (int count = 0; count < 5; ++count) MakeNumberedCopy(session, "<Work>\\a.kra");
    DeleteFileA(folder_.At("Work\\a - copy (3).kra").c_str());
    EXPECT_EQ("<Work>\\a - copy (3).kra", MakeNumberedCopy(session, "<Work>\\a.kra"));
}

TEST_F(NumberedCopyTest, OnlyTheDepotWhosePrefixStartsTheFolderIsTried) {
    folder_.MakeFile("Workshop\\a.kra", "1");
    DepotSession session;
    EXPECT_EQ("<Workshop>\\a - copy.kra", MakeNumberedCopy(session, "<Workshop>\\a.kra"));
    EXPECT_TRUE(Exists(folder_.At("Workshop\\a - copy.kra")));
    EXPECT_EQ(std::nullopt, MakeNumberedCopy(session, "<Work>\\a.kra"));
    EXPECT_EQ(std::nullopt, MakeNumberedCopy(session, "<Nowhere>\\a.kra"));
    EXPECT_EQ(std::nullopt, MakeNumberedCopy(session, folder_.At("Workshop\\a.kra")));
}

TEST_F(NumberedCopyTest, OnlyTheFirstOfTwoDepotsOfOneKeyIsTried) {
    const test::ScratchKey machine(HKEY_LOCAL_MACHINE, "Software\\Quillon\\Farrow\\Depots");
    machine.Text("Work", "Path1", folder_.At("Workshop"));
    folder_.MakeFile("Workshop\\a.kra", "1");
    DepotSession session;
    ASSERT_EQ(3u, session.Depots().Count());
    EXPECT_EQ(std::nullopt, MakeNumberedCopy(session, "<Work>\\a.kra"));
    EXPECT_FALSE(Exists(folder_.At("Workshop\\a - copy.kra")));
}

TEST_F(NumberedCopyTest, OldStylePutsTheNumberInFront) {
    folder_.MakeFile("Work\\a.kra", "1");
    DepotSession session;
    for (const char* copy :
         {"<Work>\\Copy of a.kra", "<Work>\\Copy (2) of a.kra", "<Work>\\Copy (3) of a.kra"}) {
        EXPECT_EQ(copy,
                  MakeNumberedCopy(session.Depots(), "<Work>\\a.kra", CopyNameStyle::kPrefix));
    }
    EXPECT_EQ("1", FileBytes(folder_.At("Work\\Copy (3) of a.kra")));
}

TEST_F(NumberedCopyTest, FormatsComeFromTheUsersLanguage) {
    InstallLocalization({nullptr, [](unsigned id) -> std::optional<std::string> {
                             if (id == 500) return "Kopie %svon %s";
                             if (id == 501) return "%s - Kopie%s";
                             return std::nullopt;
                         }});
    folder_.MakeFile("Work\\a.kra", "1");
    DepotSession session;
    const auto copy = [&](CopyNameStyle style) {
        return MakeNumberedCopy(session.Depots(), "<Work>\\a.kra", style);
    };
    EXPECT_EQ("<Work>\\a - Kopie.kra", copy(CopyNameStyle::kDash));
    EXPECT_EQ("<Work>\\Kopie von a.kra", copy(CopyNameStyle::kPrefix));
    EXPECT_EQ("<Work>\\Kopie (2) von a.kra", copy(CopyNameStyle::kPrefix));
    InstallLocalization({});
}

TEST_F(NumberedCopyTest, FolderKeepsTheLettersOfTheSource) {
    folder_.MakeFile("Work\\a.kra", "1");
    DepotSession session;
    EXPECT_EQ("<WORK>\\A - copy.KRA", MakeNumberedCopy(session, "<WORK>\\A.KRA"));
    EXPECT_TRUE(Exists(folder_.At("Work\\a - copy.kra")));
}

TEST_F(NumberedCopyTest, PublishingAnEmptyEntryCopiesNothing) {
    folder_.MakeFile("Work\\a.kra", "1");
    folder_.MakeFile("Workshop\\p.kra", "[Skein]\r\nCount=1\r\n");
    DepotSession session;
    session.LoadFile("<Workshop>\\p.kra");
    PublishDependentFiles(session);
    EXPECT_EQ("<Workshop>\\", session.currentFile->ReadString("Clients", "C1", "", 260));
    EXPECT_FALSE(Exists(folder_.At("Workshop\\a.kra")));
    EXPECT_FALSE(Exists(folder_.At("Workshop\\Work")));
}

// The file cannot be written meanwhile: rewriting it ten thousand times would take a minute.
TEST_F(NumberedCopyTest, PublishingTwoThousandMillionClientsEnds) {
    const std::string file = folder_.MakeFile("Work\\p.kra", "[Skein]\r\nCount=2000000000\r\n");
    DepotSession session;
    session.LoadFile("<Work>\\p.kra");
    const HANDLE reader = CreateFileA(file.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr,
                                      OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(INVALID_HANDLE_VALUE, reader);
    PublishDependentFiles(session);
    CloseHandle(reader);
    EXPECT_TRUE(session.currentFile->changed);
}

}  // namespace
}  // namespace depot
