// Listings above a server's size limit.
#include <set>

#include "support/directory_fixture.h"
#include "support/results.h"

namespace depot {
namespace {

using test::DirectoryServer;
using test::Fails;
using test::ForgetServer;
using test::IsCode;
using test::IsDone;
using test::OperationCounts;
using testing::IsEmpty;
using testing::SizeIs;

// At most this many entries without pages, and any number with them.
constexpr char kPaging[] = "database limits * size.soft=500 size.hard=500 size.prtotal=unlimited";

// The client's own functions, for those that stand in for them.
DirectoryClient genuine;
PagingClient genuinePaging;
int calls = 0;
DirectoryServer* stopping = nullptr;

class PagedListingTest : public testing::Test {
protected:
    PagedListingTest() {
        BindDirectoryClient(genuine);
        genuinePaging = PagingClient(genuine.library);
        calls = 0;
    }

    void Start(const std::string& settings) {
        server_ = std::make_unique<DirectoryServer>(settings);
        ForgetServer(server_->Port());
        location_ = server_->Location().Clone();
        items_ = std::make_unique<CLDAPItems>(location_.get());
        ASSERT_THAT(items_->ConnectLocation(nullptr), IsDone());
        server_->AddFolder("list", test::kSuffix);
    }
    // Adds so many files with running numbers to the folder.
    void AddFiles(int count) {
        std::string ldif;
        for (const int end = files_ + count; files_ < end; ++files_) {
            const std::string name = "f" + std::to_string(files_) + ".krc";
            ldif += "dn: cn=" + name + "," + folder_ +
                    "\nobjectClass: quillonFileBinary\ncn: " + name +
                    "\nquillonFileContentsBinary: x\n\n";
        }
        server_->Apply(ldif);
        server_->Mark();
    }
    std::set<std::string> Found() const {
        std::set<std::string> found;
        for (const CLDAPItem* child : children_) found.insert(child->path);
        return found;
    }
    int List() { return items_->ListChildren(folder_, children_); }
    void ExpectRefused() {
        children_.Add("junk", true);
        EXPECT_THAT(List(), Fails());
        EXPECT_THAT(items_->LastError(), IsCode(LDAP_SIZELIMIT_EXCEEDED));
        EXPECT_EQ(0u, children_.Count());
    }

