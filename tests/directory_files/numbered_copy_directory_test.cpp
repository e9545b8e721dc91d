// Numbered copies in a directory, also when somebody else takes their names meanwhile.
#include "directory_files/directory_world.h"
#include "fileops/numbered_copy.h"
#include "support/import_patch.h"

namespace depot {
namespace {

// What somebody else does as soon as the copy's name was found free, once.
std::function<void()> meanwhile;
DirectoryClient real;

void InterfereOnce() {
    if (meanwhile) std::exchange(meanwhile, nullptr)();
}

BOOL(WINAPI* realCopy)(LPCSTR, LPCSTR, BOOL) = nullptr;

BOOL WINAPI InterferingCopy(LPCSTR source, LPCSTR target, BOOL failIfExists) {
    InterfereOnce();
    return realCopy(source, target, failIfExists);
}

class NumberedEntryTest : public test::DirectoryWorldTest {
protected:
    NumberedEntryTest() {
        real = Directory().Client();
        Directory().Client().ldap_add_s = [](LDAP* connection, PCHAR dn, LDAPModA** changes) {
            // When a file is to be stored, not yet its folder.
            if (dn[sizeof("cn=") - 1] == 'a') InterfereOnce();
            return real.ldap_add_s(connection, dn, changes);
        };
    }
    ~NumberedEntryTest() override { meanwhile = nullptr; }

    std::optional<std::string> Copy(const std::string& source,
                                    CopyNameStyle style = CopyNameStyle::kDash) {
        return MakeNumberedCopy(world_.depots, source, style);
    }
};

TEST_F(NumberedEntryTest, FirstFreeNumberIsUsed) {
    server_.AddFile("a.kra", base_, "1");
    EXPECT_EQ("<Work>\\a - copy.kra", Copy("<Work>\\a.kra"));
    EXPECT_EQ("<Work>\\a - copy (2).kra", Copy("<Work>\\a.kra"));
    EXPECT_EQ("1", Contents(DN("cn=a - copy (2).kra")));
}

TEST_F(NumberedEntryTest, WhatSomebodyElseStoresUnderItsNameMeanwhileStays) {
    server_.AddFile("a.kra", base_, "1");
    meanwhile = [&] { server_.AddFile("a - copy.kra", base_, "theirs"); };
    EXPECT_EQ(std::nullopt, Copy("<Work>\\a.kra"));
    EXPECT_EQ(nullptr, meanwhile);
    EXPECT_EQ("theirs", Contents(DN("cn=a - copy.kra")));
    EXPECT_EQ("<Work>\\a - copy (2).kra", Copy("<Work>\\a.kra"));
}

TEST_F(NumberedEntryTest, WhatSomebodyElseStoresInTheCopyOfAFolderStays) {
    const std::string tree = AddTree("tree"), copy = DN("cn=Copy of tree");
    meanwhile = [&] { server_.AddFile("a.kra", copy, "theirs"); };
    EXPECT_EQ(std::nullopt, Copy("<Work>\\tree", CopyNameStyle::kPrefix));
    EXPECT_EQ(nullptr, meanwhile);
    EXPECT_EQ("theirs", Contents("cn=a.kra," + copy));
    ExpectTree(tree);
}

TEST_F(NumberedEntryTest, FileThatSomebodyElseMakesInAFolderMeanwhileStays) {
    Make("h\\a.kra", "1");
    const test::ImportPatch<decltype(realCopy)> patch("CopyFileA", &InterferingCopy);
    ASSERT_TRUE(patch.IsInPlace());
    realCopy = patch.Genuine();
    meanwhile = [&] { Make("h\\a - copy.kra", "theirs"); };
    EXPECT_EQ(std::nullopt, Copy("<Home>\\a.kra"));
    EXPECT_EQ("theirs", test::FileBytes(At("h\\a - copy.kra")));
}

}  // namespace
}  // namespace depot
