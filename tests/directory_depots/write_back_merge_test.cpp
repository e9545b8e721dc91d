// Write-backs that put their edits into what someone else stored meanwhile.
#include <functional>

#include "directory_depots/depot_fixture.h"
#include "platform/local_file.h"

namespace depot {
namespace {

using test::DirectoryServer;
using test::Fails;
using test::IsDone;
using test::OperationCounts;
using test::RecoveredFiles;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr char kOld[] = "[S]\r\nK=old\r\nL=old\r\n";

class MergeTest : public test::DepotFixture {
protected:
    MergeTest() {
        Use(server_, base_, 2);
        server_.AddFile("a.kra", base_, kOld);
    }

    // What someone else made of the file.
    void Theirs(const std::string& bytes) { Overwrite(bytes); }

    // Has someone store another version just before each of so many changes reaches the server.
    void StoreBetween(int times) {
        attempts_ = 0;
        between_ = [this, times] {
            if (++attempts_ > times) return;
            const std::string bytes = "[S]\r\nK=old\r\nL=" + std::to_string(attempts_) + "\r\n";
            CDepotPath location = server_.Location();
            CLDAPItems directory(&location);
            const ConnectionScope connection(directory, nullptr);
            EXPECT_THAT(directory.Entries().Replace(Entry(), bytes.data(),
                                                    static_cast<std::uint32_t>(bytes.size())),
                        IsDone());
        };
        DirectoryClient& client = Directory().Client();
        genuine_ = client.ldap_modify_ext_s;
        client.ldap_modify_ext_s = [](LDAP* connection, char* dn, LDAPModA** changes,
                                      LDAPControlA** server, LDAPControlA** controls) -> ULONG {
            between_();
            return genuine_(connection, dn, changes, server, controls);
        };
    }

