// One entry through two connections, at servers that show less of it than others.
#include "directory_pairs/pairs_fixture.h"
#include "fileops/copy.h"
#include "store/directory_store.h"
#include "support/directory_transfer.h"
#include "support/results.h"

namespace depot::test {
namespace {

constexpr char kHiddenIdentifier[] =
    "database access to attrs=userPassword by anonymous auth by * none\n"
    "database access to attrs=entryUUID by * none\n";
constexpr char kWriters[] =
    "database access to * by dn.exact=\"cn=editor,dc=farrow,dc=test\" write by * read\n";
// The reader may write, but sees nothing.
constexpr char kBlindWriter[] =
    "database access to * by dn.exact=\"cn=editor,dc=farrow,dc=test\" write "
    "by dn.exact=\"cn=reader,dc=farrow,dc=test\" =w by * auth\n";
// Identifiers of other makers' servers, as plain attributes here.
constexpr char kOtherIdentifiers[] =
    "global attributetype ( 1.3.6.1.4.1.99999.9.1 NAME 'objectGUID' "
    "SYNTAX 1.3.6.1.4.1.1466.115.121.1.40 SINGLE-VALUE )\n"
    "global attributetype ( 1.3.6.1.4.1.99999.9.2 NAME 'nsUniqueId' "
    "SYNTAX 1.3.6.1.4.1.1466.115.121.1.15 SINGLE-VALUE )\n";

// Two connections to the base of one server, by two names of its host.
class UnknownIdentityTest : public testing::Test {
protected:
    void Start(const std::string& settings) {
        server_ = std::make_unique<DirectoryServer>(settings);
        server_->AddFile("a.kra", kSuffix, "1");
        server_->AddFolder("tree", kSuffix);
        server_->AddFile("b.kra", tree_, "2");
        one_ = server_->Location().Clone();
        other_ = server_->Location().Clone();
        other_->host = "localhost";
        ForgetServer(server_->Port());
        ForgetServer(server_->Port(), "localhost");
        first_ = std::make_unique<CLDAPItems>(one_.get());
        second_ = std::make_unique<CLDAPItems>(other_.get());
    }
    int Copy(const std::string& from, const std::string& to, SourceFate fate) {
        return CopyEntry(*first_, from, *second_, to, ExistingEntries::kReplace, &error_, {}, fate);
    }
    ItemIdentity Compare(const std::string& dn) {
        DirectoryStore one(*first_), other(*second_);
        const StoreScope first(one), second(other);
        return CompareItems({&one, dn}, {&other, dn});
    }
    // Gives the file an identifier that is a plain attribute.
    void AddIdentifier(const std::string& name, const std::string& value) {
        server_->Apply("dn: " + file_ +
                       "\nchangetype: modify\nadd: objectClass\n"
                       "objectClass: extensibleObject\n-\nadd: " +
                       name + "\n" + name + ": " + value + "\n");
    }