    test::BoxLog boxes_;
    std::unique_ptr<DirectoryServer> server_;
    std::unique_ptr<CDepotPath> location_;
    std::unique_ptr<CLDAPItems> items_;
    LdapItemList children_;
    const std::string folder_ = std::string("cn=list,") + test::kSuffix;
    int files_ = 0;
};

TEST_F(PagedListingTest, ListingAtTheLimitIsOneSearchAndAboveItComesInPages) {
    Start(kPaging);
    AddFiles(500);
    EXPECT_THAT(List(), IsDone());
    EXPECT_EQ(500u, children_.Count());
    EXPECT_EQ((OperationCounts{.searches = 1}), server_->Counts());
    AddFiles(1);
    EXPECT_THAT(List(), IsDone());
    EXPECT_THAT(Found(), SizeIs(501));
    // The refused search, what the server offers, and two pages.
    EXPECT_EQ((OperationCounts{.searches = 4}), server_->Counts());
    EXPECT_THAT(boxes_.Boxes(), IsEmpty());
}

TEST_F(PagedListingTest, PageThatIsExactlyFullIsTheLastOne) {
    Start(kPaging);
    AddFiles(1000);
    EXPECT_THAT(List(), IsDone());
    EXPECT_EQ(1000u, children_.Count());
    EXPECT_THAT(Found(), SizeIs(1000));
    EXPECT_TRUE(Found().contains("CN=f999.krc," + folder_));
}

TEST_F(PagedListingTest, NamesThatCannotBeLocalAreCountedOverAllPages) {
    Start("database limits * size.soft=1 size.hard=1 size.prtotal=unlimited");
    AddFiles(501);
    server_->AddFile("CON", folder_, "x");
    EXPECT_THAT(items_->ListChildren(folder_, children_, "<Work>"), IsDone());
    EXPECT_EQ(501u, children_.Count());
    EXPECT_EQ(1u, items_->Entries().UnsafeNames());
    EXPECT_EQ("<Work>\\f0.krc", children_.At(0).path);
}

TEST_F(PagedListingTest, ServerThatGivesNoPagesEndsInItsSizeLimit) {
    Start("database limits * size.soft=3 size.hard=3 size.prtotal=disabled");
    AddFiles(5);
    ExpectRefused();
    EXPECT_EQ(test::MessageFor(LDAP_SIZELIMIT_EXCEEDED), items_->ErrorText());
    EXPECT_THAT(boxes_.Boxes(), IsEmpty());
}

TEST_F(PagedListingTest, ServerThatLimitsAllPagesTogetherEndsInItsSizeLimit) {
    Start("database limits * size.soft=3 size.hard=3 size.prtotal=600");
    AddFiles(601);
    ExpectRefused();
}

TEST_F(PagedListingTest, ServerThatDoesNotOfferPagesIsNotAskedForThem) {
    Start(kPaging);
    AddFiles(501);
    items_->Client().ldap_get_values = [](LDAP* connection, LDAPMessage* entry,
                                          PCHAR attribute) -> PCHAR* {
        // The first value stands for all: the paging control is not among it.
        PCHAR* const values = genuine.ldap_get_values(connection, entry, attribute);
        if (values == nullptr || std::string(attribute) != "supportedControl") return values;
        for (PCHAR* value = values; *value != nullptr; ++value) (*value)[0] = '0';
        return values;
    };
    ExpectRefused();
    EXPECT_EQ((OperationCounts{.searches = 2}), server_->Counts());
}

TEST_F(PagedListingTest, ServerThatDoesNotSayWhatItOffersIsNotAskedForPages) {
    Start(kPaging);
    AddFiles(501);
    items_->Client().ldap_search_s = [](LDAP* connection, PCHAR base, ULONG scope, PCHAR filter,
                                        PCHAR* attributes, ULONG typesOnly,
                                        LDAPMessage** result) -> ULONG {
        if (base[0] == '\0') return LDAP_INSUFFICIENT_RIGHTS;
        return genuine.ldap_search_s(connection, base, scope, filter, attributes, typesOnly,
                                     result);
    };
    ExpectRefused();
    EXPECT_EQ((OperationCounts{.searches = 1}), server_->Counts());
}

TEST_F(PagedListingTest, ClientThatCannotAskForPagesEndsInTheSizeLimit) {
    Start(kPaging);
    AddFiles(501);
    items_->Connection().Paging().ldap_parse_page_control = PagingClient().ldap_parse_page_control;
    EXPECT_FALSE(items_->Connection().Paging().IsComplete());
    ExpectRefused();
    EXPECT_EQ((OperationCounts{.searches = 1}), server_->Counts());
}

TEST_F(PagedListingTest, FirstPageThatIsRefusedInAnyWayEndsInTheSizeLimit) {
    Start(kPaging);
    AddFiles(501);
    items_->Connection().Paging().ldap_search_ext_s =
        [](LDAP*, const PCHAR, ULONG, const PCHAR, PCHAR[], ULONG, PLDAPControlA*, PLDAPControlA*,
           l_timeval*, ULONG, LDAPMessage**) -> ULONG { return LDAP_INSUFFICIENT_RIGHTS; };
    ExpectRefused();
}

TEST_F(PagedListingTest, ServerThatStopsBetweenTwoPagesIsDownAndLeavesNoHalfListing) {
    Start(kPaging);
    AddFiles(501);
    stopping = server_.get();
    items_->Connection().Paging().ldap_search_ext_s =
        [](LDAP* connection, const PCHAR base, ULONG scope, const PCHAR filter, PCHAR attributes[],
           ULONG typesOnly, PLDAPControlA* server, PLDAPControlA* client, l_timeval* timeout,
           ULONG limit, LDAPMessage** result) -> ULONG {
        if (++calls == 2) stopping->Stop();
        return genuinePaging.ldap_search_ext_s(connection, base, scope, filter, attributes,
                                               typesOnly, server, client, timeout, limit, result);
    };
    EXPECT_THAT(List(), Fails());
    EXPECT_THAT(items_->LastError(), IsCode(LDAP_SERVER_DOWN));
    EXPECT_EQ(0u, children_.Count());
    EXPECT_EQ(2, calls);
    server_->Continue();
}

TEST_F(PagedListingTest, FolderThatIsDeletedBetweenTwoPagesLeavesNoHalfListing) {
    Start(kPaging);
    AddFiles(501);
    static std::unique_ptr<CLDAPItems> other;
    other = std::make_unique<CLDAPItems>(location_.get());
    ASSERT_THAT(other->ConnectLocation(nullptr), IsDone());
    items_->Connection().Paging().ldap_search_ext_s =
        [](LDAP* connection, const PCHAR base, ULONG scope, const PCHAR filter, PCHAR attributes[],
           ULONG typesOnly, PLDAPControlA* server, PLDAPControlA* client, l_timeval* timeout,
           ULONG limit, LDAPMessage** result) -> ULONG {
        if (++calls == 2) {
            EXPECT_THAT(other->DeleteTree(base, nullptr), IsDone());
        }
        return genuinePaging.ldap_search_ext_s(connection, base, scope, filter, attributes,
                                               typesOnly, server, client, timeout, limit, result);
    };
    EXPECT_THAT(List(), Fails());
    EXPECT_THAT(items_->LastError(), IsCode(LDAP_NO_SUCH_OBJECT));
    EXPECT_EQ(0u, children_.Count());
    other.reset();
}

TEST_F(PagedListingTest, PagesThatNeverHoldAnEntryEnd) {
    Start("database limits * size.soft=1 size.hard=1 size.prtotal=unlimited");
    AddFiles(2);
    PagingClient& paging = items_->Connection().Paging();
    static berval cookie = {1, const_cast<PCHAR>("c")};
    // Always the first page of an empty folder, and always the promise of more.
    paging.ldap_create_page_control = [](PLDAP connection, ULONG entries, berval*, UCHAR critical,
                                         PLDAPControlA* control) -> ULONG {
        return genuinePaging.ldap_create_page_control(connection, entries, nullptr, critical,
                                                      control);
    };
    paging.ldap_search_ext_s = [](LDAP* connection, const PCHAR, ULONG scope, const PCHAR filter,
                                  PCHAR attributes[], ULONG typesOnly, PLDAPControlA* server,
                                  PLDAPControlA* client, l_timeval* timeout, ULONG limit,
                                  LDAPMessage** result) -> ULONG {
        ++calls;
        return genuinePaging.ldap_search_ext_s(
            connection, const_cast<PCHAR>("cn=editor,dc=farrow,dc=test"), scope, filter, attributes,
            typesOnly, server, client, timeout, limit, result);
    };
    paging.ldap_parse_page_control = [](PLDAP, PLDAPControlA*, ULONG*, berval** found) -> ULONG {
        *found = &cookie;
        return LDAP_SUCCESS;
    };
    items_->Client().ber_bvfree = [](berval*) {};
    ExpectRefused();
    EXPECT_EQ(101, calls);
}

TEST_F(PagedListingTest, TreeOfALargeFolderIsDeleted) {
    Start(kPaging);
    AddFiles(501);
    EXPECT_THAT(items_->DeleteTree(folder_, nullptr), IsDone());
    EXPECT_THAT(CodeOf(items_->Entries().Find(folder_)), Fails(LDAP_NO_SUCH_OBJECT));
}

}  // namespace
}  // namespace depot
