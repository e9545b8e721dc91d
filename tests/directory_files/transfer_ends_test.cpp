// How transfers begin and end: connections, temporary folders, servers that are away.
#include "directory/connection_scope.h"
#include "directory_files/directory_world.h"
#include "fileops/shell_operation.h"
#include "support/directory_transfer.h"
#include "support/import_patch.h"
#include "support/results.h"

namespace depot {
namespace {

using test::Fails;
using test::FileBytes;
using test::IsCode;
using test::IsDone;
using test::kNo;

constexpr ExistingEntries kReplace = ExistingEntries::kReplace;

using ShellCall = int(WINAPI*)(SHFILEOPSTRUCTA*);

int WINAPI RefuseShell(SHFILEOPSTRUCTA*) {
    return ERROR_ACCESS_DENIED;
}

// Sends temporary files into a folder while it lives.
class TemporaryPlace {
public:
    explicit TemporaryPlace(const std::string& folder) {
        GetTempPathA(sizeof(before_), before_);
        Set(folder.c_str());
    }
    ~TemporaryPlace() { Set(before_); }
    TemporaryPlace(const TemporaryPlace&) = delete;
    TemporaryPlace& operator=(const TemporaryPlace&) = delete;

private:
    static void Set(const char* folder) {
        SetEnvironmentVariableA("TMP", folder);
        SetEnvironmentVariableA("TEMP", folder);
    }
    char before_[MAX_PATH + 1] = {};
};

class TransferEndsTest : public test::DirectoryWorldTest {
protected:
    // Every operation once, each of which finds its source; returns how many succeeded.
    int RunAll(CLDAPItems& directory, const std::string& base) {
        const auto dn = [&](const std::string& name) { return "cn=" + name + "," + base; };
        const std::string file = Make("local.kra", "1");
        return Upload(directory, file, dn("a.kra"), kReplace, &error_) +
               EntryExists(directory, dn("a.kra"), &error_) +
               Download(directory, dn("a.kra"), At("back.kra"), &error_) +
               CopyEntry(directory, dn("a.kra"), directory, dn("b.kra"), kReplace, &error_) +
               MoveEntry(directory, dn("b.kra"), dn("c.kra"), &error_) +
               RemoveEntry(directory, dn("c.kra"), &error_);
    }
};

TEST_F(TransferEndsTest, EveryOperationConnectsForItselfAndReleasesItsConnection) {
    EXPECT_EQ(6, RunAll(Directory(), base_));
    EXPECT_FALSE(Directory().IsConnected());
    EXPECT_EQ(6, Counts().binds);
    EXPECT_EQ("junk", error_);
}

TEST_F(TransferEndsTest, OperationsThatFailReleaseTheirConnection) {
    const std::string none = DN("cn=none");
    const auto failed = [&](int result) {
        EXPECT_THAT(result, Fails());
        EXPECT_FALSE(Directory().IsConnected());
    };
    failed(Upload(Directory(), At("none"), DN("cn=a.kra"), kReplace, &error_));
    failed(Download(Directory(), none, At("x"), &error_));
    failed(CopyEntry(Directory(), none, Directory(), DN("cn=y"), kReplace, &error_));
    failed(MoveEntry(Directory(), none, DN("cn=y"), &error_));
    failed(EntryExists(Directory(), none, &error_));
    failed(RemoveEntry(Directory(), none, &error_));
}

TEST_F(TransferEndsTest, ConnectionThatWasThereBeforeStays) {
    const ConnectionScope connection(Directory(), nullptr);
    server_.Mark();
    EXPECT_EQ(6, RunAll(Directory(), base_));
    EXPECT_THAT(Download(Directory(), DN("cn=none"), At("x"), &error_), Fails());
    EXPECT_TRUE(Directory().IsConnected());
    EXPECT_EQ(0, Counts().binds);
}

TEST_F(TransferEndsTest, ServerThatCannotBeReachedFailsEveryOperationAndChangesNothing) {
    auto location = server_.Location(base_).Clone();
    location->port = test::ClosedPort();
    test::ForgetServer(location->port);
    CLDAPItems away(location.get());
    const std::string back = Make("back.kra", "old");
    EXPECT_EQ(0, RunAll(away, base_));
    EXPECT_NE("junk", error_);
    EXPECT_EQ("old", FileBytes(back));
}

TEST_F(TransferEndsTest, EntryThatIsNotThereReportsItsCode) {
    EXPECT_EQ(kNo, EntryExists(Directory(), DN("cn=none"), &error_));
    ExpectFailure(LDAP_NO_SUCH_OBJECT);
    error_ = "junk";
    EXPECT_THAT(RemoveEntry(Directory(), DN("cn=none"), &error_), Fails());
    ExpectFailure(LDAP_NO_SUCH_OBJECT);
}

TEST_F(TransferEndsTest, TreeWhoseTemporaryFolderStaysIsCopiedAndCountsAsFailed) {
    const std::string tree = AddTree("tree");
    const std::string temporary = world_.folder.MakeFolder("temporary");
    const TemporaryPlace place(temporary);
    const test::ImportPatch<ShellCall> refused("SHFileOperationA", &RefuseShell);
    ASSERT_TRUE(refused.IsInPlace());
    EXPECT_THAT(CopyEntry(Directory(), tree, Directory(), DN("cn=copy"), kReplace, &error_),
                Fails());
    EXPECT_THAT(Directory().LastError(), IsCode(LDAP_LOCAL_ERROR));
    ExpectTree(DN("cn=copy"));
    // A rename by copying then keeps the old tree.
    test::RefuseTreeRenames(Directory());
    EXPECT_THAT(MoveEntry(Directory(), tree, DN("cn=moved"), &error_), Fails());
    EXPECT_THAT(Directory().LastError(), IsCode(LDAP_LOCAL_ERROR));
    ExpectTree(tree);
}

TEST_F(TransferEndsTest, TreeIsNotCopiedWithoutATemporaryFolder) {
    const std::string tree = AddTree("tree");
    const TemporaryPlace place(At("none"));
    EXPECT_THAT(CopyEntry(Directory(), tree, Directory(), DN("cn=copy"), kReplace, &error_),
                Fails());
    EXPECT_THAT(Directory().LastError(), IsCode(LDAP_LOCAL_ERROR));
    test::RefuseTreeRenames(Directory());
    EXPECT_THAT(MoveEntry(Directory(), tree, DN("cn=moved"), &error_), Fails());
    ExpectTree(tree);
    EXPECT_FALSE(Holds(DN("cn=copy")));
    EXPECT_FALSE(Holds(DN("cn=moved")));
}

TEST_F(TransferEndsTest, DownloadedTreeTakesFoldersThatAreThereAlready) {
    const std::string tree = AddTree("tree");
    world_.folder.MakeFolder("out\\sub");
    Make("out\\sub\\other.kra", "stays");
    EXPECT_THAT(Download(Directory(), tree, At("out"), &error_), IsDone());
    EXPECT_EQ("2", FileBytes(At("out\\sub\\b.kra")));
    EXPECT_EQ("stays", FileBytes(At("out\\sub\\other.kra")));
}

TEST_F(TransferEndsTest, TreeWhoseFolderIsAFileIsNotDownloaded) {
    const std::string tree = AddTree("tree");
    world_.folder.MakeFolder("out");
    Make("out\\sub", "a file");
    EXPECT_THAT(Download(Directory(), tree, At("out"), &error_), Fails());
    EXPECT_THAT(Directory().LastError(), IsCode(LDAP_LOCAL_ERROR));
    EXPECT_EQ("a file", FileBytes(At("out\\sub")));
}

}  // namespace
}  // namespace depot
