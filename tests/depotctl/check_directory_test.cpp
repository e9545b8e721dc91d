// What check reports of depots in a real directory.
#include "depotctl/directory_tool.h"
#include "support/access_rules.h"
#include "support/directory_kind.h"
#include "support/relay.h"

namespace depot::test {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class CheckDirectoryTest : public ToolTest {
protected:
    // Checks a depot; the last run is kept.
    std::string Step(const std::string& name, const std::string& key = "Dir") {
        run_ = RunTool({"check", "--json", key});
        const auto answer = run_.Json();
        for (const auto& step : answer["depots"][0]["locations"][0]["steps"]) {
            if (step["step"] == name) {
                return step["state"].get<std::string>() + ": " + step["text"].get<std::string>();
            }
        }
        return {};
    }

    void UseServer(DirectoryServer& server, const std::string& base) {
        ForgetServer(server.Port());
        key_.Dword("Dir", "Port1", server.Port());
        key_.Text("Dir", "Path1", base);
    }

    DirectoryDepot dir_{key_};
    ToolRun run_;
};

TEST_F(CheckDirectoryTest, DirectoryInOrderPassesEveryStep) {
    EXPECT_THAT(Step("server"), StartsWith("ok: 127.0.0.1:"));
    EXPECT_EQ(ExitCode::kDone, run_.exitCode) << run_.output << run_.errors;
    EXPECT_EQ("ok: not secured, as cn=editor,dc=farrow,dc=test", Step("log-on"));
    EXPECT_EQ("ok: " + dir_.base, Step("base"));
    EXPECT_EQ("ok: all classes and attributes are there", Step("schema"));
    EXPECT_EQ("ok: reading and writing", Step("rights"));
    EXPECT_EQ("ok: the base is listed in one go", Step("limits"));
    EXPECT_THAT(run_.output + run_.errors, Not(HasSubstr(kEditorPassword)));
    EXPECT_FALSE(dir_.server.Holds("cn=____Test____Writable____File___.twr," + dir_.base));
}

TEST_F(CheckDirectoryTest, ServerThatDoesNotAnswerIsUnreachable) {
    key_.Dword("Dir", "Port1", ClosedPort());
    EXPECT_THAT(Step("server"), HasSubstr("unreachable: nobody answers at 127.0.0.1"));
    EXPECT_EQ(ExitCode::kUnreachable, run_.exitCode);
    EXPECT_EQ("{\"error\":{\"code\":3,\"text\":\"1 location cannot be reached\"}}\n", run_.errors);
    EXPECT_EQ("", Step("log-on")) << "nothing is tried behind it";
}

TEST_F(CheckDirectoryTest, WrongPasswordIsAProblemOfTheLogOn) {
    key_.Text("Dir", "Password1", "wrong");
    EXPECT_EQ("problem: the user name or the password is wrong (LDAP 49)", Step("log-on"));
    EXPECT_EQ(ExitCode::kRefused, run_.exitCode);
    EXPECT_EQ("", Step("base"));
    key_.Text("Dir", "Password1", "");
    key_.Text("Dir", "Username1", "");
    EXPECT_THAT(Step("log-on"), HasSubstr("none are stored"));
}

TEST_F(CheckDirectoryTest, UserNameThatIsNoNameOfAnEntryIsToBeCorrected) {
    key_.Text("Dir", "Username1", "anna");
    EXPECT_THAT(Step("log-on"), HasSubstr("no valid distinguished name (LDAP 34)"));
    EXPECT_THAT(run_.output,
                AllOf(HasSubstr("correct Username"), Not(HasSubstr("correct the path"))));
}

TEST_F(CheckDirectoryTest, CredentialsAreNeverToBeStoredTwice) {
    key_.Text("Dir", "CredentialTarget1", "nothing is stored here");
    EXPECT_THAT(RunTool({"check", "--offline", "Dir"}).output,
                AllOf(HasSubstr("Password1: everyone"), Not(HasSubstr("--store-password"))));
    key_.Text("Dir", "Password1", "");
    EXPECT_THAT(Step("log-on"), HasSubstr("none are stored for it as \"nothing is stored here\""));
    EXPECT_THAT(run_.output,
                AllOf(HasSubstr("--store-password"), Not(HasSubstr("Username and Password"))));
}

TEST_F(CheckDirectoryTest, ClassThatCannotHaveTheNamingAttributeIsAProblem) {
    key_.Text("Dir", "FolderObjectClass1", "organizationalUnit");
    EXPECT_EQ("problem: organizationalUnit has no CN, so that no entry of this kind can be made",
              Step("schema"));
    key_.Text("Dir", "FolderAttributeName1", "ou");
    EXPECT_EQ("ok: all classes and attributes are there", Step("schema"));
}

TEST_F(CheckDirectoryTest, MissingBaseIsNamed) {
    key_.Text("Dir", "Path1", "cn=Nowhere," + dir_.base);
    EXPECT_EQ("problem: the base \"cn=Nowhere," + dir_.base + "\" is not there, or may not be seen",
              Step("base"));
    key_.Text("Dir", "Path1", "Nowhere");
    EXPECT_THAT(Step("macros"), StartsWith("note: the path is wrong"));
    EXPECT_EQ(ExitCode::kRefused, run_.exitCode);
    EXPECT_EQ("", Step("server"));
}

TEST_F(CheckDirectoryTest, ServerThatSendsTheClientOnIsNotFollowed) {
    DirectoryServer other;
    other.AddFolder("Away", kSuffix);
    dir_.server.Apply("dn: cn=There," + dir_.base +
                      "\nobjectClass: referral\nobjectClass: extensibleObject\ncn: There\n"
                      "ref: ldap://127.0.0.1:" +
                      std::to_string(other.Port()) + "/cn=Away," + kSuffix + "\n");
    key_.Text("Dir", "Path1", "cn=There," + dir_.base);
    other.Mark();
    EXPECT_EQ("problem: the entry is kept by another server (LDAP 10)", Step("base"));
    key_.Text("Dir", "Path1", dir_.base);
    EXPECT_EQ("ok: reading and writing", Step("rights"));
    EXPECT_EQ("", other.Log());
    key_.Text("Dir", "Path1", "cn=There," + dir_.base);
    key_.Dword("Dir", "FollowReferrals1", 1);
    EXPECT_THAT(Step("base"), StartsWith("ok: "));
    EXPECT_LT(0, other.Counts().searches);
}

TEST_F(CheckDirectoryTest, SecurityThatIsNoNumberIsNeverTriedInTheOpen) {
    key_.Text("Dir", "Security1", "2");
    dir_.server.Mark();
    EXPECT_THAT(Step("log-on"), HasSubstr("cannot be secured with StartTLS"));
    EXPECT_EQ(0, dir_.server.Counts().binds);
}

TEST_F(CheckDirectoryTest, ReaderReadsOnlyWhichIsNoProblem) {
    key_.Text("Dir", "Username1", kReader);
    key_.Text("Dir", "Password1", kReaderPassword);
    EXPECT_THAT(Step("rights"), StartsWith("note: reading only: "));
    EXPECT_EQ(ExitCode::kDone, run_.exitCode) << run_.errors;
}

TEST_F(CheckDirectoryTest, WhoeverMayWriteAndNotReadHasAProblem) {
    const struct {
        std::string settings, text;
    } rows[] = {
        {WritesUnreadContents(), "problem: writing only: the contents may not be read (LDAP 16)"},
        {SeesNoClasses(),
         "problem: writing only: entries are there but their class may not be read"},
    };
    for (const auto& row : rows) {
        DirectoryServer server(row.settings);
        UseServer(server, kSuffix);
        // With a file of the test's own as well as with one that is there.
        EXPECT_EQ(row.text, Step("rights"));
        EXPECT_EQ(ExitCode::kRefused, run_.exitCode);
        EXPECT_FALSE(
            server.Holds("cn=____Test____Writable____File___.twr," + std::string(kSuffix)));
        server.AddFolder("Sessions", kSuffix);
        server.AddFile("office.kre", "cn=Sessions," + std::string(kSuffix), "x");
        EXPECT_EQ(row.text, Step("rights"));
    }
}

TEST_F(CheckDirectoryTest, EntriesThatShowNoClassAreAProblemForWhoeverOnlyReads) {
    DirectoryServer server(
        "database access to attrs=userPassword by anonymous auth by * none\n"
        "database access to attrs=objectClass by * search\n"
        "database access to * by * read");
    UseServer(server, kSuffix);
    EXPECT_EQ("problem: entries are there but their class may not be read", Step("rights"));
    EXPECT_EQ(ExitCode::kRefused, run_.exitCode);
}

TEST_F(CheckDirectoryTest, EntriesThatReplicationKeptBesideOthersAreNamed) {
    EXPECT_THAT(Step("limits"), StartsWith("ok: "));
    EXPECT_EQ("", Step("conflicts"));
    dir_.server.Apply(
        "dn: cn=office.kre\\0ACNF:3f2504e0-4f89-11d3-9a0c-0305e82c3301,cn=Sessions," + dir_.base +
        "\nobjectClass: quillonFileBinary\nquillonFileContentsBinary: x\n"
        // The name with its line feed.
        "cn:: b2ZmaWNlLmtyZQpDTkY6M2YyNTA0ZTAtNGY4OS0xMWQzLTlhMGMtMDMwNWU4MmMzMzAx\n");
    const std::string found =
        "note: made on two servers at once, so that replication kept both: office.kre";
    EXPECT_EQ(found, Step("conflicts"));
    EXPECT_EQ(ExitCode::kDone, run_.exitCode) << run_.errors;
    if (SharedKind() != DirectoryKind::k389) return;
    // This one marks them, and hides what is marked.
    dir_.server.Apply("dn: cn=sub.kre+sn=3f," + dir_.base +
                      "\nobjectClass: quillonFileBinary\nobjectClass: ldapSubEntry\n"
                      "objectClass: extensibleObject\ncn: sub.kre\nsn: 3f\n"
                      "quillonFileContentsBinary: x\nnsds5ReplConflict: namingConflict\n");
    EXPECT_THAT(Step("conflicts"), AllOf(HasSubstr("office.kre"), HasSubstr("sub.kre")));
}

TEST_F(CheckDirectoryTest, BaseThatASearchDoesNotFindIsNamed) {
    DirectoryServer server(FindsNothing());
    UseServer(server, kSuffix);
    EXPECT_EQ("problem: the base \"" + std::string(kSuffix) + "\" is not there, or may not be seen",
              Step("base"));
}

TEST_F(CheckDirectoryTest, ProfileThatMayNotBeReadIsNeitherShownNorChanged) {
    DirectoryServer server(WritesUnreadContents());
    server.AddFile("office.kre", kSuffix, "[Host]\r\nName=mail\r\n");
    UseServer(server, kSuffix);
    const std::string before = server.Show(kSuffix, "sub");
    const std::vector<std::string> commands[] = {
        {"get", "<Dir>\\office.kre", "Host", "Name"},
        {"set", "<Dir>\\office.kre", "Host", "Port", "992"},
        {"cat", "<Dir>\\office.kre"},
        {"cp", "<Dir>\\office.kre", "<Dir>\\copy.kre"},
    };
    for (const auto& command : commands) {
        run_ = RunTool(command);
        EXPECT_EQ(ExitCode::kRefused, run_.exitCode) << command.front();
        EXPECT_THAT(run_.errors, HasSubstr("the contents may not be read")) << command.front();
    }
    EXPECT_EQ(before, server.Show(kSuffix, "sub"));
}

TEST_F(CheckDirectoryTest, FolderOutOfSightIsNotSaidToBeMade) {
    DirectoryServer server(FindsNothing());
    UseServer(server, kSuffix);
    run_ = RunTool({"mkdir", "-p", "<Dir>\\Sessions\\deep"});
    EXPECT_EQ(ExitCode::kRefused, run_.exitCode) << run_.output;
}

TEST_F(CheckDirectoryTest, MissingSchemaIsNamed) {
    DirectoryServer server("no-schema");
    UseServer(server, kSuffix);
    EXPECT_THAT(Step("schema"), HasSubstr("the server does not know quillonFolder, "
                                          "quillonFileBinary, quillonFileContentsBinary"));
    EXPECT_EQ(ExitCode::kRefused, run_.exitCode);
    EXPECT_THAT(Step("rights"), StartsWith("problem: "));
}

TEST_F(CheckDirectoryTest, NamesThatTheSchemaLacksAreNamed) {
    key_.Text("Dir", "FolderAttributeName1", "noSuchAttribute");
    EXPECT_EQ("problem: the server does not know noSuchAttribute", Step("schema"));
}

TEST_F(CheckDirectoryTest, SizeLimitIsReportedWithOrWithoutPages) {
    const struct {
        const char *settings, *step;
    } rows[] = {
        {"database limits users size=3",
         "problem: the server returns fewer entries than there are: its size limit (LDAP 4)"},
        {"database limits * size.soft=3 size.hard=3 size.prtotal=unlimited",
         "ok: the base is listed in pages, as the server's size limit wants it"},
    };
    for (const auto& row : rows) {
        DirectoryServer server(row.settings);
        for (int number = 0; number < 5; ++number) {
            server.AddFolder("f" + std::to_string(number), kSuffix);
        }
        UseServer(server, kSuffix);
        EXPECT_EQ(row.step, Step("limits")) << row.settings;
    }
}

TEST_F(CheckDirectoryTest, KeptConnectionIsRecommendedForAServerFarAway) {
    Relay relay(dir_.server.Port());
    ForgetServer(relay.Port());
    key_.Dword("Dir", "Port1", relay.Port());
    // A busy machine may be slow to answer itself.
    std::string nearby;
    for (int attempt = 0; attempt < 40 && !nearby.starts_with("ok: "); ++attempt) {
        nearby = Step("round trip");
    }
    EXPECT_THAT(nearby, StartsWith("ok: "));
    relay.HoldBack(std::chrono::milliseconds(10));
    EXPECT_THAT(Step("round trip"),
                AllOf(StartsWith("note: "), HasSubstr(" ms, and each call connects anew")));
    EXPECT_THAT(run_.output, HasSubstr("set KeepConnection1 to 60"));
    EXPECT_EQ(ExitCode::kDone, run_.exitCode) << run_.errors;
    key_.Dword("Dir", "KeepConnection1", 30);
    EXPECT_THAT(Step("round trip"),
                AllOf(StartsWith("ok: "), HasSubstr(" ms, with connections kept for 30 s")));
}

TEST_F(CheckDirectoryTest, SecuredConnectionsAreReported) {
    key_.Dword("Dir", "Security1", 1);
    EXPECT_THAT(Step("log-on"), HasSubstr("the connection cannot be secured with StartTLS"));
    EXPECT_NE(ExitCode::kDone, run_.exitCode);
}

}  // namespace
}  // namespace depot::test
