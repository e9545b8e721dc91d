// Publishing into a depot in a directory, and numbered copies by a session.
#include "fileops/publish.h"

#include "directory_files/directory_world.h"

namespace depot {
namespace {

using test::FileBytes;
using test::OperationCounts;

// A session whose only depot, and so the default one, is in a directory.
class PublishDirectoryTest : public test::DirectoryWorldTest {
protected:
    PublishDirectoryTest() {
        product_.Text("", "UserDir", world_.folder.MakeFolder("Farrow\\User"));
        const CDepotPath location = server_.Location(base_);
        depots_.Text("Corp", "Path1", base_);
        depots_.Dword("Corp", "Type1", kDirectoryLocation);
        depots_.Text("Corp", "Host1", location.host);
        depots_.Dword("Corp", "Port1", location.port);
        depots_.Text("Corp", "Username1", location.username);
        depots_.Text("Corp", "Password1", location.password);
        server_.AddFolder("Sessions", base_);
    }
    void AddProfile(const std::string& clients) {
        server_.AddFile("p.kra", DN("cn=Sessions"),
                        "[Skein]\r\nCount=2\r\n[Clients]\r\n" + clients +
                            "[Server]\r\nConfiguration File=s\r\n");
    }
    std::string Published(const std::string& name) {
        return Contents(DN("cn=" + name + ",cn=Sessions"));
    }
    static std::string Client(const DepotSession& session, const char* key) {
        return session.currentFile->ReadString("Clients", key, "(none)", 260);
    }

    const test::ScratchKey product_{HKEY_CURRENT_USER,
                                    "Software\\Quillon\\Farrow\\13.00\\Wharfside"};
    const test::ScratchKey depots_{HKEY_CURRENT_USER, "Software\\Quillon\\Farrow\\Depots"};
};

TEST_F(PublishDirectoryTest, PlainFilesArePublishedOverOneBindAndUpdatedTheNextTime) {
    const std::string one = Make("c1.cfg", "one"), two = Make("c2.cfg", "two");
    AddProfile("C1=" + one + "\r\nC2=" + two + "\r\n");
    for (const char* bytes : {"one", "changed"}) {
        SCOPED_TRACE(bytes);
        Make("c1.cfg", bytes);
        DepotSession session;
        session.LoadFile("<Corp>\\Sessions\\p.kra");
        server_.Mark();
        PublishDependentFiles(session);
        EXPECT_EQ(1, Counts().binds);
        EXPECT_EQ(0, Counts().searches);
        EXPECT_EQ(bytes, Published("c1.cfg"));
        EXPECT_EQ("two", Published("c2.cfg"));
        EXPECT_EQ("<Corp>\\Sessions\\c1.cfg", Client(session, "C1"));
        EXPECT_EQ("<Corp>\\Sessions\\c2.cfg", Client(session, "C2"));
        // The profile itself stays as it was.
        session.currentFile->changed = false;
    }
    EXPECT_EQ(std::vector<std::string>(), world_.boxes.Texts());
}

TEST_F(PublishDirectoryTest, EntriesArePublishedWithinTheDirectoryOverOneBind) {
    server_.AddFile("c1.cfg", base_, "one");
    AddProfile("C1=<Corp>\\c1.cfg\r\nC2=u:c2.cfg\r\n");
    DepotSession session;
    session.LoadFile("<Corp>\\Sessions\\p.kra");
    server_.Mark();
    PublishDependentFiles(session);
    EXPECT_EQ((OperationCounts{.binds = 1, .searches = 1, .adds = 1}), Counts());
    EXPECT_EQ("one", Published("c1.cfg"));
    EXPECT_EQ("c2.cfg", Client(session, "C2"));
    EXPECT_EQ("(missing)", Published("c2.cfg"));
}

TEST_F(PublishDirectoryTest, WatcherEndsTheWorkBetweenTwoClients) {
    const std::string two = Make("c2.cfg", "two");
    AddProfile("C1=" + Make("c1.cfg", "one") + "\r\nC2=" + two + "\r\n");
    DepotSession session;
    session.LoadFile("<Corp>\\Sessions\\p.kra");
    std::vector<std::uint32_t> heard;
    PublishDependentFiles(session, [&](const TransferProgress& progress) {
        heard.push_back(progress.filesDone);
        EXPECT_EQ(2u, progress.filesInAll);
        return false;
    });
    EXPECT_EQ(std::vector<std::uint32_t>{1}, heard);
    EXPECT_EQ("one", Published("c1.cfg"));
    EXPECT_EQ("(missing)", Published("c2.cfg"));
    EXPECT_EQ(two, Client(session, "C2"));
    session.currentFile->changed = false;
}

TEST_F(PublishDirectoryTest, ChangedListReachesTheDirectoryWhenTheFileIsReleased) {
    AddProfile("C1=" + Make("c1.cfg", "one") + "\r\nC2=u\r\n");
    DepotSession session;
    session.LoadFile("<Corp>\\Sessions\\p.kra");
    const std::string before = Published("p.kra");
    PublishDependentFiles(session);
    EXPECT_EQ(before, Published("p.kra"));
    session.ReleaseFile();
    const std::string after = Published("p.kra");
    EXPECT_NE(std::string::npos, after.find("C1=<Corp>\\Sessions\\c1.cfg"));
    EXPECT_EQ(std::string::npos, after.find("C2="));
    EXPECT_EQ(std::string::npos, after.find("Configuration File"));
}

TEST_F(PublishDirectoryTest, DirectoryThatCannotBeReachedIsReportedOnce) {
    AddProfile("C1=" + Make("c1.cfg", "1") + "\r\nC2=" + Make("c2.cfg", "2") + "\r\n");
    DepotSession session;
    session.LoadFile("<Corp>\\Sessions\\p.kra");
    session.currentFile->depot->DirectoryConnection()->Location().host.clear();
    PublishDependentFiles(session);
    EXPECT_EQ(1u, world_.boxes.Texts().size());
    EXPECT_EQ("<Corp>\\Sessions\\c2.cfg", Client(session, "C2"));
    session.currentFile->changed = false;
}

}  // namespace
}  // namespace depot