    const std::string file_ = std::string("cn=a.kra,") + kSuffix;
    const std::string tree_ = std::string("cn=tree,") + kSuffix;
    std::unique_ptr<DirectoryServer> server_;
    std::unique_ptr<CDepotPath> one_, other_;
    std::unique_ptr<CLDAPItems> first_, second_;
    std::string error_ = "junk";
    BoxLog boxes_;
};

TEST_F(UnknownIdentityTest, EntryIsNotMovedOntoOrIntoWhatMayBeItself) {
    Start(std::string(kHiddenIdentifier) + kWriters);
    EXPECT_EQ(ItemIdentity::kUnknown, Compare(file_));
    for (const auto& [from, to] :
         {std::pair(file_, file_), std::pair(tree_, tree_), std::pair(tree_, "cn=x," + tree_),
          std::pair("cn=b.kra," + tree_, tree_)}) {
        SCOPED_TRACE(from + " to " + to);
        EXPECT_THAT(Copy(from, to, SourceFate::kGoes), Fails());
        EXPECT_THAT(first_->LastError(), IsCode(LDAP_PARAM_ERROR));
        EXPECT_TRUE(server_->Holds(from));
    }
    EXPECT_FALSE(server_->Holds("cn=x," + tree_));
    // Names that differ are no reason.
    EXPECT_THAT(Copy(file_, "cn=c.kra," + tree_, SourceFate::kGoes), IsDone());
}

TEST_F(UnknownIdentityTest, CopyOntoWhatMayBeItselfDestroysNothing) {
    Start(std::string(kHiddenIdentifier) + kWriters);
    Copy(file_, file_, SourceFate::kStays);
    Copy(tree_, tree_, SourceFate::kStays);
    EXPECT_THAT(server_->Show(file_), testing::HasSubstr("quillonFileContentsBinary: 1\n"));
    EXPECT_THAT(server_->Show("cn=b.kra," + tree_),
                testing::HasSubstr("quillonFileContentsBinary: 2\n"));
}

TEST_F(UnknownIdentityTest, MovedItemStaysWhereItIs) {
    Start(std::string(kHiddenIdentifier) + kWriters);
    DepotWorld world;
    std::vector<CDepot*> depots;
    for (const CDepotPath* place : {one_.get(), other_.get()}) {
        auto depot = std::make_unique<CDepot>(&world.depots);
        depot->name = place->host == "localhost" ? "Twin" : "Work";
        auto location = place->Clone();
        location->owner = depot->paths.get();
        depot->paths->Append(std::move(location));
        depots.push_back(depot.get());
        world.depots.Add(depot.release(), false);
    }
    const CDepotItem from("<Work>\\a.kra", depots[0]), to("<Twin>\\a.kra", depots[1]);
    EXPECT_THAT(ItemOperation(from, &to, FO_MOVE, nullptr, &error_), Fails());
    EXPECT_TRUE(server_->Holds(file_));
}

TEST_F(UnknownIdentityTest, IdentifiersOfOtherServersAreKnown) {
    for (const char* name : {"objectGUID", "nsUniqueId"}) {
        SCOPED_TRACE(name);
        Start(std::string(kOtherIdentifiers) + kHiddenIdentifier + kWriters);
        AddIdentifier(name, "0123456789abcdef");
        EXPECT_EQ(ItemIdentity::kSame, Compare(file_));
        EXPECT_THAT(Copy(file_, file_, SourceFate::kStays), Fails());
        EXPECT_THAT(first_->LastError(), IsCode(LDAP_PARAM_ERROR));
    }
}

TEST_F(UnknownIdentityTest, OtherIdentifiersAreThoseOfAnotherEntry) {
    Start(std::string(kOtherIdentifiers) + kHiddenIdentifier + kWriters);
    AddIdentifier("objectGUID", "one");
    DirectoryServer server(std::string(kOtherIdentifiers) + kHiddenIdentifier + kWriters);
    ForgetServer(server.Port());
    server.AddFile("a.kra", kSuffix, "other");
    server.Apply("dn: " + file_ +
                 "\nchangetype: modify\nadd: objectClass\n"
                 "objectClass: extensibleObject\n-\nadd: objectGUID\nobjectGUID: two\n");
    other_ = server.Location().Clone();
    second_ = std::make_unique<CLDAPItems>(other_.get());
    EXPECT_EQ(ItemIdentity::kOther, Compare(file_));
    EXPECT_THAT(Copy(file_, file_, SourceFate::kGoes), IsDone());
    EXPECT_THAT(server.Show(file_), testing::HasSubstr("quillonFileContentsBinary: 1\n"));
}

TEST_F(UnknownIdentityTest, MoveThroughAUserWhoSeesNothingReplacesNothing) {
    Start(std::string(kHiddenIdentifier) + kBlindWriter);
    other_->username = kReader;
    other_->password = kReaderPassword;
    EXPECT_EQ(ItemIdentity::kUnseen, Compare(file_));
    EXPECT_THAT(Copy(file_, file_, SourceFate::kGoes), Fails());
    EXPECT_THAT(first_->LastError(), IsCode(LDAP_ALREADY_EXISTS));
    EXPECT_TRUE(server_->Holds(file_));
}

}  // namespace
}  // namespace depot::test
