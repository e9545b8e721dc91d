// Renames and moves of what another client changes at the same time.
#include "directory_pairs/pairs_fixture.h"
#include "fileops/any_transfer.h"
#include "support/directory_transfer.h"
#include "support/results.h"

namespace depot::test {
namespace {

using testing::HasSubstr;

constexpr int kFiles = 400;

std::string NameOf(int number) {
    return "f" + std::to_string(number) + ".kra";
}

// What the other client does, once, in the middle of an operation.
std::function<void()> otherClient;
// The entry points behind the replaced ones.
DirectoryClient genuine;

void ActOnce() {
    if (const auto act = std::exchange(otherClient, nullptr)) act();
}

ULONG LDAPAPI RenameAfterOther(LDAP* connection, const PCHAR dn, const PCHAR newName,
                               const PCHAR parent, INT deletes, PLDAPControlA* server,
                               PLDAPControlA* client) {
    ActOnce();
    return genuine.ldap_rename_ext_s(connection, dn, newName, parent, deletes, server, client);
}

ULONG renameCode = LDAP_SUCCESS;

ULONG LDAPAPI RefuseRename(LDAP*, const PCHAR, const PCHAR, const PCHAR, INT, PLDAPControlA*,
                           PLDAPControlA*) {
    return renameCode;
}

ULONG LDAPAPI AddAfterOther(LDAP* connection, PCHAR dn, LDAPModA** attributes) {
    ActOnce();
    return genuine.ldap_add_s(connection, dn, attributes);
}

class RenameMeanwhileTest : public PairWorldTest {
protected:
    RenameMeanwhileTest() { genuine = world_.Directory().Client(); }
    ~RenameMeanwhileTest() override { otherClient = nullptr; }

