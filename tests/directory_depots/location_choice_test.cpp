#include "directory/connection_scope.h"
#include "model/depots.h"
#include "support/directory_fixture.h"
#include "support/results.h"
#include "support/scratch.h"

namespace depot {
namespace {

using test::DirectoryServer;
using test::ForgetServer;
using test::IsCode;
using test::IsDone;
using test::MessageFor;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

// A depot that is given one location after another.
class DepotOfLocations : public CDepot {
public:
    DepotOfLocations() : CDepot(nullptr) {}

    CDepotPath& Add(const CDepotPath& location) {
        paths->Append(location.Clone());
        CDepotPath& added = *paths->At(paths->Count() - 1);
        added.owner = paths.get();
        return added;
    }
    CDepotPath& AddDirectory(const std::string& base, unsigned port) {
        CDepotPath location = test::SharedServer().Location(base);
        location.port = port;
        location.authentication = kAnonymousAuthentication;
        ForgetServer(port);
        return Add(location);
    }
    CDepotPath& AddFolder(const std::string& path) {
        CDepotPath location(nullptr);
        location.path = path;
        return Add(location);
    }
};

class LocationChoiceTest : public test::DirectoryFixture {
protected:
    DepotOfLocations depot_;
};

TEST_F(LocationChoiceTest, ReachableDirectoryIsChosen) {
    CDepotPath& location = depot_.AddDirectory(base_, server_.Port());
    EXPECT_EQ(base_ + "\\", depot_.paths->GetActivePath());
    EXPECT_EQ(&location, depot_.paths->ChosenLocation());
    EXPECT_THAT(boxes_.Boxes(), IsEmpty());
}

TEST_F(LocationChoiceTest, ProbeIsOneBindAndOneSearchOfTheBaseAlone) {
    server_.AddFile("a.krc", base_, "x");
    depot_.AddDirectory(base_, server_.Port());
    depot_.AddDirectory(base_, server_.Port());
    server_.Mark();
    depot_.paths->GetActivePath();
    const std::string log = server_.Log();
    EXPECT_EQ((test::OperationCounts{.binds = 1, .searches = 1}), server_.Counts());
    EXPECT_THAT(log, HasSubstr("SRCH base=\"" + base_ + "\" scope=0"));
    EXPECT_THAT(log, HasSubstr("SRCH attr=1.1\n"));
    EXPECT_TRUE(server_.WaitForLog("UNBIND"));
}

TEST_F(LocationChoiceTest, OnlyLocationIsChosenUnasked) {
    CDepotPath& location = depot_.AddDirectory(base_, server_.Port());
    server_.Mark();
    depot_.paths->GetActivePath();
    EXPECT_EQ(&location, depot_.paths->ChosenLocation());
    EXPECT_EQ("", server_.Log());
}

TEST_F(LocationChoiceTest, ProbeNamesWhoeverWasNamedForTheServerBefore) {
    CDepotPath& location = depot_.AddDirectory(base_, server_.Port());
    location.authentication = kSimpleAuthentication;
    location.username.clear();
    location.password.clear();
    CDepotPath typed = location;
    CLDAPItems other(&typed);
    other.SetUserName(test::kReader);
    other.SetPassword(test::kReaderPassword);
    server_.Mark();
    depot_.paths->GetActivePath();
    EXPECT_THAT(server_.Log(), HasSubstr(std::string("BIND dn=\"") + test::kReader + "\""));
    EXPECT_EQ("", location.username);
    EXPECT_THAT(boxes_.Boxes(), IsEmpty());
}

TEST_F(LocationChoiceTest, ProbeShowsNoPromptWithoutKnownCredentials) {
    CDepotPath& location = depot_.AddDirectory(base_, server_.Port());
    location.authentication = kSimpleAuthentication;
    location.username.clear();
    location.password.clear();
    server_.Mark();
    depot_.paths->GetActivePath();
    EXPECT_THAT(server_.Log(), HasSubstr("BIND dn=\"\""));
    EXPECT_THAT(boxes_.Boxes(), IsEmpty());
}

TEST_F(LocationChoiceTest, ChoiceIsMadeOnce) {
    depot_.AddDirectory(base_, server_.Port());
    depot_.paths->GetActivePath();
    server_.Mark();
    depot_.paths->GetActivePath();
    depot_.paths->ActiveLocation();
    EXPECT_EQ("", server_.Log());
}

TEST_F(LocationChoiceTest, ServerThatIsDownIsPassedOver) {
    depot_.AddDirectory(base_, test::ClosedPort());
    CDepotPath& second = depot_.AddDirectory(base_, server_.Port());
    depot_.paths->GetActivePath();
    EXPECT_EQ(&second, depot_.paths->ChosenLocation());
    EXPECT_THAT(boxes_.Boxes(), IsEmpty());
}

TEST_F(LocationChoiceTest, MissingBaseIsPassedOverSilently) {
    depot_.AddDirectory("cn=missing," + base_, server_.Port());
    CDepotPath& second = depot_.AddDirectory(base_, server_.Port());
    depot_.paths->GetActivePath();
    EXPECT_EQ(&second, depot_.paths->ChosenLocation());
    EXPECT_THAT(boxes_.Boxes(), IsEmpty());
}

TEST_F(LocationChoiceTest, InvalidBaseIsReportedAndPassedOver) {
    depot_.AddDirectory("not a name", server_.Port());
    CDepotPath& second = depot_.AddDirectory(base_, server_.Port());
    depot_.paths->GetActivePath();
    EXPECT_EQ(&second, depot_.paths->ChosenLocation());
    EXPECT_THAT(boxes_.Texts(), ElementsAre(MessageFor(LDAP_INVALID_DN_SYNTAX)));
}

TEST_F(LocationChoiceTest, WithoutAnyReachableLocationTheFirstIsChosen) {
    CDepotPath& first = depot_.AddDirectory("cn=missing," + base_, server_.Port());
    depot_.AddFolder("C:\\no such folder");
    EXPECT_EQ(first.path + "\\", depot_.paths->GetActivePath());
    EXPECT_EQ(&first, depot_.paths->ChosenLocation());
}

TEST_F(LocationChoiceTest, FolderBeforeTheDirectoryKeepsTheServerUncontacted) {
    const test::ScratchFolder folder;
    depot_.AddFolder(folder.Path());
    depot_.AddDirectory(base_, server_.Port());
    EXPECT_FALSE(depot_.paths->ChoiceProbesDirectory());
    server_.Mark();
    EXPECT_EQ(folder.Path() + "\\", depot_.paths->GetActivePath());
    EXPECT_EQ("", server_.Log());
    EXPECT_EQ(nullptr, depot_.DirectoryConnection());
}

TEST_F(LocationChoiceTest, MissingFolderBeforeTheDirectoryProbesTheServer) {
    depot_.AddFolder("C:\\no such folder");
    CDepotPath& second = depot_.AddDirectory(base_, server_.Port());
    EXPECT_TRUE(depot_.paths->ChoiceProbesDirectory());
    depot_.paths->GetActivePath();
    EXPECT_EQ(&second, depot_.paths->ChosenLocation());
    EXPECT_FALSE(depot_.paths->ChoiceProbesDirectory());
}

TEST_F(LocationChoiceTest, BaseWithSevenHundredEntriesIsFoundUnderTheDefaultLimit) {
    std::string entries;
    for (int index = 0; index < 700; ++index) {
        const std::string name = "f" + std::to_string(index);
        entries +=
            "dn: cn=" + name + "," + base_ + "\nobjectClass: quillonFolder\ncn: " + name + "\n\n";
    }
    server_.Apply(entries);
    depot_.AddDirectory("cn=missing," + base_, server_.Port());
    CDepotPath& second = depot_.AddDirectory(base_, server_.Port());
    depot_.paths->GetActivePath();
    EXPECT_EQ(&second, depot_.paths->ChosenLocation());
}

TEST_F(LocationChoiceTest, DepotsConnectionIsMadeOnceAndForTheActiveLocation) {
    depot_.AddDirectory("cn=missing," + base_, server_.Port());
    CDepotPath& second = depot_.AddDirectory(base_, server_.Port());
    CLDAPItems* const connection = depot_.DirectoryConnection();
    ASSERT_NE(nullptr, connection);
    EXPECT_EQ(&second, &connection->Location());
    EXPECT_FALSE(connection->IsConnected());
    EXPECT_EQ(connection, depot_.DirectoryConnection());
}

TEST_F(LocationChoiceTest, CopiedDepotMakesItsOwnConnection) {
    depot_.AddDirectory(base_, server_.Port());
    CLDAPItems* const connection = depot_.DirectoryConnection();
    const std::unique_ptr<CDepot> copy = depot_.Clone();
    EXPECT_NE(connection, copy->DirectoryConnection());
    EXPECT_EQ(copy->paths->At(0), &copy->DirectoryConnection()->Location());
    depot_.CopyFrom(copy.get());
    EXPECT_EQ(depot_.paths->At(0), &depot_.DirectoryConnection()->Location());
}

TEST_F(LocationChoiceTest, EmptyListHasNoConnection) {
    EXPECT_EQ(nullptr, depot_.DirectoryConnection());
    EXPECT_EQ("", depot_.paths->GetActivePath());
}

// The probe is the system's own affair: the user hears of a location from its first use.
class UnseenProbeTest : public test::DirectoryFixture {
protected:
    UnseenProbeTest() { InstallCredentialsPrompt(&prompt_); }
    ~UnseenProbeTest() override { InstallCredentialsPrompt(nullptr); }

