#include "fileops/enumerate.h"

#include <set>

#include "config/file_types.h"
#include "config/profile_file.h"
#include "directory/connection_scope.h"
#include "directory_files/directory_world.h"
#include "model/working_copy.h"
#include "platform/paths.h"
#include "platform/text.h"
#include "support/allocation_count.h"
#include "support/results.h"

namespace depot {
namespace {

using test::IsCode;
using test::IsDone;
using test::OperationCounts;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class EnumerateDirectoryTest : public test::DirectoryWorldTest {
protected:
    int List(const std::string& folder, const std::string& filter, const std::string& subPath = {},
             bool foldersOnly = false) {
        const CDepotItem item(folder, work_);
        return Enumerate(list_, &item, filter, subPath, foldersOnly);
    }
    // Adds a file whose name in its DN is written with escapes.
    void AddEscaped(const std::string& name, const std::string& escaped) {
        server_.Apply("dn: cn=" + escaped + "," + base_ + "\nobjectClass: quillonFileBinary\ncn: " +
                      name + "\nquillonFileContentsBinary: x\n\n");
    }
    std::vector<std::string> Paths() const {
        std::vector<std::string> paths;
        for (std::size_t index = 0; index < list_.Count(); ++index) {
            paths.push_back(list_.At(index)->path);
        }
        return paths;
    }

    CDepotItems list_;
};

TEST_F(EnumerateDirectoryTest, FoldersAndPassingFilesAreListedUnderTheirDisplayPaths) {
    server_.AddFolder("sub", base_);
    server_.AddFile("a.kra", base_, "x");
    server_.AddFile("b.krv", base_, "x");
    EXPECT_EQ(2, List("<Work>\\", ".kra"));
    EXPECT_THAT(Paths(), UnorderedElementsAre("<Work>\\sub", "<Work>\\a.kra"));
    EXPECT_EQ(work_, list_.At(0)->depot);
}

TEST_F(EnumerateDirectoryTest, SubfoldersAreListedButNotEntered) {
    server_.AddFolder("sub", base_);
    server_.AddFolder("deeper", DN("cn=sub"));
    server_.AddFile("a.kra", DN("cn=sub"), "x");
    for (const char* folder : {"<Work>\\sub", "<Work>\\sub\\", "<WORK>\\sub"}) {
        SCOPED_TRACE(folder);
        list_.RemoveAll(true);
        EXPECT_EQ(2, List(folder, ".*"));
        EXPECT_THAT(Paths(), UnorderedElementsAre("<Work>\\sub\\deeper", "<Work>\\sub\\a.kra"));
    }
    list_.RemoveAll(true);
    EXPECT_EQ(2, List("<Work>", ".*", "sub"));
    list_.RemoveAll(true);
    EXPECT_EQ(1, List("<Work>\\", ".*"));
    EXPECT_THAT(Paths(), ElementsAre("<Work>\\sub"));
}

TEST_F(EnumerateDirectoryTest, WithoutAFilterTheLastPartOfThePathIsIt) {
    server_.AddFile("a.kra", base_, "x");
    server_.AddFile("b.krv", base_, "x");
    EXPECT_EQ(1, List("<Work>\\*.KRA", ""));
    EXPECT_THAT(Paths(), ElementsAre("<Work>\\a.kra"));
}

TEST_F(EnumerateDirectoryTest, FoldersOnlyLeavesEveryFileOut) {
    server_.AddFolder("sub", base_);
    server_.AddFile("a.kra", base_, "x");
    EXPECT_EQ(1, List("<Work>\\", ".*", "", true));
    EXPECT_THAT(Paths(), ElementsAre("<Work>\\sub"));
}

TEST_F(EnumerateDirectoryTest, CountIsThatOfTheWholeList) {
    server_.AddFile("a.kra", base_, "x");
    server_.AddFile("b.kra", base_, "x");
    EXPECT_EQ(2, List("<Work>\\", ".*"));
    EXPECT_EQ(4, List("<Work>\\", ".*"));
    EXPECT_EQ(4, List("<Work>\\missing", ".*"));
    EXPECT_EQ(4u, list_.Count());
}

TEST_F(EnumerateDirectoryTest, MissingFolderListsNothingAndKeepsItsCode) {
    EXPECT_EQ(0, List("<Work>\\missing", ".*"));
    EXPECT_THAT(Directory().LastError(), IsCode(LDAP_NO_SUCH_OBJECT));
    EXPECT_THAT(world_.boxes.Boxes(), IsEmpty());
}

TEST_F(EnumerateDirectoryTest, FindDataHoldsTheNameAndTheFolderAttribute) {
    server_.AddFolder("sub", base_);
    server_.AddFile("a.kra", base_, "x");
    List("<Work>\\", ".*");
    for (std::size_t index = 0; index < list_.Count(); ++index) {
        const CDepotItem& item = *list_.At(index);
        SCOPED_TRACE(item.path);
        ASSERT_NE(nullptr, item.findData);
        const bool folder = item.path == "<Work>\\sub";
        WIN32_FIND_DATAA expected = {};
        expected.dwFileAttributes = folder ? FILE_ATTRIBUTE_DIRECTORY : 0;
        NamePart(item.path).copy(expected.cFileName, MAX_PATH);
        EXPECT_EQ(0, memcmp(&expected, item.findData.get(), sizeof(expected)));
        EXPECT_EQ(folder ? kFolderKind : 104u, item.kindFlags);
        EXPECT_EQ(folder ? 0u : 64u, item.fileType);
    }
}

TEST_F(EnumerateDirectoryTest, HostileNamesAreLeftOut) {
    server_.AddFile("CON", base_, "x");
    server_.AddFile("a.kra", base_, "x");
    server_.Apply("dn: cn=..\\5C..\\5Cx.kra," + base_ +
                  "\nobjectClass: quillonFileBinary\ncn: ..\\..\\x.kra\n"
                  "quillonFileContentsBinary: x\n\n");
    server_.AddFile("C:x.kra", base_, "x");
    EXPECT_EQ(1, List("<Work>\\", ".*"));
    EXPECT_THAT(Paths(), ElementsAre("<Work>\\a.kra"));
}

TEST_F(EnumerateDirectoryTest, NamesThatHoldADepotsPrefixAreLeftOutAndFormatsAreNot) {
    AddEscaped("<Work>.kra", "\\3CWork\\3E.kra");
    AddEscaped("a<b.kra", "a\\3Cb.kra");
    AddEscaped("a>b.kra", "a\\3Eb.kra");
    for (const char* name : {"100%s%n%99999d.kra", "%.kra"}) server_.AddFile(name, base_, "x");
    EXPECT_EQ(2, List("<Work>\\", ".kra"));
    EXPECT_THAT(Paths(), UnorderedElementsAre("<Work>\\100%s%n%99999d.kra", "<Work>\\%.kra"));
}

TEST_F(EnumerateDirectoryTest, NameThatHoldsTheDepotsRootStaysAsItIs) {
    const std::string name = "of " + base_ + ".kra";
    AddEscaped(name, "of " + ReplaceAllNoCase(base_, ",", "\\,") + ".kra");
    EXPECT_EQ(1, List("<Work>\\", ".kra"));
    EXPECT_THAT(Paths(), ElementsAre("<Work>\\" + name));
}

std::string longName;

TEST_F(EnumerateDirectoryTest, NamesLongerThanTheFindDataAreCutThereAndNotInThePath) {
    server_.AddFile("a.kra", base_, "x");
    DirectoryClient& client = Directory().Client();
    // Servers store longer names than the one of the tests.
    client.ldap_get_values_len = [](LDAP*, LDAPMessage*, PCHAR attribute) -> berval** {
        static std::string fileClass = "quillonFileBinary";
        static berval value = {};
        static berval* values[2] = {&value};
        std::string& text = EqualsNoCase(attribute, "objectClass") ? fileClass : longName;
        value = {static_cast<ULONG>(text.size()), text.data()};
        return values;
    };
    client.ldap_value_free_len = [](berval**) -> ULONG { return LDAP_SUCCESS; };
    for (const std::size_t length : {255u, 259u, 260u, 300u}) {
        SCOPED_TRACE(length);
        longName = std::string(length - 4, 'n') + ".kra";
        list_.RemoveAll(true);
        ASSERT_EQ(1, List("<Work>\\", ".kra"));
        EXPECT_EQ("<Work>\\" + longName, list_.At(0)->path);
        EXPECT_EQ(longName.substr(0, MAX_PATH - 1), list_.At(0)->findData->cFileName);
        EXPECT_EQ(64u, list_.At(0)->fileType);
    }
}

TEST_F(EnumerateDirectoryTest, EntriesThatCannotBeNamedAreCountedInTheList) {
    server_.AddFile("a.kra", base_, "x");
    server_.AddFile("\xE8\xA1\xA8.kra", base_, "x");
    server_.AddFile("nul.kra", base_, "x");
    EXPECT_EQ(1, List("<Work>\\", ".kra"));
    EXPECT_EQ(2u, list_.unsafeNames);
}

TEST_F(EnumerateDirectoryTest, FolderDeletedBeforeItsListingListsNothing) {
    server_.AddFolder("sub", base_);
    server_.AddFile("a.kra", DN("cn=sub"), "x");
    EXPECT_EQ(1, List("<Work>\\sub", ".kra"));
    ASSERT_THAT(world_.Connected().DeleteTree(DN("cn=sub"), nullptr), IsDone());
    list_.RemoveAll(true);
    EXPECT_EQ(0, List("<Work>\\sub", ".kra"));
    EXPECT_THAT(Directory().LastError(), IsCode(LDAP_NO_SUCH_OBJECT));
}

TEST_F(EnumerateDirectoryTest, IsOneBindAndOneOneLevelSearchWhateverTheFolderHolds) {
    server_.AddFolder("sub", base_);
    for (int index = 0; index < 20; ++index) {
        server_.AddFile("f" + std::to_string(index) + ".kre", base_, "x");
    }
    server_.Mark();
    EXPECT_EQ(21, List("<Work>\\", ".*"));
    EXPECT_EQ((OperationCounts{.binds = 1, .searches = 1}), server_.Counts());
    EXPECT_THAT(server_.Log(), testing::HasSubstr("SRCH base=\"" + base_ + "\" scope=1"));
    EXPECT_FALSE(Directory().IsConnected());
}

// The kind of a file as it comes out when the file is fetched to be looked at.
std::uint32_t KindByFetching(CLDAPItems& directory, const std::string& dn, const CDepotItem& item) {
    const std::string local = FetchToLocal(directory, dn);
    const auto type = static_cast<std::int32_t>(item.fileType);
    const bool byDepotPath = type == kSessionProfile || type == kOtherSessionProfile;
    const std::uint32_t kind = GetTerminalType(byDepotPath ? item.path : local, type);
    ReleaseLocal(directory, dn, local, false);
    return kind;
}

TEST_F(EnumerateDirectoryTest, EveryTypeIsClassifiedAsByFetchingTheFile) {
    // A session profile that says what it is, so that reading it would give another answer.
    const std::string contents = "[PROFILE]\r\nSession Terminal Type=5\r\n";
    for (const char* extension : {"kre", "krp", "krs", "krf", "krd", "krh", "krc", "krk", "krv",
                                  "krcf", "kra", "txt", "kre.bak"}) {
        server_.AddFile(std::string("file.") + extension, base_, contents);
    }
    EXPECT_EQ(13, List("<Work>\\", ".*"));
    bool sawSession = false;
    for (std::size_t index = 0; index < list_.Count(); ++index) {
        const CDepotItem& item = *list_.At(index);
        SCOPED_TRACE(item.path);
        EXPECT_EQ(static_cast<std::uint32_t>(DetectFileType(item.path)), item.fileType);
        EXPECT_EQ(KindByFetching(Directory(), DN("cn=" + NamePart(item.path)), item),
                  item.kindFlags);
        if (item.fileType != kSessionProfile) continue;
        sawSession = true;
        // Not what the file says.
        EXPECT_EQ(1u, item.kindFlags);
    }
    EXPECT_TRUE(sawSession);
}

TEST_F(EnumerateDirectoryTest, ItemThatMemoryRunsOutForIsLeftOut) {
    server_.AddFile("a.kra", base_, "x");
    server_.AddFolder("sub", base_);
    server_.AddFile("c.kra", base_, "x");
    const ConnectionScope connection(Directory(), nullptr);
    const std::set<int> counts = test::CountsWithoutMemory([&] {
        list_.RemoveAll(true);
        return List("<Work>\\", ".*");
    });
    EXPECT_TRUE(counts.contains(2));
    // Half a listing of the directory counts as none.
    EXPECT_FALSE(counts.contains(1));
}

TEST_F(EnumerateDirectoryTest, ServerThatIsDownListsNothing) {
    test::DirectoryServer gone;
    CDepot depot(&world_.depots);
    depot.name = "Gone";
    auto location = gone.Location(test::kSuffix).Clone();
    location->owner = depot.paths.get();
    depot.paths->Append(std::move(location));
    depot.paths->GetActivePath();
    gone.Stop();
    List("<Work>\\", ".*");
    list_.Append(std::make_unique<CDepotItem>("x", nullptr));
    const CDepotItem item("<Gone>\\", &depot);
    EXPECT_EQ(1, Enumerate(list_, &item, ".*", {}, false));
}

// A server of the test's own with one large folder, and a depot "Large" over it.
class EnumerateLargeDirectoryTest : public test::DirectoryWorldTest {
protected:
    void Start(const std::string& settings, int files) {
        large_ = std::make_unique<test::DirectoryServer>(settings);
        test::ForgetServer(large_->Port());
        std::string ldif;
        for (int index = 0; index < files; ++index) {
            const std::string name = "f" + std::to_string(index) + ".kra";
            ldif += "dn: cn=" + name + "," + test::kSuffix +
                    "\nobjectClass: quillonFileBinary\ncn: " + name +
                    "\nquillonFileContentsBinary: x\n\n";
        }
        large_->Apply(ldif);
        auto location = large_->Location(test::kSuffix).Clone();
        location->owner = depot_.paths.get();
        depot_.name = "Large";
        depot_.paths->Append(std::move(location));
        depot_.paths->GetActivePath();
        large_->Mark();
    }
    int List() {
        const CDepotItem folder("<Large>\\", &depot_);
        return Enumerate(list_, &folder, ".kra", {}, false);
    }

