// The codes that transfers leave, and what they refuse before they begin.
#include "directory_files/directory_world.h"
#include "fileops/depot_file.h"
#include "fileops/item_operations.h"
#include "support/directory_transfer.h"
#include "support/results.h"

namespace depot {
namespace {

constexpr ExistingEntries kReplace = ExistingEntries::kReplace;

using test::Fails;
using test::IsCode;
using test::IsDone;
using test::MessageFor;

class TransferCodesTest : public test::DirectoryWorldTest {
protected:
    // Another connection to the same place, which goes by another name.
    CLDAPItems& Elsewhere() {
        if (!elsewhere_) {
            otherLocation_ = server_.Location(base_).Clone();
            otherLocation_->host = "localhost";
            elsewhere_ = std::make_unique<CLDAPItems>(otherLocation_.get());
        }
        return *elsewhere_;
    }

    std::unique_ptr<CDepotPath> otherLocation_;
    std::unique_ptr<CLDAPItems> elsewhere_;
};

TEST_F(TransferCodesTest, MissingSourceOfACopyIsAParameterError) {
    for (const char* name : {"cn=none.kra", "cn=none", "cn=none,cn=nowhere"}) {
        SCOPED_TRACE(name);
        error_ = "junk";
        EXPECT_THAT(
            CopyEntry(Directory(), DN(name), Directory(), DN("cn=b.kra"), kReplace, &error_),
            Fails());
        ExpectFailure(LDAP_PARAM_ERROR);
        EXPECT_FALSE(Holds(DN("cn=b.kra")));
    }
}

TEST_F(TransferCodesTest, MissingSourceOfARenameIsAParameterError) {
    for (const char* name : {"cn=none.kra", "cn=none", "cn=none,cn=nowhere"}) {
        SCOPED_TRACE(name);
        error_ = "junk";
        EXPECT_THAT(MoveEntry(Directory(), DN(name), DN("cn=b.kra"), &error_), Fails());
        ExpectFailure(LDAP_PARAM_ERROR);
    }
}

TEST_F(TransferCodesTest, NewNameThatIsNoneIsAParameterError) {
    const std::string tree = AddTree("tree");
    server_.AddFile("a.kra", base_, "1");
    server_.AddFolder("empty", base_);
    for (const std::string& name : {tree, DN("cn=a.kra"), DN("cn=empty")}) {
        SCOPED_TRACE(name);
        error_ = "junk";
        EXPECT_THAT(MoveEntry(Directory(), name, "no name at all", &error_), Fails());
        ExpectFailure(LDAP_PARAM_ERROR);
        EXPECT_TRUE(Holds(name));
    }
    ExpectTree(tree);
}

TEST_F(TransferCodesTest, DestinationThatCannotBeMadeIsAParameterError) {
    server_.AddFile("a.kra", base_, "1");
    EXPECT_THAT(CopyEntry(Directory(), DN("cn=a.kra"), Directory(), "cn=x.kra,dc=elsewhere",
                          kReplace, &error_),
                Fails());
    ExpectFailure(LDAP_PARAM_ERROR);
    EXPECT_THAT(MoveEntry(Directory(), AddTree("tree"), "cn=x,dc=elsewhere", &error_), Fails());
    ExpectFailure(LDAP_PARAM_ERROR);
    ExpectTree(DN("cn=tree"));
}

TEST_F(TransferCodesTest, FolderThatCannotBeListedIsNotCopied) {
    const std::string tree = AddTree("tree");
    test::RefuseTreeRenames(Directory());
    Directory().Client().ldap_search_s = [](LDAP*, PCHAR, ULONG, PCHAR, PCHAR*, ULONG,
                                            LDAPMessage**) -> ULONG { return LDAP_BUSY; };
    EXPECT_THAT(MoveEntry(Directory(), tree, DN("cn=moved"), &error_), Fails());
    ExpectFailure(LDAP_BUSY);
    EXPECT_FALSE(Holds(DN("cn=moved")));
    ExpectTree(tree);
}

TEST_F(TransferCodesTest, EntryMovesOntoOrIntoItselfThroughNoConnection) {
    const std::string tree = AddTree("tree");
    server_.AddFile("a.kra", base_, "1");
    for (CLDAPItems* other : {&Directory(), &Elsewhere()}) {
        for (const auto& [from, to] :
             {std::pair(tree, "cn=x," + tree), std::pair(tree, tree),
              std::pair(tree, DN("cn=sub , CN=Tree")), std::pair(DN("cn=a.kra"), DN("cn=A.KRA"))}) {
            SCOPED_TRACE(to);
            error_ = "junk";
            EXPECT_THAT(CopyEntry(Directory(), from, *other, to, kReplace, &error_), Fails());
            ExpectFailure(LDAP_PARAM_ERROR);
        }
    }
    EXPECT_FALSE(Holds("cn=x," + tree));
    ExpectTree(tree);
}

TEST_F(TransferCodesTest, SameNameAtAnotherServerIsAnotherEntry) {
    test::DirectoryServer other;
    test::ForgetServer(other.Port());
    const std::string dn = std::string("cn=a.kra,") + test::kSuffix;
    server_.AddFile("a.kra", test::kSuffix, "1");
    const auto location = other.Location().Clone();
    CLDAPItems items(location.get());
    EXPECT_THAT(CopyEntry(Directory(), dn, items, dn, kReplace, &error_), IsDone());
    EXPECT_TRUE(other.Holds(dn));
    server_.Apply("dn: " + dn + "\nchangetype: delete\n");
}

TEST_F(TransferCodesTest, ServerThatCannotBeReachedLeavesItsCodeWithTheSource) {
    server_.AddFile("a.kra", base_, "1");
    const unsigned port = test::ClosedPort();
    test::ForgetServer(port);
    otherLocation_ = server_.Location(base_).Clone();
    otherLocation_->port = port;
    CLDAPItems items(otherLocation_.get());
    EXPECT_THAT(CopyEntry(Directory(), DN("cn=a.kra"), items, DN("cn=b.kra"), kReplace, &error_),
                Fails());
    EXPECT_THAT(Directory().LastError(), testing::Not(IsCode(LDAP_SUCCESS)));
    EXPECT_NE("junk", error_);
}

TEST_F(TransferCodesTest, LocalNamesThatWouldBecomeOneEntryAreNotUploaded) {
    world_.folder.MakeFolder("h\\tree");
    Make("h\\tree\\a b.kra", "1");
    Make("h\\tree\\a  b.kra", "2");
    const CDepotItem target("<Work>\\tree", work_);
    EXPECT_THAT(ItemOperation({"<Home>\\tree", &home_}, &target, FO_MOVE, nullptr, nullptr),
                Fails());
    EXPECT_THAT(Directory().LastError(), IsCode(LDAP_ALREADY_EXISTS));
    EXPECT_FALSE(Holds(DN("cn=tree")));
    EXPECT_EQ("1", test::FileBytes(At("h\\tree\\a b.kra")));
    EXPECT_EQ("2", test::FileBytes(At("h\\tree\\a  b.kra")));
}

// What must not be taken away.
using DepotRootTest = TransferCodesTest;

TEST_F(DepotRootTest, RootOfADirectoryDepotIsNotDeleted) {
    const std::string tree = AddTree("tree");
    for (const std::string& path :
         {std::string("<Work>\\"), std::string("<WORK>\\"), std::string("<Work>\\tree\\.."), base_,
          base_ + "\\", std::string(test::kSuffix)}) {
        SCOPED_TRACE(path);
        Directory().SetLastError(0);
        EXPECT_THAT(DeleteFile(*work_, path), Fails());
        EXPECT_THAT(Directory().LastError(), IsCode(LDAP_PARAM_ERROR));
        EXPECT_THAT(ItemOperation({path, work_}, nullptr, FO_DELETE, nullptr, nullptr), Fails());
    }
    ExpectTree(tree);
    EXPECT_THAT(DeleteFile(*work_, "<Work>\\tree\\"), IsDone());
    EXPECT_FALSE(Holds(tree));
}

TEST_F(DepotRootTest, RootOfADirectoryDepotIsNotMoved) {
    const std::string tree = AddTree("tree");
    const CDepotItem target("<Home>\\out", &home_);
    CDepotItems items;
    items.Append(std::make_unique<CDepotItem>("<Work>\\", work_));
    for (const UINT operation : {FO_MOVE, FO_DELETE}) {
        EXPECT_THAT(ListOperation(items, operation == FO_MOVE ? &target : nullptr, operation,
                                  kQuietFlags, nullptr, nullptr),
                    Fails());
    }
    EXPECT_THAT(ItemOperation(*items.At(0), &target, FO_MOVE, nullptr, nullptr), Fails());
    EXPECT_THAT(MoveFile(*work_, "<Work>\\", "<Work>\\x", nullptr, nullptr, nullptr), Fails());
    const std::string beside = std::string("cn=beside,") + test::kSuffix;
    EXPECT_THAT(MoveFile(*work_, "<Work>\\", beside, nullptr, nullptr, nullptr), Fails());
    ExpectTree(tree);
    EXPECT_FALSE(test::Exists(At("h\\out")));
}

TEST_F(DepotRootTest, PlainPathBesideADirectoryDepotIsAFileOfItsOwn) {
    const std::string file = Make("plain.kra", "1");
    const CDepotItem target("<Work>\\", work_);
    EXPECT_THAT(CopyFile(*work_, file, "<Work>\\", work_, true, &error_), IsDone());
    EXPECT_EQ("1", Contents(DN("cn=plain.kra")));
    EXPECT_THAT(CopyFile(*work_, file, At("copy.kra"), work_, true, &error_), IsDone());
    EXPECT_EQ("1", test::FileBytes(At("copy.kra")));
    EXPECT_THAT(ItemOperation({file, work_}, &target, FO_MOVE, nullptr, nullptr), IsDone());
    EXPECT_FALSE(test::Exists(file));
    EXPECT_EQ("1", Contents(DN("cn=plain.kra")));
    EXPECT_THAT(ItemOperation({At("copy.kra"), work_}, nullptr, FO_DELETE, nullptr, nullptr),
                IsDone());
    EXPECT_FALSE(test::Exists(At("copy.kra")));
}

TEST_F(DepotRootTest, RefusedMoveReportsItsReason) {
    AddTree("tree");
    Make("h\\a.kra", "1");
    const auto text = [](DWORD error, const std::string& path) {
        std::string formatted;
        FormatErrorText(error, path.c_str(), "Quillon", &formatted, nullptr);
        return formatted;
    };
    const auto refused = [&](CDepot& depot, const std::string& from, const std::string& to,
                             CDepot* target) {
        error_ = "junk";
        EXPECT_THAT(MoveFile(depot, from, to, nullptr, target, &error_), Fails());
        return error_;
    };
    // Roots, another kind of store, another server, no folder at all.
    EXPECT_EQ(MessageFor(LDAP_PARAM_ERROR), refused(*work_, "<Work>\\", "<Work>\\x", nullptr));
    EXPECT_EQ(MessageFor(LDAP_PARAM_ERROR), refused(*work_, "<Work>\\tree", "<Home>\\x", &home_));
    EXPECT_EQ(text(ERROR_INVALID_PARAMETER, "<Home>\\x"),
              refused(home_, "<Home>\\", "<Home>\\x", nullptr));
    EXPECT_EQ(text(ERROR_INVALID_PARAMETER, "<Work>\\x"),
              refused(home_, "<Home>\\a.kra", "<Work>\\x", work_));
    EXPECT_EQ(text(ERROR_INVALID_PARAMETER, "x"), refused(home_, "<Home>\\a.kra", "x", nullptr));
    auto other = server_.Location(base_).Clone();
    other->port = test::ClosedPort();
    CDepot away(&world_.depots);
    away.name = "Away";
    other->owner = away.paths.get();
    away.paths->Append(std::move(other));
    EXPECT_EQ(MessageFor(LDAP_PARAM_ERROR), refused(*work_, "<Work>\\tree", "<Away>\\x", &away));
    ExpectTree(DN("cn=tree"));
    EXPECT_TRUE(test::Exists(At("h\\a.kra")));
}

TEST_F(DepotRootTest, ShellNeverTakesAnEntryForAPath) {
    Make("h\\a.kra", "1");
    server_.AddFile("b.kra", base_, "2");
    const CDepotItem target("<Work>\\a.kra", work_), folder("<Home>\\", &home_);
    CDepotItems files, entries;
    files.Append(std::make_unique<CDepotItem>("<Home>\\a.kra", &home_));
    entries.Append(std::make_unique<CDepotItem>("<Work>\\b.kra", work_));
    for (const UINT operation : {FO_COPY, FO_MOVE}) {
        EXPECT_THAT(ShellOperation(files, &target, operation, kQuietFlags, nullptr, nullptr),
                    Fails());
        EXPECT_THAT(ShellOperation(entries, &folder, operation, kQuietFlags, nullptr, nullptr),
                    Fails());
    }
    EXPECT_THAT(MoveFile(home_, "<Home>\\a.kra", "<Work>\\a.kra", nullptr, work_, nullptr),
                Fails());
    EXPECT_THAT(MoveFile(*work_, "<Work>\\b.kra", "<Home>\\b.kra", nullptr, &home_, nullptr),
                Fails());
    EXPECT_TRUE(test::Exists(At("h\\a.kra")));
    EXPECT_FALSE(test::Exists(DN("cn=a.kra")));
    EXPECT_TRUE(Holds(DN("cn=b.kra")));
}

}  // namespace
}  // namespace depot