    // Has the server answer every rename with the code.
    void RefuseRenames(ULONG code) {
        renameCode = code;
        world_.Directory().Client().ldap_rename_ext_s = &RefuseRename;
    }
    void MakeManyEntries() {
        std::string ldif;
        for (int number = 0; number < kFiles; ++number) {
            ldif += "dn: " + directory_.At("from\\many\\" + NameOf(number)) +
                    "\nobjectClass: quillonFileBinary\ncn: " + NameOf(number) +
                    "\nquillonFileContentsBinary: " + NameOf(number) + "\n\n";
        }
        directory_.MakeFolder("from\\many");
        world_.server.Apply(ldif);
    }
    static StoreContents ManyFiles() {
        StoreContents files;
        for (int number = 0; number < kFiles; ++number) files[NameOf(number)] = NameOf(number);
        return files;
    }
    void ChangeBoth() {
        otherClient = [this] {
            directory_.MakeFile("from\\many\\f7.kra", "edited");
            directory_.MakeFile("from\\many\\new.kra", "added");
        };
    }
    int Rename(const std::string& from, const std::string& to) {
        return MoveFile(world_.work, "<Work>\\" + from, "<Work>\\" + to, nullptr, nullptr, &error_);
    }
};

TEST_F(RenameMeanwhileTest, EditAndAdditionComeAlongWithAFolderThatTheServerRenames) {
    MakeManyEntries();
    ChangeBoth();
    world_.Directory().Client().ldap_rename_ext_s = &RenameAfterOther;
    EXPECT_THAT(Rename("from\\many", "to\\many"), IsDone());
    StoreContents expected = ManyFiles();
    expected["f7.kra"] = "edited";
    expected["new.kra"] = "added";
    EXPECT_EQ(expected, directory_.Contents("to\\many"));
    EXPECT_FALSE(directory_.Holds("from\\many"));
}

TEST_F(RenameMeanwhileTest, EditAndAdditionStayWhereAFolderIsCopied) {
    MakeManyEntries();
    ChangeBoth();
    RefuseRenames(LDAP_NOT_ALLOWED_ON_NONLEAF);
    world_.Directory().Client().ldap_add_s = &AddAfterOther;
    EXPECT_THAT(Rename("from\\many", "to\\many"), Fails());
    EXPECT_EQ(kContentsChanged, world_.Directory().LastError());
    EXPECT_EQ("Copied, but 1 file and 1 folder stay in the old place: changed meanwhile.", error_);
    EXPECT_EQ((StoreContents{{"f7.kra", "edited"}, {"new.kra", "added"}}),
              directory_.Contents("from\\many"));
    EXPECT_EQ(ManyFiles(), directory_.Contents("to\\many"));
}

TEST_F(RenameMeanwhileTest, EntryThatAppearsInACopiedFolderKeepsIt) {
    directory_.MakeTree("from\\tree");
    RefuseRenames(LDAP_UNWILLING_TO_PERFORM);
    otherClient = [this] { directory_.MakeFile("from\\tree\\sub\\new.kra", "added"); };
    world_.Directory().Client().ldap_add_s = &AddAfterOther;
    EXPECT_THAT(Rename("from\\tree", "to\\tree"), Fails());
    EXPECT_THAT(world_.Directory().LastError(), IsCode(LDAP_NOT_ALLOWED_ON_NONLEAF));
    EXPECT_EQ("Copied, but 2 folders stay in the old place: changed meanwhile.", error_);
    EXPECT_EQ((StoreContents{{"sub", kFolderMark}, {"sub\\new.kra", "added"}}),
              directory_.Contents("from\\tree"));
    EXPECT_EQ(TestFolder::Tree(), directory_.Contents("to\\tree"));
}

TEST_F(RenameMeanwhileTest, EntryThatSomebodyElseDeletesIsNoFailure) {
    directory_.MakeTree("from\\tree");
    RefuseRenames(LDAP_NOT_ALLOWED_ON_NONLEAF);
    otherClient = [this] {
        world_.server.Apply("dn: " + directory_.At("from\\tree\\a.kra") + "\nchangetype: delete\n");
    };
    world_.Directory().Client().ldap_add_s = &AddAfterOther;
    EXPECT_THAT(Rename("from\\tree", "to\\tree"), IsDone());
    EXPECT_FALSE(directory_.Holds("from\\tree"));
    EXPECT_EQ(TestFolder::Tree(), directory_.Contents("to\\tree"));
}

TEST_F(RenameMeanwhileTest, TreeIsCopiedWhereTheServerCannotRenameIt) {
    for (const ULONG code :
         {LDAP_NOT_ALLOWED_ON_NONLEAF, LDAP_UNWILLING_TO_PERFORM, LDAP_AFFECTS_MULTIPLE_DSAS,
          LDAP_PROTOCOL_ERROR, LDAP_OTHER, LDAP_NOT_SUPPORTED}) {
        SCOPED_TRACE(code);
        const std::string name = "tree" + std::to_string(code);
        directory_.MakeTree("from\\" + name);
        RefuseRenames(code);
        EXPECT_THAT(Rename("from\\" + name, "to\\" + name), IsDone());
        EXPECT_FALSE(directory_.Holds("from\\" + name));
        EXPECT_EQ(TestFolder::Tree(), directory_.Contents("to\\" + name));
    }
}

TEST_F(RenameMeanwhileTest, TreeIsNotCopiedWhereTheServerRefusesForGood) {
    directory_.MakeTree("from\\tree");
    for (const ULONG code : {LDAP_INSUFFICIENT_RIGHTS, LDAP_ALREADY_EXISTS, LDAP_NAMING_VIOLATION,
                             LDAP_BUSY, LDAP_UNAVAILABLE, LDAP_SERVER_DOWN}) {
        SCOPED_TRACE(code);
        RefuseRenames(code);
        EXPECT_THAT(Rename("from\\tree", "to\\tree"), Fails());
        EXPECT_EQ(code, world_.Directory().LastError());
    }
    EXPECT_EQ(TestFolder::Tree(), directory_.Contents("from\\tree"));
    EXPECT_FALSE(directory_.Holds("to\\tree"));
}

TEST_F(RenameMeanwhileTest, FoldersMadeForARenameThatIsRefusedAreRemoved) {
    directory_.MakeTree("from\\tree");
    static int calls;
    calls = 0;
    world_.Directory().Client().ldap_rename_ext_s = [](LDAP*, const PCHAR, const PCHAR, const PCHAR,
                                                       INT, PLDAPControlA*,
                                                       PLDAPControlA*) -> ULONG {
        return ++calls == 1 ? LDAP_NO_SUCH_OBJECT : LDAP_INSUFFICIENT_RIGHTS;
    };
    EXPECT_THAT(Rename("from\\tree", "to\\new\\v1.2\\tree"), Fails());
    EXPECT_EQ(2, calls);
    EXPECT_THAT(world_.Directory().LastError(), IsCode(LDAP_INSUFFICIENT_RIGHTS));
    EXPECT_EQ(StoreContents(), directory_.Contents("to"));
    EXPECT_EQ(TestFolder::Tree(), directory_.Contents("from\\tree"));
}

TEST_F(RenameMeanwhileTest, FolderWithChildrenCostsOneRename) {
    directory_.MakeTree("from\\tree");
    world_.server.Mark();
    EXPECT_THAT(Rename("from\\tree", "to\\tree"), IsDone());
    EXPECT_EQ((OperationCounts{.binds = 1, .renames = 1}), world_.server.Counts());
    EXPECT_EQ(TestFolder::Tree(), directory_.Contents("to\\tree"));
}

TEST_F(RenameMeanwhileTest, FoldersAboveTheNewNameAreMadeForAFolderWithChildren) {
    directory_.MakeTree("from\\tree");
    EXPECT_THAT(Rename("from\\tree", "to\\new\\v1.2\\tree"), IsDone());
    EXPECT_FALSE(directory_.Holds("from\\tree"));
    EXPECT_EQ(TestFolder::Tree(), directory_.Contents("to\\new\\v1.2\\tree"));
    directory_.MakeFolder("from\\empty");
    EXPECT_THAT(Rename("from\\empty", "to\\other\\empty"), Fails());
    EXPECT_FALSE(directory_.Holds("to\\other"));
}

TEST_F(RenameMeanwhileTest, TreeWithoutAnEndIsNotCopied) {
    directory_.MakeTree("from\\tree");
    RefuseRenames(LDAP_NOT_ALLOWED_ON_NONLEAF);
    // The server lists what the top holds again below each folder.
    static std::string tree;
    tree = directory_.At("from\\tree");
    world_.Directory().Client().ldap_search_s = [](LDAP* connection, PCHAR base, ULONG scope,
                                                   PCHAR filter, PCHAR* attributes, ULONG typesOnly,
                                                   LDAPMessage** result) -> ULONG {
        char* const place = scope == LDAP_SCOPE_ONELEVEL ? tree.data() : base;
        return genuine.ldap_search_s(connection, place, scope, filter, attributes, typesOnly,
                                     result);
    };
    world_.Directory().Client().ldap_search_ext =
        [](LDAP* connection, PCHAR base, ULONG scope, PCHAR filter, PCHAR* attributes,
           ULONG typesOnly, PLDAPControlA* server, PLDAPControlA* client, ULONG seconds,
           ULONG entries, ULONG* id) -> ULONG {
        char* const place = scope == LDAP_SCOPE_ONELEVEL ? tree.data() : base;
        return genuine.ldap_search_ext(connection, place, scope, filter, attributes, typesOnly,
                                       server, client, seconds, entries, id);
    };
    world_.Directory().Bounds().entries = 1'000;
    EXPECT_THAT(Rename("from\\tree", "to\\tree"), Fails());
    EXPECT_THAT(world_.Directory().LastError(), IsCode(LDAP_SIZELIMIT_EXCEEDED));
    world_.Directory().Bounds() = {};
    world_.Directory().Bounds().listingTime = {};
    EXPECT_THAT(Rename("from\\tree", "to\\tree"), Fails());
    EXPECT_THAT(world_.Directory().LastError(), IsCode(LDAP_TIMELIMIT_EXCEEDED));
    EXPECT_EQ(TestFolder::Tree(), directory_.Contents("from\\tree"));
    EXPECT_FALSE(directory_.Holds("to\\tree"));
}

using MoveMeanwhileTest = PairTest;

TEST_P(MoveMeanwhileTest, FileThatChangesStaysAndFailsTheMove) {
    Source().MakeFile("from\\a.kra", "1");
    EXPECT_THAT(MoveWhile("a.kra", [&] { Source().MakeFile("from\\a.kra", "edited"); }), Fails());
    EXPECT_EQ("Copied, but 1 file stays in the old place: changed meanwhile.", error_);
    EXPECT_EQ("edited", Source().Bytes("from\\a.kra"));
    EXPECT_EQ("1", Target().Bytes("to\\a.kra"));
}

TEST_P(MoveMeanwhileTest, WhatChangesInATreeStaysAndFailsTheMove) {
    if (!FromDirectory() && !ToDirectory()) return;
    Source().MakeTree("from\\tree");
    EXPECT_THAT(MoveWhile("tree",
                          [&] {
                              Source().MakeFile("from\\tree\\sub\\b.kra", "edited");
                              Source().MakeFile("from\\tree\\new.kra", "added");
                          }),
                Fails());
    EXPECT_EQ("Copied, but 1 file and 2 folders stay in the old place: changed meanwhile.", error_);
    EXPECT_EQ((StoreContents{{"new.kra", "added"}, {"sub", kFolderMark}, {"sub\\b.kra", "edited"}}),
              Source().Contents("from\\tree"));
    EXPECT_EQ(TestFolder::Tree(), Target().Contents("to\\tree"));
}

TEST_P(MoveMeanwhileTest, UnchangedTreeLeavesNothing) {
    if (!FromDirectory() && !ToDirectory()) return;
    Source().MakeTree("from\\tree");
    EXPECT_THAT(MoveWhile("tree", [] {}), IsDone());
    EXPECT_EQ("junk", error_);
    EXPECT_FALSE(Source().Holds("from\\tree"));
    EXPECT_EQ(TestFolder::Tree(), Target().Contents("to\\tree"));
}

// Moves within a store are renames, which leave nothing to remove.
TEST_P(MoveMeanwhileTest, SourceStaysWhereTheTargetIsNotSeenAfterwards) {
    if (FromDirectory() == ToDirectory()) return;
    Source().MakeFile("from\\a.kra", "1");
    AnyPlace from, to;
    EXPECT_TRUE(FindPlace(world_.depots, From("a.kra"), from).IsDone());
    EXPECT_TRUE(FindPlace(world_.depots, To("a.kra"), to).IsDone());
    TransferWish wish;
    wish.looksBeforeRemoving = true;
    wish.watcher = [&](const TransferProgress&) {
        OnItem(FO_DELETE, To("a.kra"), To("a.kra"));
        return true;
    };
    EXPECT_FALSE(MoveAnywhere(from, to, wish).IsDone());
    EXPECT_EQ("1", Source().Bytes("from\\a.kra"));
    wish.watcher = {};
    EXPECT_TRUE(MoveAnywhere(from, to, wish).IsDone());
    EXPECT_FALSE(Source().Holds("from\\a.kra"));
    EXPECT_EQ("1", Target().Bytes("to\\a.kra"));
}

TEST_P(MoveMeanwhileTest, DeletionWhoseTargetHoldsTheItemDeletesIt) {
    Source().MakeFile("from\\a.kra", "1");
    EXPECT_THAT(OnList(FO_DELETE, {From("a.kra")}, Source().Path("from\\")), IsDone());
    EXPECT_FALSE(Source().Holds("from\\a.kra"));
}

INSTANTIATE_TEST_SUITE_P(EveryPair, MoveMeanwhileTest, testing::ValuesIn(EveryPair()), PairName);

TEST_F(PairWorldTest, EntryThatChangesWhileItsListIsMovedStays) {
    directory_.MakeFile("from\\a.kra", "1");
    CDepotItems items;
    items.Append(Item("<Work>\\from\\a.kra").Clone());
    const CDepotItem to = Item("<Home>\\to");
    EXPECT_THAT(ListOperation(items, &to, FO_MOVE, kQuietFlags, nullptr, &error_,
                              [&](const TransferProgress&) {
                                  directory_.MakeFile("from\\a.kra", "edited");
                                  return true;
                              }),
                Fails());
    EXPECT_THAT(error_, HasSubstr("1 file stays"));
    EXPECT_EQ("edited", directory_.Bytes("from\\a.kra"));
    EXPECT_EQ("1", folder_.Bytes("to\\a.kra"));
}

}  // namespace
}  // namespace depot::test