    static inline std::function<void()> between_;
    static inline decltype(DirectoryClient::ldap_modify_ext_s) genuine_ = nullptr;
    int attempts_ = 0;
};

TEST_F(MergeTest, AnEditGoesIntoTheVersionThatSomeoneElseStored) {
    const auto file = LoadChanged();
    Theirs("; theirs\r\n[S]\r\nK=old\r\nL=theirs\r\n");
    EXPECT_TRUE(file->Release());
    EXPECT_EQ("; theirs\r\n[S]\r\nK=new\r\nL=theirs\r\n", Stored());
    EXPECT_THAT(RecoveredFiles(), IsEmpty());
    EXPECT_THAT(test::WorkingCopies(), IsEmpty());
    EXPECT_THAT(boxes_.Boxes(), IsEmpty());
    EXPECT_EQ(static_cast<std::uint32_t>(LDAP_SUCCESS), Directory().LastError());
}

TEST_F(MergeTest, AnUnchangedEntryCostsWhatItCostsWithoutMerging) {
    const auto file = LoadChanged();
    server_.Mark();
    EXPECT_TRUE(file->Release());
    EXPECT_EQ((OperationCounts{.binds = 1, .searches = 2, .modifications = 1}), server_.Counts());
    EXPECT_EQ("[S]\r\nK=new\r\nL=old\r\n", Stored());
}

TEST_F(MergeTest, AValueThatBothChangedStaysAndTheEditIsKept) {
    const auto file = LoadChanged();
    file->WriteString("S", "L", "new");
    Theirs("[S]\r\nK=theirs\r\nL=old\r\n");
    EXPECT_FALSE(file->Release());
    EXPECT_EQ("[S]\r\nK=theirs\r\nL=new\r\n", Stored());
    ExpectRecovered("[S]\r\nK=new\r\nL=new\r\n");
    ASSERT_EQ(1u, boxes_.Texts().size());
    EXPECT_THAT(boxes_.Texts().front(),
                testing::StartsWith("\"a.kra\" was changed by someone else meanwhile. Your changes "
                                    "were added to that version, but for these values, which were "
                                    "changed there as well:\n[S] K\nYour version is kept here:\n"));
    EXPECT_EQ(kContentsChanged, Directory().LastError());
}

TEST_F(MergeTest, AMessageNamesTenValuesAndCutsLongNames) {
    std::string theirs = "[S]\r\n";
    auto file = Load();
    const std::string longName(200, 'n');
    file->WriteString("S", longName, "ours");
    theirs += longName + "=theirs\r\n";
    for (char key = 'a'; key < 'o'; ++key) {
        file->WriteString("S", std::string(3, key), "ours");
        theirs += std::string(3, key) + "=theirs\r\n";
    }
    Theirs(theirs);
    EXPECT_FALSE(file->Release());
    const std::string text = boxes_.Texts().back();
    EXPECT_THAT(text, HasSubstr("[S] " + std::string(60, 'n') + "...\n"));
    EXPECT_THAT(text, HasSubstr("[S] iii\n...\nYour version"));
    EXPECT_THAT(text, testing::Not(HasSubstr("jjj")));
}

TEST_F(MergeTest, AFileThatIsNoProfileIsNotMerged) {
    const auto file = LoadChanged();
    const std::string theirs("\0\1\2 binary", 10);
    Theirs(theirs);
    EXPECT_FALSE(file->Release());
    EXPECT_EQ(theirs, Stored());
    ExpectRecovered("[S]\r\nK=new\r\nL=old\r\n");
    EXPECT_THAT(boxes_.Texts().front(), HasSubstr("That version stays"));
}

TEST_F(MergeTest, WhatIsStoredBetweenReadingAndMergingIsMergedToo) {
    const auto file = LoadChanged();
    Theirs("[S]\r\nK=old\r\nL=first\r\n");
    StoreBetween(1);
    EXPECT_TRUE(file->Release());
    EXPECT_EQ("[S]\r\nK=new\r\nL=1\r\n", Stored());
    EXPECT_EQ(2, attempts_);
}

TEST_F(MergeTest, WhoeverIsFasterEachTimeWins) {
    const auto file = LoadChanged();
    Theirs("[S]\r\nK=old\r\nL=first\r\n");
    StoreBetween(100);
    EXPECT_FALSE(file->Release());
    EXPECT_EQ(8, attempts_);
    EXPECT_EQ("[S]\r\nK=old\r\nL=8\r\n", Stored());
    ExpectRecovered("[S]\r\nK=new\r\nL=old\r\n");
}

TEST_F(MergeTest, WithoutTheAssertionControlVersionsAreComparedBeforeTheChange) {
    DirectoryServer silent(
        "global access to dn.base=\"\" attrs=supportedControl by * none\n"
        "global access to * by * read");
    Use(silent, test::kSuffix, 2);
    silent.AddFile("a.kra", test::kSuffix, kOld);
    const auto file = LoadChanged();
    Theirs("[S]\r\nK=old\r\nL=theirs\r\n");
    EXPECT_TRUE(file->Release());
    EXPECT_EQ("[S]\r\nK=new\r\nL=theirs\r\n", Stored());
}

TEST_F(MergeTest, AnEntryThatIsGoneHasTheEditRecovered) {
    const auto file = LoadChanged();
    server_.Apply("dn: " + Entry() + "\nchangetype: delete\n");
    EXPECT_FALSE(file->Release());
    ExpectRecovered("[S]\r\nK=new\r\nL=old\r\n");
}

TEST_F(MergeTest, AnEntryThatAppearedMeanwhileStays) {
    server_.Apply("dn: " + Entry() + "\nchangetype: delete\n");
    const auto file = LoadChanged();
    server_.AddFile("a.kra", base_, "[S]\r\nL=theirs\r\n");
    EXPECT_FALSE(file->Release());
    EXPECT_EQ("[S]\r\nL=theirs\r\n", Stored());
    ExpectRecovered("[S]\r\nK=new\r\n");
}

TEST_F(MergeTest, WhatBothChangedAlikeIsStoredOnce) {
    const auto file = LoadChanged();
    Theirs("[S]\r\nK=new\r\nL=old\r\n");
    server_.Mark();
    EXPECT_TRUE(file->Release());
    EXPECT_EQ(0, server_.Counts().modifications);
    EXPECT_EQ("[S]\r\nK=new\r\nL=old\r\n", Stored());
    EXPECT_THAT(boxes_.Boxes(), IsEmpty());
}

TEST_F(MergeTest, TheNextLoadSeesBothEdits) {
    auto file = LoadChanged();
    Theirs("[S]\r\nK=old\r\nL=theirs\r\n");
    EXPECT_TRUE(file->Release());
    file = Load();
    EXPECT_EQ("new", file->ReadString("S", "K", "", 100));
    EXPECT_EQ("theirs", file->ReadString("S", "L", "", 100));
}

TEST_F(MergeTest, UnmergedErrorTextEndsWithThePath) {
    WorkingCopyOrigin origin;
    Load();
    const std::string copy = FetchToLocal(Directory(), Entry(), &origin);
    const std::string ours = "[S]\r\nK=ours\r\nL=old\r\n";
    ASSERT_TRUE(WriteLocalFile(copy, ours.data(), static_cast<std::uint32_t>(ours.size())));
    Theirs("[S]\r\nK=theirs\r\nL=old\r\n");
    std::string text = "junk";
    EXPECT_THAT(ReleaseLocal(Directory(), Entry(), copy, true, &text, origin), Fails());
    ASSERT_EQ(1u, RecoveredFiles().size());
    EXPECT_THAT(text, testing::EndsWith("\n" + RecoveredFiles().front()));
}

}  // namespace
}  // namespace depot
