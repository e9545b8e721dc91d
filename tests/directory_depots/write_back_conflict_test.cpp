// Write-backs that must not replace what someone else stored meanwhile.
#include "directory_depots/depot_fixture.h"
#include "platform/handles.h"
#include "platform/local_file.h"
#include "platform/paths.h"

namespace depot {
namespace {

using test::DirectoryServer;
using test::Fails;
using test::FileBytes;
using test::IsDone;
using test::OperationCounts;
using test::RecoveredFiles;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr char kOld[] = "[S]\r\nK=old\r\n";
constexpr char kNew[] = "[S]\r\nK=new\r\n";
constexpr char kTheirs[] = "[S]\r\nK=theirs\r\n";

// A server that does not say which controls it knows.
constexpr char kSilentAboutControls[] =
    "global access to dn.base=\"\" attrs=supportedControl by * none\n"
    "global access to * by * read";

// A schema whose contents attribute may be missing and cannot be compared.
constexpr char kSchemaWithoutComparison[] =
    "no-schema\n"
    "global attributetype ( 1.3.6.1.4.1.99999.1.1 NAME 'quillonFileContentsBinary' "
    "SYNTAX 1.3.6.1.4.1.1466.115.121.1.40 SINGLE-VALUE )\n"
    "global objectclass ( 1.3.6.1.4.1.99999.2.2 NAME 'quillonFileBinary' SUP top STRUCTURAL "
    "MUST cn MAY quillonFileContentsBinary )";

// Someone who stores another version just before a change reaches the server.
struct OtherEditor {
    DirectoryServer* server = nullptr;
    std::string dn;
    int changesBefore = 0;  // that reach it undisturbed
    decltype(DirectoryClient::ldap_modify_s) plain = nullptr;
    decltype(DirectoryClient::ldap_modify_ext_s) conditional = nullptr;

    void Store() {
        if (changesBefore-- > 0) return;
        server->Apply("dn: " + dn +
                      "\nchangetype: modify\nreplace: quillonFileContentsBinary\n"
                      "quillonFileContentsBinary: theirs\n");
    }
};
OtherEditor other;

ULONG LDAPAPI StoreThenModify(LDAP* connection, char* dn, LDAPModA** changes) {
    other.Store();
    return other.plain(connection, dn, changes);
}

ULONG LDAPAPI StoreThenModifyIf(LDAP* connection, char* dn, LDAPModA** changes,
                                LDAPControlA** server, LDAPControlA** client) {
    other.Store();
    return other.conditional(connection, dn, changes, server, client);
}

class ConflictTest : public test::DepotFixture {
protected:
    ConflictTest() { Use(server_, base_); }

    // Has someone store another version between the test and the change.
    void LetSomeoneStoreBetween(DirectoryServer& server, int changesBefore = 0) {
        DirectoryClient& client = Directory().Client();
        other = {&server, Entry(), changesBefore, client.ldap_modify_s, client.ldap_modify_ext_s};
        client.ldap_modify_s = &StoreThenModify;
        client.ldap_modify_ext_s = &StoreThenModifyIf;
    }
};

// The same behaviour with and without a server that tests and changes in one request.
class AnyServerConflictTest : public test::DepotFixture, public testing::WithParamInterface<bool> {
protected:
    AnyServerConflictTest() {
        if (!GetParam()) silent_ = std::make_unique<DirectoryServer>(kSilentAboutControls);
        DirectoryServer& server = GetParam() ? server_ : *silent_;
        const std::string base = GetParam() ? base_ : test::kSuffix;
        Use(server, base);
        server.AddFile("a.kra", base, kOld);
    }

