// Names with characters that have a meaning in distinguished names.
#include <set>

#include "directory/dn_escapes.h"
#include "store/directory_store.h"
#include "support/directory_fixture.h"
#include "support/results.h"

namespace depot {
namespace {

using test::Fails;
using test::IsDone;

constexpr const char* kSpecialNames[] = {"a,b", "a+b", "a=b",  "a;b",        "#a",
                                         " a",  "a;",  "=",    "cn=a,cn=b",  "a\"<>b",
                                         "a#b", "+",   "a, b", "a\\, b+c=d#"};

class SpecialNamesTest : public test::DirectoryFixture {
protected:
    EntryStore& Entries() { return Connected().Entries(); }

    // The names of what a folder holds.
    std::set<std::string> Names(const std::string& folder) {
        std::set<std::string> names;
        LdapItemList children;
        EXPECT_THAT(Connected().ListChildren(folder, children), IsDone());
        for (const CLDAPItem* child : children) {
            std::string name;
            bool isFolder = false;
            EXPECT_THAT(Connected().SplitEntryName(child->path, name, isFolder), IsDone());
            names.insert(name);
        }
        return names;
    }

    void AddFile(const std::string& folder, const std::string& name) {
        EXPECT_TRUE(Entries().AddFile(EntryDN("CN", name, folder), name, "x", 1)) << name;
    }
};

TEST_F(SpecialNamesTest, FilesAreAddedListedReadReplacedRenamedAndDeleted) {
    for (const std::string special : kSpecialNames) {
        SCOPED_TRACE(special);
        const std::string name = special + ".krc";
        const std::string dn = EntryDN("CN", name, base_);
        AddFile(base_, name);
        EXPECT_EQ(std::set<std::string>{name}, Names(base_));
        LdapItemList children;
        ASSERT_THAT(Connected().ListChildren(base_, children), IsDone());
        ASSERT_EQ(1u, children.Count());
        EXPECT_EQ(dn, children.At(0).path);
        EXPECT_EQ("x", Contents(dn));
        EXPECT_TRUE(Entries().Replace(dn, "new", 3));
        EXPECT_EQ("new", Contents(dn));
        const std::string moved = EntryDN("CN", "moved " + name, base_);
        EXPECT_TRUE(Entries().Rename(dn, moved));
        EXPECT_EQ(std::set<std::string>{"moved " + name}, Names(base_));
        EXPECT_TRUE(Entries().Rename(moved, dn));
        EXPECT_EQ("new", Contents(dn));
        EXPECT_TRUE(Entries().Remove(dn));
        EXPECT_EQ(std::set<std::string>{}, Names(base_));
    }
}

TEST_F(SpecialNamesTest, FoldersAreEnsuredOneInAnotherAndDeletedWithAllTheyHold) {
    std::string folder = base_;
    for (const std::string special : kSpecialNames) folder = EntryDN("CN", special, folder);
    LdapItemList added;
    EXPECT_TRUE(Entries().EnsureFolders(EntryDN("CN", "a.krc", folder), added));
    EXPECT_EQ(std::size(kSpecialNames), added.Count());
    AddFile(folder, "a,b.krc");
    EXPECT_EQ(std::set<std::string>{"a,b.krc"}, Names(folder));
    EXPECT_EQ(std::set<std::string>{kSpecialNames[0]}, Names(base_));
    EXPECT_THAT(Connected().DeleteTree(EntryDN("CN", kSpecialNames[0], base_), &text_), IsDone());
    EXPECT_EQ(std::set<std::string>{}, Names(base_));
}

// Other tools write escapes in their own way, and names with backslashes.
TEST_F(SpecialNamesTest, EntriesOfOtherToolsAreOpenedAndDeleted) {
    const struct {
        const char *component, *name;
    } rows[] = {
        {"a\\2Cb.krc", "a,b.krc"},
        {"\\63\\3Dd.krc", "c=d.krc"},
        {"\\ e.krc", " e.krc"},
        {"..\\5C..\\5Cx.krc", "..\\..\\x.krc"},
        {"\\5CC3\\5CA9.krc", "\\C3\\A9.krc"},
    };
    server_.AddFolder("Tools", base_);
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const std::string named = "cn=" + std::string(row.component) + "," + Dn("Tools");
        server_.Apply("dn: " + named +
                      "\nobjectClass: quillonFileBinary\nquillonFileContentsBinary: theirs\n");
        EXPECT_EQ("theirs", Contents(EntryDN("cn", row.name, Dn("Tools"))));
        DirectoryStore store(Connected());
        EXPECT_TRUE(store.IsSame(named, EntryDN("CN", row.name, Dn("Tools"))));
    }
    EXPECT_EQ(std::size(rows), Names(Dn("Tools")).size());
    EXPECT_THAT(Connected().DeleteTree(Dn("Tools"), &text_), IsDone());
    EXPECT_FALSE(Holds(Dn("Tools")));
}

TEST_F(SpecialNamesTest, SpellingsOfOneNameAreOneEntryAndOthersAreNot) {
    DirectoryStore store(Connected());
    const std::string dn = EntryDN("CN", "a,b.krc", base_);
    EXPECT_TRUE(store.IsSame(dn, "cn=A\\2CB.krc, " + base_));
    EXPECT_FALSE(store.IsSame(dn, EntryDN("CN", "a b.krc", base_)));
    EXPECT_TRUE(store.IsInside(EntryDN("CN", "x", dn), "cn=a\\2cb.krc," + base_));
    EXPECT_FALSE(store.IsInside(EntryDN("CN", "a,cn=b", base_), EntryDN("CN", "b", base_)));
    const TakePath isUnique = store.UniquePaths();
    EXPECT_TRUE(isUnique(dn));
    EXPECT_TRUE(isUnique(EntryDN("CN", "a+b.krc", base_)));
    EXPECT_FALSE(isUnique("cn=A\\,B.krc," + base_));
}

TEST_F(SpecialNamesTest, ChildrenAreHandedOutByTheirOwnNames) {
    AddFile(base_, "a,b=c.krc");
    AddFile(base_, "back\\slash.krc");
    DirectoryStore store(Connected());
    LeftOut left;
    std::set<std::string> shown, hostile;
    EXPECT_TRUE(store.List(
        base_,
        [&](const StoreItem& item) {
            (item.isHostile ? hostile : shown).insert(item.name);
            EXPECT_EQ(store.ChildPath(base_, item.name, item.isFolder), item.path);
        },
        left));
    EXPECT_EQ(std::set<std::string>{"a,b=c.krc"}, shown);
    EXPECT_EQ(std::set<std::string>{"back\\slash.krc"}, hostile);
}

}  // namespace
}  // namespace depot
