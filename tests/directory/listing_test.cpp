// Listing the children of a folder.
#include "platform/text.h"
#include "support/directory_fixture.h"
#include "support/results.h"

namespace depot {
namespace {

using test::Fails;
using test::IsCode;
using test::IsDone;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

std::vector<std::string> ListFolder(CLDAPItems& directory, const std::string& folder,
                                    const std::string& localBase = {}) {
    std::vector<std::string> children;
    LdapItemList items;
    items.Add("junk", true);
    EXPECT_THAT(directory.ListChildren(folder, items, localBase), IsDone());
    for (const CLDAPItem* item : items) {
        children.push_back((item->isFolder ? "folder " : "file ") + item->path);
    }
    return children;
}

class ListingTest : public test::DirectoryFixture {
protected:
    std::vector<std::string> List(const std::string& localBase = {}) {
        return ListFolder(Connected(), base_, localBase);
    }
};

TEST_F(ListingTest, DistinguishesFoldersAndFilesByTheirClass) {
    server_.AddFolder("v1.2", base_);
    server_.AddFile("plain", base_, "x");
    EXPECT_THAT(List(), UnorderedElementsAre("folder CN=v1.2," + base_, "file CN=plain," + base_));
}

TEST_F(ListingTest, EmptyFolderSucceedsWithNothing) {
    EXPECT_THAT(List(), IsEmpty());
}

TEST_F(ListingTest, LeavesOutEntriesOfOtherClasses) {
    server_.Apply("dn: " + Dn("person") + "\nobjectClass: person\ncn: person\nsn: person\n");
    server_.AddFile("a.krc", base_, "x");
    EXPECT_THAT(List(), ElementsAre("file CN=a.krc," + base_));
}

TEST_F(ListingTest, TakesDirectChildrenOnly) {
    server_.AddFolder("sub", base_);
    server_.AddFile("a.krc", Dn("sub"), "x");
    EXPECT_THAT(List(), ElementsAre("folder CN=sub," + base_));
}

TEST_F(ListingTest, WithALocalBaseGivesLocalPaths) {
    server_.AddFolder("sub", base_);
    server_.AddFile("a.krc", base_, "x");
    EXPECT_THAT(List("C:\\local"),
                UnorderedElementsAre("folder C:\\local\\sub", "file C:\\local\\a.krc"));
    EXPECT_EQ(0u, Connected().Entries().UnsafeNames());
}

TEST_F(ListingTest, WithALocalBaseLeavesOutNamesThatLeadElsewhere) {
    for (const char* name : {"..\\5Cup.krc", "nul.krc", "a/b.krc", "c:x.krc", ".."}) {
        server_.AddFile(name, base_, "x");
    }
    server_.AddFile("good.krc", base_, "x");
    EXPECT_THAT(List("C:\\local"), ElementsAre("file C:\\local\\good.krc"));
    EXPECT_EQ(5u, Connected().Entries().UnsafeNames());
    EXPECT_EQ(6u, List().size());
    EXPECT_EQ(0u, Connected().Entries().UnsafeNames());
}

TEST_F(ListingTest, NamesThatTheCodePageCannotHoldAreLeftOutAndCounted) {
    server_.AddFile("A.krc", base_, "x");
    for (const char* name : {"\xC4\x80.krc", "\xE8\xA1\xA8.krc"}) {
        server_.AddFile(name, base_, "x");
    }
    server_.AddFolder("\xE8\xA1\xA8", base_);
    server_.AddFile("\xC3\xA4.krc", base_, "x");
    EXPECT_THAT(List(),
                UnorderedElementsAre("file CN=A.krc," + base_, "file CN=\xE4.krc," + base_));
    EXPECT_EQ(3u, Connected().Entries().UnsafeNames());
}

std::string entryName;

TEST_F(ListingTest, BytesThatAreNoNameAreLeftOutAndCounted) {
    server_.AddFile("a.krc", base_, "x");
    DirectoryClient& client = Connected().Client();
    client.ldap_get_values_len = [](LDAP*, LDAPMessage*, PCHAR attribute) -> berval** {
        static std::string fileClass = "quillonFileBinary";
        static berval value = {};
        static berval* values[2] = {&value};
        std::string& text = EqualsNoCase(attribute, "objectClass") ? fileClass : entryName;
        value = {static_cast<ULONG>(text.size()), text.data()};
        return values;
    };
    client.ldap_value_free_len = [](berval**) -> ULONG { return LDAP_SUCCESS; };
    for (const std::string& name : {std::string("\xE4.krc"), std::string("a\xC3"),
                                    std::string("\xED\xA0\x80.krc"), std::string("a\0b.krc", 7)}) {
        entryName = name;
        EXPECT_THAT(List(), IsEmpty());
        EXPECT_EQ(1u, Connected().Entries().UnsafeNames());
    }
    entryName = "b.krc";
    EXPECT_THAT(List(), ElementsAre("file CN=b.krc," + base_));
    EXPECT_EQ(0u, Connected().Entries().UnsafeNames());
}

TEST_F(ListingTest, AsksForTheNamesAndTheClassOnly) {
    server_.AddFile("a.krc", base_, "x");
    Connected();
    server_.Mark();
    List();
    EXPECT_THAT(server_.Log(), HasSubstr("SRCH base=\"" + base_ + "\" scope=1"));
    EXPECT_THAT(server_.Log(), HasSubstr("filter=\"(objectClass=*)\""));
    EXPECT_THAT(server_.Log(), HasSubstr("SRCH attr=CN objectClass\n"));
    EXPECT_EQ((test::OperationCounts{.searches = 1}), server_.Counts());
}

TEST_F(ListingTest, DecidesAfterEachValueWhateverTheirOrder) {
    // The entry's class comes last in what is read of it: the names are known by then.
    server_.AddFile("a.krc", base_, "x");
    static DirectoryClient genuine;
    BindDirectoryClient(genuine);
    static bool classLast;
    // Only so many attributes are handed out: a walk that misses the end must not go on for ever.
    static int left;
    for (const bool last : {false, true}) {
        classLast = last;
        left = 10;
        Connected().Client().ldap_first_attribute = [](LDAP*, LDAPMessage*, BerElement** position) {
            *position = nullptr;
            static char names[2][12];
            strcpy(names[0], classLast ? "cn" : "OBJECTCLASS");
            return names[0];
        };
        Connected().Client().ldap_next_attribute = [](LDAP*, LDAPMessage*, BerElement*) {
            static char second[12];
            strcpy(second, classLast ? "OBJECTCLASS" : "cn");
            return left-- > 0 ? second : nullptr;
        };
        Connected().Client().ldap_memfree = [](PCHAR) {};
        EXPECT_THAT(List(), ElementsAre("file CN=a.krc," + base_));
        // Both attributes were needed and no more was asked for.
        EXPECT_EQ(9, left);
    }
}

// What a server says of one child, in its own order.
using Attributes = std::vector<std::pair<std::string, std::vector<std::string>>>;
Attributes attributes;
std::size_t next;

char* NextName() {
    return next < attributes.size() ? attributes[next++].first.data() : nullptr;
}

class ChildTest : public test::DirectoryFixture {
protected:
    ChildTest() {
        server_.AddFile("real.krc", base_, "x");
        DirectoryClient& client = Connected().Client();
        client.ldap_first_attribute = [](LDAP*, LDAPMessage*, BerElement** position) {
            *position = nullptr;
            next = 0;
            return NextName();
        };
        client.ldap_next_attribute = [](LDAP*, LDAPMessage*, BerElement*) { return NextName(); };
        client.ldap_memfree = [](PCHAR) {};
        client.ldap_get_values_len = [](LDAP*, LDAPMessage*, PCHAR) {
            static std::vector<berval> bytes;
            static std::vector<berval*> values;
            bytes.clear();
            values.clear();
            for (std::string& value : attributes[next - 1].second) {
                bytes.push_back({static_cast<ULONG>(value.size()), value.data()});
            }
            for (berval& value : bytes) values.push_back(&value);
            values.push_back(nullptr);
            return values.data();
        };
        client.ldap_value_free_len = [](berval**) -> ULONG { return 0; };
    }
    std::vector<std::string> ListChild(const Attributes& child) {
        attributes = child;
        return ListFolder(Connected(), base_);
    }
};

TEST_F(ChildTest, IsNamedByTheValueThatCompletesIt) {
    const std::vector<std::string> file = {"top", "quillonFileBinary"};
    // Each value counts as soon as it is read: the first one once the class is known ...
    EXPECT_THAT(ListChild({{"objectClass", file}, {"CN", {"one.krc", "two.krc"}}}),
                ElementsAre("file CN=one.krc," + base_));
    // ... and the last one before.
    EXPECT_THAT(ListChild({{"CN", {"one.krc", "two.krc"}}, {"objectClass", file}}),
                ElementsAre("file CN=two.krc," + base_));
}

TEST_F(ChildTest, OfBothClassesTheFirstCountsWhenTheNameIsKnown) {
    EXPECT_THAT(ListChild({{"CN", {"a"}}, {"objectClass", {"quillonFolder", "quillonFileBinary"}}}),
                ElementsAre("folder CN=a," + base_));
    EXPECT_THAT(ListChild({{"CN", {"a"}}, {"objectClass", {"quillonFileBinary", "quillonFolder"}}}),
                ElementsAre("file CN=a," + base_));
}

TEST_F(ChildTest, OfBothClassesIsAFolderWhenTheNameComesLast) {
    EXPECT_THAT(ListChild({{"objectClass", {"quillonFileBinary", "quillonFolder"}}, {"CN", {"a"}}}),
                ElementsAre("folder CN=a," + base_));
}

TEST_F(ChildTest, OfNamesThatDifferIsNamedByThatOfItsKind) {
    Connected().Location().folderAttributeName = "ou";
    EXPECT_THAT(ListChild({{"OU", {"folder"}},
                           {"cn", {"file"}},
                           {"OBJECTCLASS", {"QUILLONFILEBINARY", "quillonFolder"}}}),
                ElementsAre("file CN=file," + base_));
    EXPECT_THAT(
        ListChild({{"cn", {"file"}}, {"ou", {"folder"}}, {"objectClass", {"quillonFolder"}}}),
        ElementsAre("folder ou=folder," + base_));
    // Without the name of its kind it is not listed.
    EXPECT_THAT(ListChild({{"cn", {"file"}}, {"objectClass", {"quillonFolder"}}}), IsEmpty());
}

TEST_F(ChildTest, OneOfWhoseNamesCannotBeHeldIsLeftOutUnlessItIsOfTheOtherKind) {
    const std::string bad = "\xE8\xA1\xA8.krc";
    const std::vector<std::string> file = {"quillonFileBinary"};
    EXPECT_THAT(ListChild({{"cn", {bad, "a.krc"}}, {"objectClass", file}}), IsEmpty());
    EXPECT_EQ(1u, Connected().Entries().UnsafeNames());
    EXPECT_THAT(ListChild({{"objectClass", file}, {"cn", {bad, "a.krc"}}}), IsEmpty());
    EXPECT_EQ(1u, Connected().Entries().UnsafeNames());
    Connected().Location().folderAttributeName = "ou";
    EXPECT_THAT(ListChild({{"ou", {bad}}, {"cn", {"a.krc"}}, {"objectClass", file}}),
                ElementsAre("file CN=a.krc," + base_));
}

TEST_F(ListingTest, WithItsOwnNamesUsesThem) {
    server_.Apply("dn: ou=Dir," + base_ + "\nobjectClass: organizationalUnit\nou: Dir\n");
    server_.Apply("dn: uid=f," + base_ + "\nobjectClass: account\nuid: f\n");
    server_.AddFolder("other", base_);
    CDepotPath location = server_.Location(base_);
    location.folderAttributeName = "ou";
    location.folderObjectClass = "ORGANIZATIONALUNIT";
    location.fileAttributeName = "uid";
    location.fileObjectClass = "account";
    CLDAPItems items(&location);
    ASSERT_THAT(items.ConnectLocation(nullptr), IsDone());
    server_.Mark();
    LdapItemList children;
    EXPECT_THAT(items.ListChildren(base_, children), IsDone());
    ASSERT_EQ(2u, children.Count());
    const std::size_t folder = children.At(0).isFolder == 1 ? 0 : 1;
    EXPECT_EQ("ou=Dir," + base_, children.At(folder).path);
    EXPECT_EQ(1u, children.At(folder).isFolder);
    EXPECT_EQ("uid=f," + base_, children.At(1 - folder).path);
    EXPECT_EQ(0u, children.At(1 - folder).isFolder);
    EXPECT_THAT(server_.Log(), HasSubstr("SRCH attr=ou objectClass uid\n"));
}

TEST_F(ListingTest, MissingFolderFailsAndEmptiesTheList) {
    LdapItemList items;
    items.Add("junk", true);
    EXPECT_THAT(Connected().ListChildren(Dn("missing"), items), Fails());
    EXPECT_EQ(0u, items.Count());
    EXPECT_THAT(Connected().LastError(), IsCode(LDAP_NO_SUCH_OBJECT));
}

TEST_F(ListingTest, NamesBeyondAsciiSurviveTheWayThere) {
    server_.AddFile("r\xC3\xA9sum\xC3\xA9.krc", base_, "x");
    EXPECT_THAT(List(), ElementsAre("file CN=r\xE9sum\xE9.krc," + base_));
    EXPECT_EQ("x", Contents("CN=r\xE9sum\xE9.krc," + base_));
    std::string name;
    bool isFolder = true;
    EXPECT_THAT(Connected().SplitEntryName("CN=r\xE9sum\xE9.krc," + base_, name, isFolder),
                IsDone());
    EXPECT_EQ("r\xE9sum\xE9.krc", name);
    EXPECT_FALSE(isFolder);
}

}  // namespace
}  // namespace depot
