// Profiles whose contents the user may write and not read.
#include "directory/connection_scope.h"
#include "directory_depots/depot_fixture.h"
#include "support/access_rules.h"
#include "support/results.h"

namespace depot {
namespace {

using test::Fails;
using test::IsCode;
using test::IsDone;
using test::RecoveredFiles;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

constexpr char kStored[] = "[Host]\nName=mail\nPort=992\n";
constexpr char kUnseen[] =
    "\"a.kra\": The contents may not be read: the directory does not show them to this user.";

class UnseenContentsTest : public test::DepotFixture {
protected:
    UnseenContentsTest() {
        strict_.AddFile("a.kra", test::kSuffix, kStored);
        Define(strict_.Port(), test::kSuffix);
    }

    void DetectConflicts() {
        key_.Dword("Work", "DetectConflicts1", 1);
        Define(strict_.Port(), test::kSuffix);
    }

    // Returns whether the entry holds what it was made with.
    bool IsUntouched() {
        const std::string all = strict_.Show("cn=a.kra," + std::string(test::kSuffix), "base",
                                             "quillonFileContentsBinary");
        // The beginning of the bytes in the form that the tool shows.
        return all.find("W0hvc3RdCk5hbWU9bWFpbApQb3J0PTk5Mgo=") != std::string::npos;
    }

    test::DirectoryServer strict_{test::WritesUnreadContents()};
};

TEST_F(UnseenContentsTest, LoadSaysSoAndLeavesAnEmptyCopy) {
    const auto file = Load();
    EXPECT_THAT(file->FetchCode(), IsCode(LDAP_NO_SUCH_ATTRIBUTE));
    EXPECT_EQ("default", file->ReadString("Host", "Name", "default", 100));
    EXPECT_THAT(boxes_.Texts(), ElementsAre(kUnseen));
    EXPECT_THAT(Directory().LastError(), IsCode(LDAP_NO_SUCH_ATTRIBUTE));
    EXPECT_TRUE(file->Release());
}

TEST_F(UnseenContentsTest, EditReplacesNothingAndIsRecovered) {
    for (const bool detects : {false, true}) {
        SCOPED_TRACE(detects);
        if (detects) DetectConflicts();
        const auto file = Load();
        file->WriteString("Host", "Name", "news");
        strict_.Mark();
        EXPECT_FALSE(file->Release());
        EXPECT_EQ(0, strict_.Counts().modifications);
        EXPECT_TRUE(IsUntouched());
        EXPECT_THAT(RecoveredFiles(), SizeIs(detects ? 2 : 1));
        EXPECT_THAT(boxes_.Texts().back(), StartsWith(std::string(kUnseen) + "\n"));
    }
}

TEST_F(UnseenContentsTest, EditOfACopyThatNothingIsKnownOfReplacesNothing) {
    const auto file = Load();
    WorkingCopyOrigin unknown;
    unknown.code = LDAP_BUSY;
    file->WriteString("Host", "Name", "news");
    EXPECT_THAT(ReleaseLocal(Directory(), "cn=a.kra," + std::string(test::kSuffix), file->localPath,
                             true, nullptr, unknown),
                Fails());
    EXPECT_TRUE(IsUntouched());
    EXPECT_THAT(RecoveredFiles(), SizeIs(1));
}

TEST_F(UnseenContentsTest, ReadingByNameStillSucceedsWithoutBytes) {
    const ConnectionScope connection(Directory(), nullptr);
    FileBuffer buffer;
    EXPECT_THAT(Directory().ReadFileContents("cn=a.kra," + std::string(test::kSuffix), buffer),
                IsDone());
    EXPECT_EQ(nullptr, buffer.bytes);
    EXPECT_EQ(0u, buffer.length);
}

// A file that is out of the user's sight altogether looks like one that is missing.
TEST_F(UnseenContentsTest, EditOfAnEntryThatMayNotBeSeenReplacesNothing) {
    test::DirectoryServer blind(test::FindsNothing());
    blind.AddFile("a.kra", test::kSuffix, kStored);
    Define(blind.Port(), test::kSuffix);
    const auto file = Load();
    EXPECT_THAT(file->FetchCode(), IsCode(LDAP_NO_SUCH_OBJECT));
    file->WriteString("Host", "Name", "news");
    blind.Mark();
    EXPECT_FALSE(file->Release());
    EXPECT_EQ(0, blind.Counts().modifications);
    EXPECT_THAT(RecoveredFiles(), SizeIs(1));
}

}  // namespace
}  // namespace depot
