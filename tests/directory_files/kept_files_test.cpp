// Local files and entries that stay when what was to take their place does not come whole.
#include "directory_files/directory_world.h"
#include "support/directory_transfer.h"
#include "support/half_writes.h"
#include "support/results.h"

namespace depot {
namespace {

using test::Exists;
using test::Fails;
using test::FileBytes;
using test::IsCode;
using test::IsDone;

class KeptFilesTest : public test::DirectoryWorldTest {
protected:
    KeptFilesTest() { server_.AddFile("a.kra", base_, "new bytes"); }

    int Fetch(const std::string& path, ExistingEntries existing = ExistingEntries::kReplace) {
        return Download(Directory(), DN("cn=a.kra"), path, &error_, {}, existing);
    }
    void ExpectNoOtherFiles(const std::string& folder, int files) {
        WIN32_FIND_DATAA found = {};
        const HANDLE search = FindFirstFileA((folder + "\\*").c_str(), &found);
        int count = -2;
        do {
            ++count;
        } while (FindNextFileA(search, &found));
        FindClose(search);
        EXPECT_EQ(files, count);
    }

    const std::string file_ = Make("h\\a.kra", "old");
};

TEST_F(KeptFilesTest, DownloadedFileHasNormalAttributesAndNothingStandsBesideIt) {
    EXPECT_THAT(Fetch(file_), IsDone());
    EXPECT_EQ("new bytes", FileBytes(file_));
    EXPECT_EQ(0u, GetFileAttributesA(file_.c_str()) &
                      ~DWORD{FILE_ATTRIBUTE_NORMAL | FILE_ATTRIBUTE_ARCHIVE});
    ExpectNoOtherFiles(At("h"), 1);
}

TEST_F(KeptFilesTest, FullDiskLeavesTheOldFileAndNoNewOne) {
    const test::HalfWrites full;
    EXPECT_THAT(Fetch(file_), Fails());
    EXPECT_THAT(Directory().LastError(), IsCode(LDAP_LOCAL_ERROR));
    EXPECT_EQ("old", FileBytes(file_));
    EXPECT_THAT(Fetch(At("h\\b.kra")), Fails());
    EXPECT_FALSE(Exists(At("h\\b.kra")));
    ExpectNoOtherFiles(At("h"), 1);
}

TEST_F(KeptFilesTest, FailedReadLeavesTheOldFile) {
    Directory().Client().ldap_get_values_len = [](LDAP*, LDAPMessage*, PCHAR) -> berval** {
        return nullptr;
    };
    EXPECT_THAT(Fetch(file_), Fails());
    ExpectFailure(LDAP_NO_MEMORY);
    EXPECT_EQ("old", FileBytes(file_));
}

TEST_F(KeptFilesTest, BytesThatCannotBeSeenBecomeNoLocalFile) {
    work_->paths->At(0)->fileContentsAttributeName = "description";
    EXPECT_THAT(Fetch(file_), Fails());
    ExpectUnseen();
    EXPECT_EQ("old", FileBytes(file_));
    EXPECT_THAT(Fetch(At("h\\b.kra")), Fails());
    EXPECT_FALSE(Exists(At("h\\b.kra")));
}

TEST_F(KeptFilesTest, BytesThatCannotBeSeenAreStoredInNoEntry) {
    const std::string tree = AddTree("tree"), copy = AddTree("copy");
    server_.AddFile("b.kra", base_, "old");
    work_->paths->At(0)->fileContentsAttributeName = "description";
    const auto refused = [&](const std::string& from, const std::string& to) {
        EXPECT_THAT(CopyEntry(Directory(), from, world_.Connected(), to, ExistingEntries::kReplace,
                              &error_),
                    Fails());
        ExpectUnseen();
    };
    refused(DN("cn=a.kra"), DN("cn=b.kra"));
    refused(DN("cn=a.kra"), DN("cn=new.kra"));
    refused(tree, copy);
    EXPECT_EQ("old", Contents(DN("cn=b.kra")));
    EXPECT_FALSE(server_.Holds(DN("cn=new.kra")));
    ExpectTree(copy);
}

// Somebody else makes the file after it was looked for.
TEST_F(KeptFilesTest, FileThatComesMeanwhileIsNotReplacedWhereThatIsRefused) {
    const std::string tree = AddTree("tree");
    const TransferWatcher watcher = [&](const TransferProgress&) {
        if (!Exists(At("h\\out\\sub\\b.kra"))) {
            world_.folder.MakeFolder("h\\out\\sub");
            Make("h\\out\\sub\\b.kra", "theirs");
        }
        return true;
    };
    EXPECT_THAT(
        Download(Directory(), tree, At("h\\out"), &error_, watcher, ExistingEntries::kRefuse),
        Fails());
    ExpectFailure(LDAP_ALREADY_EXISTS);
    EXPECT_EQ("theirs", FileBytes(At("h\\out\\sub\\b.kra")));
    EXPECT_EQ("1", FileBytes(At("h\\out\\a.kra")));
}

}  // namespace
}  // namespace depot