    std::unique_ptr<DirectoryServer> silent_;
};

TEST_P(AnyServerConflictTest, UnchangedEntryTakesTheEdit) {
    const auto file = LoadChanged();
    EXPECT_TRUE(file->Release());
    EXPECT_EQ(kNew, Stored());
    EXPECT_THAT(RecoveredFiles(), IsEmpty());
    EXPECT_THAT(test::WorkingCopies(), IsEmpty());
    EXPECT_THAT(boxes_.Boxes(), IsEmpty());
}

TEST_P(AnyServerConflictTest, EntryThatSomeoneChangedStaysAndTheEditIsRecovered) {
    const auto file = LoadChanged();
    Overwrite(kTheirs);
    EXPECT_FALSE(file->Release());
    EXPECT_EQ(kTheirs, Stored());
    ExpectRecovered(kNew);
    ASSERT_EQ(1u, boxes_.Texts().size());
    EXPECT_THAT(boxes_.Texts().front(),
                testing::StartsWith("\"a.kra\" was changed by someone else meanwhile. "));
    EXPECT_THAT(test::WorkingCopies(), IsEmpty());
    EXPECT_EQ(kContentsChanged, Directory().LastError());
}

ULONG LDAPAPI FailSearch(LDAP*, char*, ULONG, char*, char**, ULONG, LDAPMessage** result) {
    *result = nullptr;
    return LDAP_BUSY;
}

TEST_P(AnyServerConflictTest, EditOfAFileThatCouldNotBeReadBlamesNobodyElse) {
    Choose();
    const auto realSearch = Directory().Client().ldap_search_s;
    Directory().Client().ldap_search_s = &FailSearch;
    const auto file = LoadChanged();
    Directory().Client().ldap_search_s = realSearch;
    EXPECT_FALSE(file->Release());
    EXPECT_EQ(kOld, Stored());
    ExpectRecovered(kNew);
    EXPECT_THAT(boxes_.Texts().back(),
                testing::StartsWith("\"a.kra\" could not be read when it was opened. What the "
                                    "directory holds stays; your changes are kept here:\n"));
}

TEST_P(AnyServerConflictTest, ErrorTextOfAConflictEndsWithThePath) {
    WorkingCopyOrigin origin;
    Load();
    const std::string copy = FetchToLocal(Directory(), Entry(), &origin);
    Overwrite(kTheirs);
    std::string text = "junk";
    EXPECT_THAT(ReleaseLocal(Directory(), Entry(), copy, true, &text, origin), Fails());
    ASSERT_EQ(1u, RecoveredFiles().size());
    EXPECT_THAT(text, testing::EndsWith("\n" + RecoveredFiles().front()));
    EXPECT_EQ(boxes_.Texts().back(), text);
}

TEST_P(AnyServerConflictTest, SameBytesStoredAgainAreNoConflict) {
    const auto file = LoadChanged();
    Overwrite(kTheirs);
    Overwrite(kOld);
    EXPECT_TRUE(file->Release());
    EXPECT_EQ(kNew, Stored());
}

TEST_P(AnyServerConflictTest, UnchangedCopyLeavesTheOtherVersionInSilence) {
    const auto file = Load();
    Overwrite(kTheirs);
    EXPECT_TRUE(file->Release());
    EXPECT_EQ(kTheirs, Stored());
    EXPECT_THAT(RecoveredFiles(), IsEmpty());
    EXPECT_THAT(boxes_.Boxes(), IsEmpty());
}

TEST_P(AnyServerConflictTest, BytesOfAnyKindAreRecognised) {
    for (const std::string& bytes : {std::string(" "), std::string("*()\\\0\x01\xFF", 7),
                                     std::string(20 * 1024, 'b'), std::string(1024 * 1024, 'c')}) {
        Overwrite(bytes);
        EXPECT_TRUE(LoadChanged()->Release()) << bytes.size();
        EXPECT_NE(bytes, Stored());
    }
    EXPECT_THAT(RecoveredFiles(), IsEmpty());
}

TEST_P(AnyServerConflictTest, EachWriteBackOfASessionIsTestedAnew) {
    EXPECT_TRUE(LoadChanged()->Release());
    const auto file = Load();
    file->WriteString("S", "K", "again");
    Overwrite(kTheirs);
    EXPECT_FALSE(file->Release());
    EXPECT_EQ(kTheirs, Stored());
    const auto next = Load();
    EXPECT_EQ("theirs", next->ReadString("S", "K", "", 100));
}

INSTANTIATE_TEST_SUITE_P(, AnyServerConflictTest, testing::Bool(), [](const auto& server) {
    return server.param ? "OffersAssertions" : "DoesNot";
});

TEST_F(ConflictTest, VersionStoredJustBeforeTheChangeStaysWhereTheServerTests) {
    server_.AddFile("a.kra", base_, kOld);
    const auto file = LoadChanged();
    LetSomeoneStoreBetween(server_);
    EXPECT_FALSE(file->Release());
    EXPECT_EQ("theirs", Stored());
    ExpectRecovered(kNew);
}

TEST_F(ConflictTest, VersionStoredJustBeforeTheChangeStaysWhereTheServerOffersNoTest) {
    DirectoryServer silent(kSilentAboutControls);
    Use(silent, test::kSuffix);
    silent.AddFile("a.kra", test::kSuffix, kOld);
    const auto file = LoadChanged();
    LetSomeoneStoreBetween(silent);
    EXPECT_FALSE(file->Release());
    EXPECT_EQ("theirs", Stored());
    ExpectRecovered(kNew);
}

TEST_F(ConflictTest, VersionStoredJustBeforeTheChangeIsReplacedWhereTheServerCannotCompare) {
    DirectoryServer silent(std::string(kSilentAboutControls) + "\n" + kSchemaWithoutComparison);
    Use(silent, test::kSuffix);
    silent.AddFile("a.kra", test::kSuffix, kOld);
    const auto file = LoadChanged();
    // The first change is the one that the server would have to compare for.
    LetSomeoneStoreBetween(silent, 1);
    EXPECT_TRUE(file->Release());
    EXPECT_EQ(kNew, Stored());
}

TEST_F(ConflictTest, VersionsOfUpToOneMegabyteAreTestedByTheServer) {
    server_.AddFile("a.kra", base_, kOld);
    static int conditional;
    other.conditional = Directory().Client().ldap_modify_ext_s;
    Directory().Client().ldap_modify_ext_s = [](LDAP* connection, char* dn, LDAPModA** changes,
                                                LDAPControlA** server,
                                                LDAPControlA** client) -> ULONG {
        ++conditional;
        return other.conditional(connection, dn, changes, server, client);
    };
    for (const std::uint32_t size : {1024 * 1024, 1024 * 1024 + 1}) {
        conditional = 0;
        Overwrite(std::string(size, 'v'));
        EXPECT_TRUE(LoadChanged()->Release());
        EXPECT_EQ(size == kLargestCondition ? 1 : 0, conditional);
    }
}

TEST_F(ConflictTest, ServerIsAskedOnceWhatItOffers) {
    server_.AddFile("a.kra", base_, kOld);
    auto file = LoadChanged();
    server_.Mark();
    EXPECT_TRUE(file->Release());
    EXPECT_EQ((OperationCounts{.binds = 1, .searches = 2, .modifications = 1}), server_.Counts());
    file = Load();
    file->WriteString("S", "K", "again");
    server_.Mark();
    EXPECT_TRUE(file->Release());
    EXPECT_EQ((OperationCounts{.binds = 1, .searches = 1, .modifications = 1}), server_.Counts());
}

TEST_F(ConflictTest, LastWriterWinsUnlessTheSettingIsOneOrTwo) {
    for (const DWORD setting : {0u, 3u}) {
        const std::string folder = test::NewFolder();
        Use(server_, folder, setting);
        server_.AddFile("a.kra", folder, kOld);
        const auto file = LoadChanged();
        Overwrite(kTheirs);
        server_.Mark();
        EXPECT_TRUE(file->Release());
        EXPECT_EQ((OperationCounts{.binds = 1, .modifications = 1}), server_.Counts());
        EXPECT_EQ(kNew, Stored());
    }
}

TEST_F(ConflictTest, EntryThatAppearedMeanwhileStays) {
    const auto file = LoadChanged();
    server_.AddFile("a.kra", base_, kTheirs);
    EXPECT_FALSE(file->Release());
    EXPECT_EQ(kTheirs, Stored());
    ExpectRecovered(kNew);
}

TEST_F(ConflictTest, EntryThatIsGoneHasTheEditRecovered) {
    server_.AddFile("a.kra", base_, kOld);
    const auto file = LoadChanged();
    server_.Apply("dn: " + Entry() + "\nchangetype: delete\n");
    EXPECT_FALSE(file->Release());
    ExpectRecovered(kNew);
    EXPECT_THAT(boxes_.Texts().back(), testing::StartsWith(test::MessageFor(LDAP_NO_SUCH_OBJECT)));
}

TEST_F(ConflictTest, DeletedWorkingCopyLeavesWhateverTheEntryHolds) {
    server_.AddFile("a.kra", base_, kOld);
    for (const std::string& bytes : {std::string(kOld), std::string(kTheirs)}) {
        const auto file = LoadChanged();
        ::DeleteFileA(file->localPath.c_str());
        Overwrite(bytes);
        EXPECT_FALSE(file->Release());
        EXPECT_EQ(bytes, Stored());
        EXPECT_THAT(RecoveredFiles(), IsEmpty());
    }
}

TEST_F(ConflictTest, AttributeThatTheServerCannotCompareIsComparedBeforeTheChange) {
    DirectoryServer server(kSchemaWithoutComparison);
    Use(server, test::kSuffix);
    server.AddFile("a.kra", test::kSuffix, kOld);
    EXPECT_TRUE(LoadChanged()->Release());
    EXPECT_EQ(kNew, Stored());
    const auto file = LoadChanged();
    Overwrite(kTheirs);
    EXPECT_FALSE(file->Release());
    EXPECT_EQ(kTheirs, Stored());
}

TEST_F(ConflictTest, EntryThatShowsNoContentsTakesNoEdit) {
    DirectoryServer server(kSchemaWithoutComparison);
    Use(server, test::kSuffix);
    server.Apply("dn: " + Entry() + "\nobjectClass: quillonFileBinary\ncn: a.kra\n");
    const auto file = LoadChanged();
    EXPECT_FALSE(file->Release());
    EXPECT_EQ("(none)", Stored());
    ExpectRecovered(kNew);
}

TEST_F(ConflictTest, WithdrawnRightsStillHaveTheEditRecovered) {
    server_.AddFile("a.kra", base_, kOld);
    Define(server_.Port(), base_, test::kReader, test::kReaderPassword);
    EXPECT_FALSE(LoadChanged()->Release());
    ExpectRecovered(kNew);
    EXPECT_THAT(boxes_.Texts().back(),
                testing::StartsWith(test::MessageFor(LDAP_INSUFFICIENT_RIGHTS)));
}

}  // namespace
}  // namespace depot