    CDepotPath& AddUsersDirectory(const std::string& userName, const std::string& password,
                                  unsigned port) {
        CDepotPath& location = depot_.AddDirectory(base_, port);
        location.authentication = kSimpleAuthentication;
        location.username = userName;
        location.password = password;
        return location;
    }
    CDepotPath& AddUsersDirectory(const std::string& userName, const std::string& password) {
        return AddUsersDirectory(userName, password, server_.Port());
    }
    void TypeElsewhere(const std::string& userName, const std::string& password) const {
        CDepotPath location = server_.Location();
        CLDAPItems other(&location);
        other.SetUserName(userName);
        other.SetPassword(password);
    }
    DirectoryInfo& Info(unsigned port) {
        return *infos_
                    .emplace_back(
                        std::make_unique<DirectoryInfoBlock>(ServerKey("127.0.0.1", port)))
                    ->Access();
    }
    // The location that was added is out of reach, which leaves no trace.
    void ExpectPassedOver(unsigned port) {
        CDepotPath& second = depot_.AddDirectory(base_, server_.Port());
        depot_.paths->GetActivePath();
        EXPECT_EQ(&second, depot_.paths->ChosenLocation());
        EXPECT_THAT(boxes_.Boxes(), IsEmpty());
        EXPECT_THAT(prompt_.shown, IsEmpty());
        EXPECT_THAT(Info(port).lastError, IsCode(LDAP_SUCCESS));
        EXPECT_EQ(0u, Info(port).noPrompt);
    }
    // The first use of the depot's only location, after the probe.
    bool Use() {
        depot_.paths->GetActivePath();
        EXPECT_THAT(boxes_.Boxes(), IsEmpty());
        EXPECT_THAT(prompt_.shown, IsEmpty());
        const ConnectionScope connection(*depot_.DirectoryConnection(), nullptr);
        return static_cast<bool>(connection);
    }

