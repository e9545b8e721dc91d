// The sample scripts that need a directory.
#include "scripts/script_fixture.h"
#include "support/directory_server.h"

namespace depot::test {
namespace {

constexpr char kHost[] = "[Host]\r\nName=host.example\r\n";
constexpr char kProfile[] =
    "[Skein]\r\nCount=2\r\n[Clients]\r\nC1=<Work>\\Sessions\\office.kre\r\n"
    "C2=<Work>\\Sessions\\warehouse.kre\r\n[Server]\r\nConfiguration File=counter.cfg\r\n";

// The depot "Company" of the samples, over a folder of a directory.
class SampleTest : public ScriptTest {
protected:
    SampleTest() {
        ForgetServer(server_.Port());
        folder_.MakeFile("Work\\Sessions\\warehouse.kre", kHost);
        depots_.Text("Company", "Path1", base_);
        depots_.Dword("Company", "Type1", kDirectoryLocation);
        depots_.Text("Company", "Host1", "127.0.0.1");
        depots_.Dword("Company", "Port1", server_.Port());
        depots_.Dword("Company", "Authentication1", 1);
        depots_.Text("Company", "Username1", kEditor);
        depots_.Text("Company", "Password1", kEditorPassword);
        server_.AddFolder("Sessions", base_);
        server_.AddFile("reception.kre", "cn=Sessions," + base_, kHost);
        server_.AddFile("counter.kra", base_, kProfile);
    }

    DirectoryServer& server_ = SharedServer();
    const std::string base_ = NewFolder();
};

TEST_F(SampleTest, FilesAreCopiedRenamedPublishedAndDeleted) {
    EXPECT_EQ(
        (Lines{"Copied to:  <Company>\\Sessions\\reception - copy.kre", "Renamed:    host.example",
               "Before:     <Work>\\Sessions\\office.kre, <Work>\\Sessions\\warehouse.kre",
               "Published:  <Company>\\office.kre, <Company>\\warehouse.kre",
               "The copies: host.example, host.example",
               "Deleted:    <Company>\\Sessions\\gate.kre", "Session ended."}),
        Run("files.vbs"));
    const std::string sessions = "cn=Sessions," + base_;
    EXPECT_TRUE(server_.Holds("cn=office.kre," + base_));
    EXPECT_TRUE(server_.Holds("cn=warehouse.kre," + base_));
    EXPECT_TRUE(server_.Holds("cn=reception.kre," + sessions));
    EXPECT_FALSE(server_.Holds("cn=reception - copy.kre," + sessions));
    EXPECT_FALSE(server_.Holds("cn=gate.kre," + sessions));
}

}  // namespace
}  // namespace depot::test