    std::unique_ptr<test::DirectoryServer> large_;
    CDepot depot_{&world_.depots};
    CDepotItems list_;
};

TEST_F(EnumerateLargeDirectoryTest, ServerThatPagesListsTwoThousandFiveHundredEntriesWhole) {
    Start("database limits * size.soft=500 size.hard=500 size.prtotal=unlimited", 2500);
    EXPECT_EQ(2500, List());
    std::set<std::string> paths;
    for (std::size_t index = 0; index < list_.Count(); ++index) {
        paths.insert(list_.At(index)->path);
    }
    EXPECT_EQ(2500u, paths.size());
    // The refused search, what the server offers, and six pages: users stand there as well.
    EXPECT_EQ((OperationCounts{.binds = 1, .searches = 8}), large_->Counts());
    EXPECT_THAT(world_.boxes.Boxes(), IsEmpty());
}

TEST_F(EnumerateLargeDirectoryTest, ServerThatLimitsAndDoesNotPageListsNothingAndKeepsItsCode) {
    Start("database limits * size.soft=500 size.hard=500 size.prtotal=disabled", 10000);
    EXPECT_EQ(0, List());
    EXPECT_THAT(depot_.DirectoryConnection()->LastError(), IsCode(LDAP_SIZELIMIT_EXCEEDED));
    EXPECT_FALSE(depot_.DirectoryConnection()->IsConnected());
    EXPECT_THAT(world_.boxes.Boxes(), IsEmpty());
    // What else the list holds stays.
    list_.Append(std::make_unique<CDepotItem>("x", nullptr));
    EXPECT_EQ(1, List());
}

}  // namespace
}  // namespace depot
