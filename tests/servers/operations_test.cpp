// Operations on files and trees, on whichever server the program runs with.
#include "directory/connection_scope.h"
#include "directory_pairs/pairs_fixture.h"
#include "servers/server_rows.h"
#include "support/directory_kind.h"

namespace depot::test {
namespace {

class ServerOperationsTest : public PairWorldTest {
protected:
    // Adds a depot of the same folder at another port of the server.
    void AddTwin(const std::string& name, std::uint32_t security, unsigned port) {
        CDepotPath location = world_.server.Location(world_.base);
        location.security = security;
        location.port = port;
        world_.AddOf(location, name);
        ForgetServer(port);
    }
    int Rename(const std::string& from, const std::string& to) {
        return MoveFile(world_.work, directory_.Path(from), directory_.Path(to), nullptr, nullptr,
                        &error_);
    }
    int Delete(const std::string& path) {
        return ItemOperation(Item(path), nullptr, FO_DELETE, nullptr, &error_);
    }
};

TEST_F(ServerOperationsTest, TreeIsCopiedIn) {
    Row("copy a tree in");
    plain_.MakeTree("from\\tree");
    EXPECT_THAT(OnItem(FO_COPY, plain_.Path("from\\tree"), directory_.Path("to\\")), IsDone());
    EXPECT_EQ(TestFolder::Tree(), directory_.Contents("to\\tree"));
}

TEST_F(ServerOperationsTest, TreeIsCopiedOut) {
    Row("copy a tree out");
    directory_.MakeTree("from\\tree");
    EXPECT_THAT(OnItem(FO_COPY, directory_.Path("from\\tree"), plain_.Path("to\\")), IsDone());
    EXPECT_EQ(TestFolder::Tree(), plain_.Contents("to\\tree"));
}

TEST_F(ServerOperationsTest, FileIsCopiedOntoAnother) {
    Row("copy a file onto another");
    directory_.MakeFile("from\\a.kra", "1");
    directory_.MakeFile("to\\a.kra", "2");
    EXPECT_THAT(Copy(directory_.Path("from\\a.kra"), directory_.Path("to\\a.kra"), false),
                IsDone());
    EXPECT_EQ("1", directory_.Bytes("to\\a.kra"));
}

TEST_F(ServerOperationsTest, TreeIsMoved) {
    Row("rename and move a tree");
    directory_.MakeTree("from\\tree");
    EXPECT_THAT(Rename("from\\tree", "from\\other"), IsDone());
    EXPECT_EQ(TestFolder::Tree(), directory_.Contents("from\\other"));
    EXPECT_THAT(OnItem(FO_MOVE, directory_.Path("from\\other"), directory_.Path("to\\")), IsDone());
    EXPECT_EQ(TestFolder::Tree(), directory_.Contents("to\\other"));
    EXPECT_FALSE(directory_.Holds("from\\other"));
}

TEST_F(ServerOperationsTest, TreeIsMovedIn) {
    Row("move a tree in and out");
    plain_.MakeTree("from\\tree");
    EXPECT_THAT(OnItem(FO_MOVE, plain_.Path("from\\tree"), directory_.Path("to\\")), IsDone());
    EXPECT_FALSE(plain_.Holds("from\\tree"));
    EXPECT_THAT(OnItem(FO_MOVE, directory_.Path("to\\tree"), plain_.Path("to\\")), IsDone());
    EXPECT_EQ(TestFolder::Tree(), plain_.Contents("to\\tree"));
    EXPECT_FALSE(directory_.Holds("to\\tree"));
}

TEST_F(ServerOperationsTest, TreeIsDeleted) {
    Row("delete a tree");
    directory_.MakeTree("from\\tree");
    EXPECT_THAT(Delete(directory_.Path("from\\tree")), IsDone());
    EXPECT_EQ(StoreContents(), directory_.Contents("from"));
}

TEST_F(ServerOperationsTest, FolderIsMadeWithThoseAboveIt) {
    Row("make folders");
    const CDepotItem item = Item(directory_.Path("from"));
    Store& store = item.depot->ActiveStore();
    const StoreScope open(store);
    EXPECT_THAT(store.MakeFolder(directory_.At("one\\two\\three"), FoldersAbove::kAreMade),
                IsDone());
    EXPECT_TRUE(directory_.Holds("one\\two\\three"));
}

TEST_F(ServerOperationsTest, NamesOfEveryKindAreTaken) {
    Row("names with blanks, commas, signs and letters of any language");
    for (const std::string& name :
         {std::string("two words.kra"), std::string("a,b+c=d.kra"), std::string("#first.kra"),
          std::string("quote'd;.kra"), std::string("\xE4\xF6\xFC.kra")}) {
        SCOPED_TRACE(name);
        plain_.MakeFile("from\\" + name, "1");
        EXPECT_THAT(OnItem(FO_COPY, plain_.Path("from\\" + name), directory_.Path("to\\")),
                    IsDone());
        EXPECT_EQ("1", directory_.Bytes("to\\" + name));
        EXPECT_THAT(OnItem(FO_MOVE, directory_.Path("to\\" + name), directory_.Path("from\\")),
                    IsDone());
        EXPECT_EQ("1", directory_.Bytes("from\\" + name));
    }
}

TEST_F(ServerOperationsTest, TwoHundredFilesAreCopiedInListedAndDeleted) {
    Row("200 files in one folder");
    for (int number = 0; number < 200; ++number) {
        plain_.MakeFile("from\\many\\" + std::to_string(number) + ".kra", std::to_string(number));
    }
    EXPECT_THAT(OnItem(FO_COPY, plain_.Path("from\\many"), directory_.Path("to\\")), IsDone());
    EXPECT_EQ(plain_.Contents("from\\many"), directory_.Contents("to\\many"));
    EXPECT_THAT(Delete(directory_.Path("to\\many")), IsDone());
    EXPECT_FALSE(directory_.Holds("to\\many"));
}

// More than any of the servers hands out at once as it comes.
TEST_F(ServerOperationsTest, FolderOf2500EntriesIsListedWhole) {
    Row("list a folder of 2,500 entries");
    constexpr int kCount = 2500;
    std::string entries;
    for (int number = 0; number < kCount; ++number) {
        const std::string name = "f" + std::to_string(number) + ".kra";
        entries += "dn: cn=" + name + ",cn=from," + world_.base +
                   "\nobjectClass: quillonFileBinary\ncn: " + name +
                   "\nquillonFileContentsBinary: x\n\n";
    }
    world_.server.Apply(entries);
    LdapItemList items;
    const ConnectionScope connection(world_.Directory().Connection());
    EXPECT_THAT(world_.Directory().Entries().List("cn=from," + world_.base, items), IsDone());
    EXPECT_EQ(std::size_t{kCount}, items.Count());
}

// Only what the server calls an entry by shows that the two are one.
TEST_F(ServerOperationsTest, MoveOntoItselfThroughTheSecuredPortLosesNothing) {
    Row("move onto itself through the secured port");
    AddTwin("Secured", 2, world_.server.TlsPort());
    directory_.MakeFile("from\\a.kra", "1");
    directory_.MakeTree("from\\tree");
    const StoreContents before = directory_.Contents();
    for (const char* const target : {"from\\a.kra", "from\\"}) {
        SCOPED_TRACE(target);
        EXPECT_THAT(OnItem(FO_MOVE, "<Work>\\from\\a.kra", std::string("<Secured>\\") + target),
                    Fails());
        EXPECT_THAT(OnItem(FO_MOVE, std::string("<Secured>\\from\\a.kra"),
                           std::string("<Work>\\") + target),
                    Fails());
        EXPECT_EQ(before, directory_.Contents());
    }
    EXPECT_THAT(OnItem(FO_MOVE, "<Work>\\from\\tree", "<Secured>\\from\\"), Fails());
    EXPECT_THAT(OnItem(FO_MOVE, "<Work>\\from\\tree", "<Secured>\\from\\tree\\sub\\"), Fails());
    EXPECT_EQ(before, directory_.Contents());
}

}  // namespace
}  // namespace depot::test