    DepotOfLocations depot_;
    std::vector<std::unique_ptr<DirectoryInfoBlock>> infos_;
};

TEST_F(UnseenProbeTest, WrongStoredPasswordIsPassedOver) {
    AddUsersDirectory(test::kReader, "wrong");
    ExpectPassedOver(server_.Port());
}

TEST_F(UnseenProbeTest, NameWithoutAPasswordIsPassedOver) {
    AddUsersDirectory(test::kReader, "");
    ExpectPassedOver(server_.Port());
}

TEST_F(UnseenProbeTest, ServerThatWantsNoAnonymousUsersIsPassedOver) {
    DirectoryServer strict("global disallow bind_anon");
    depot_.AddDirectory(base_, strict.Port());
    ExpectPassedOver(strict.Port());
}

TEST_F(UnseenProbeTest, ServerThatIsDownIsPassedOver) {
    const unsigned port = test::ClosedPort();
    AddUsersDirectory(test::kReader, test::kReaderPassword, port);
    ExpectPassedOver(port);
    ForgetServer(port);
}

TEST_F(UnseenProbeTest, FirstUseOfAWrongStoredPasswordShowsOneBoxAndOnePrompt) {
    AddUsersDirectory(test::kReader, "wrong");
    prompt_.Type(test::kReader, test::kReaderPassword);
    EXPECT_TRUE(Use());
    EXPECT_THAT(boxes_.Texts(), ElementsAre(MessageFor(LDAP_INVALID_CREDENTIALS)));
    EXPECT_EQ(1u, prompt_.shown.size());
}

TEST_F(UnseenProbeTest, FirstUseOfAnOutdatedSharedPasswordShowsOneBoxAndOnePrompt) {
    AddUsersDirectory("", "");
    TypeElsewhere(test::kReader, "outdated");
    prompt_.Type(test::kReader, test::kReaderPassword);
    EXPECT_TRUE(Use());
    EXPECT_THAT(boxes_.Texts(), ElementsAre(MessageFor(LDAP_INVALID_CREDENTIALS)));
    ASSERT_EQ(1u, prompt_.shown.size());
    EXPECT_EQ("outdated", prompt_.shown[0].password);
}

TEST_F(UnseenProbeTest, FirstUseOfANameWithoutAPasswordShowsOnePrompt) {
    AddUsersDirectory(test::kReader, "");
    prompt_.Type(test::kReader, test::kReaderPassword);
    EXPECT_TRUE(Use());
    EXPECT_THAT(boxes_.Boxes(), IsEmpty());
    EXPECT_EQ(1u, prompt_.shown.size());
}

TEST_F(UnseenProbeTest, FirstUseWithoutAnonymousBindsShowsOneBoxAndTurnsPromptingOff) {
    DirectoryServer strict("global disallow bind_anon");
    depot_.AddDirectory(base_, strict.Port());
    EXPECT_FALSE(Use());
    EXPECT_THAT(boxes_.Texts(), ElementsAre(MessageFor(LDAP_INAPPROPRIATE_AUTH)));
    EXPECT_THAT(prompt_.shown, IsEmpty());
    EXPECT_EQ(1u, Info(strict.Port()).noPrompt);
}

TEST_F(UnseenProbeTest, CredentialsThatTheProbeKnowsServeTheFirstUseWhilePromptingIsOff) {
    AddUsersDirectory("", "");
    TypeElsewhere(test::kReader, test::kReaderPassword);
    Info(server_.Port()).noPrompt = 1;
    EXPECT_TRUE(Use());
    EXPECT_THAT(prompt_.shown, IsEmpty());
}

// Two servers that hold the same data.
using ReplicationTest = LocationChoiceTest;

void WaitFor(DirectoryServer& server, const std::string& dn) {
    for (int round = 0; round < 200 && !server.Holds(dn); ++round) Sleep(50);
    ASSERT_TRUE(server.Holds(dn));
}

TEST_F(ReplicationTest, WithTheFirstServerStoppedANewListUsesTheSecondAndSeesTheSame) {
    DirectoryServer first("multi");
    DirectoryServer second("multi");
    second.Follow(first);
    first.Follow(second);
    first.AddFolder("home", test::kSuffix);
    const std::string home = std::string("cn=home,") + test::kSuffix;
    first.AddFile("a.krc", home, "bytes");
    WaitFor(second, "cn=a.krc," + home);

    depot_.AddDirectory(home, first.Port());
    depot_.AddDirectory(home, second.Port());
    depot_.paths->GetActivePath();
    EXPECT_EQ(depot_.paths->At(0), depot_.paths->ChosenLocation());
    first.Stop();
    // The choice stays for the life of the list.
    EXPECT_EQ(depot_.paths->At(0), depot_.paths->ActiveLocation());

    CDepot renewed(nullptr);
    renewed.paths->Copy(depot_.paths.get());
    renewed.paths->GetActivePath();
    ASSERT_EQ(renewed.paths->At(1), renewed.paths->ChosenLocation());
    CLDAPItems& connection = *renewed.DirectoryConnection();
    ASSERT_THAT(connection.ConnectLocation(nullptr), IsDone());
    FileBuffer buffer;
    EXPECT_THAT(connection.ReadFileContents("cn=a.krc," + home, buffer), IsDone());
    EXPECT_EQ(5u, buffer.length);

    // What is written meanwhile reaches the first server once it is back.
    second.AddFile("b.krc", home, "more");
    first.Continue();
    WaitFor(first, "cn=b.krc," + home);
    EXPECT_EQ(renewed.paths->At(1), renewed.paths->ActiveLocation());
}

}  // namespace
}  // namespace depot
