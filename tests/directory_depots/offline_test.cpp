// A depot that is used while its server is away.
#include "directory_depots/offline_fixture.h"
#include "manager/display_path.h"
#include "manager/writability.h"
#include "platform/local_file.h"
#include "platform/text.h"
#include "support/results.h"

namespace depot {
namespace {

using test::DirectoryServer;
using test::kOld;
using test::OfflineTest;
using test::RecoveredFiles;
using test::WaitingEdits;
using testing::HasSubstr;
using testing::IsEmpty;

TEST_F(OfflineTest, AFileThatWasReadCanBeReadWhileTheServerIsAway) {
    EXPECT_EQ("old", Value());
    Away();
    EXPECT_EQ("old", Value());
    Restart();
    EXPECT_EQ("old", Value());
    EXPECT_EQ(0u, Load()->FetchCode());
    EXPECT_THAT(boxes_.Boxes(), IsEmpty());
    Back();
}

TEST_F(OfflineTest, AFileThatWasNeverReadFailsAsWithoutBeingKept) {
    own_.AddFile("b.kra", test::kSuffix, kOld);
    Value();
    Away();
    EXPECT_FALSE(Load("b.kra")->Release() && Load("b.kra")->FetchCode() == 0);
    EXPECT_THAT(boxes_.Boxes(), testing::Not(IsEmpty()));
    Back();
}

TEST_F(OfflineTest, WithoutTheValueNothingIsKept) {
    key_.Dword("Work", "Offline1", 0);
    Restart();
    Value();
    Edit("new");
    EXPECT_THAT(OfflineFolders(), IsEmpty());
}

TEST_F(OfflineTest, AnEditWaitsAndIsStoredByTheNextSession) {
    Value();
    Away();
    EXPECT_TRUE(Edit("new"));
    EXPECT_EQ("new", Value());
    ASSERT_EQ(1u, WaitingEdits().size());
    Back();
    Restart();
    EXPECT_EQ("new", Value());
    EXPECT_EQ("[S]\r\nK=new\r\nL=old\r\n", Entry());
    EXPECT_THAT(WaitingEdits(), IsEmpty());
    EXPECT_THAT(RecoveredFiles(), IsEmpty());
    EXPECT_THAT(boxes_.Boxes(), IsEmpty());
}

TEST_F(OfflineTest, TheSameSessionStoresItWhenTheServerIsBack) {
    Value();
    Away();
    EXPECT_TRUE(Edit("new"));
    Back();
    EXPECT_EQ("old", Value("L"));
    EXPECT_EQ("[S]\r\nK=new\r\nL=old\r\n", Entry());
}

TEST_F(OfflineTest, SeveralEditsOfAFileAreOneThatIsHeldAgainstWhatWasFetched) {
    Value();
    Away();
    EXPECT_TRUE(Edit("first"));
    Restart();
    EXPECT_TRUE(Edit("second"));
    EXPECT_TRUE(Edit("other", "L"));
    ASSERT_EQ(1u, WaitingEdits().size());
    const OfflineRecord edit = WaitingEdits().front();
    EXPECT_EQ(kOld, std::string(edit.base->begin(), edit.base->end()));
    Back();
    Restart();
    Value();
    EXPECT_EQ("[S]\r\nK=second\r\nL=other\r\n", Entry());
}

TEST_F(OfflineTest, WhatSomeoneElseStoredMeanwhileStaysAndTheEditIsRecovered) {
    for (const DWORD detect : {0u, 1u}) {
        Restart(detect);
        StoreByOthers(kOld);
        Value();
        Away();
        EXPECT_TRUE(Edit("new"));
        Back();
        StoreByOthers("[S]\r\nK=theirs\r\n");
        Restart(detect);
        EXPECT_EQ("theirs", Value());
        EXPECT_EQ("[S]\r\nK=theirs\r\n", Entry());
        ExpectRecovered("[S]\r\nK=new\r\nL=old\r\n");
        EXPECT_THAT(boxes_.Texts().back(),
                    testing::StartsWith("\"a.kra\" was edited while the directory could not be "
                                        "reached, and someone else has stored another version "
                                        "since. That version stays; yours is kept here:\n"));
        EXPECT_THAT(WaitingEdits(), IsEmpty());
        DeleteFileA(RecoveredFiles().front().c_str());
    }
}

TEST_F(OfflineTest, EditsAreMergedWhereTheLocationWantsIt) {
    Restart(2);
    Value();
    Away();
    EXPECT_TRUE(Edit("new"));
    Back();
    StoreByOthers("[S]\r\nK=old\r\nL=theirs\r\n");
    Restart(2);
    EXPECT_EQ("new", Value());
    EXPECT_EQ("[S]\r\nK=new\r\nL=theirs\r\n", Entry());
    EXPECT_THAT(boxes_.Boxes(), IsEmpty());
}

TEST_F(OfflineTest, AValueThatBothChangedIsNamedAndTheRestStored) {
    Restart(2);
    Value();
    Away();
    EXPECT_TRUE(Edit("new"));
    EXPECT_TRUE(Edit("ours", "L"));
    Back();
    StoreByOthers("[S]\r\nK=theirs\r\nL=old\r\n");
    Restart(2);
    EXPECT_EQ("theirs", Value());
    EXPECT_EQ("[S]\r\nK=theirs\r\nL=ours\r\n", Entry());
    ExpectRecovered("[S]\r\nK=new\r\nL=ours\r\n");
    EXPECT_THAT(boxes_.Texts().back(), HasSubstr("changed there as well:\n[S] K\n"));
}

TEST_F(OfflineTest, AnEditThatWasStoredByAProcessThatEndedThenIsNotStoredTwice) {
    Value();
    Away();
    EXPECT_TRUE(Edit("new"));
    Back();
    StoreByOthers("[S]\r\nK=new\r\nL=old\r\n");
    Restart();
    EXPECT_EQ("new", Value());
    EXPECT_THAT(WaitingEdits(), IsEmpty());
    EXPECT_THAT(RecoveredFiles(), IsEmpty());
    EXPECT_THAT(boxes_.Boxes(), IsEmpty());
}

TEST_F(OfflineTest, AnEditOfAnEntryThatIsGoneIsRecovered) {
    Value();
    Away();
    EXPECT_TRUE(Edit("new"));
    Back();
    own_.Apply("dn: cn=a.kra," + std::string(test::kSuffix) + "\nchangetype: delete\n");
    Restart();
    Load();
    ASSERT_EQ(1u, RecoveredFiles().size());
    EXPECT_THAT(WaitingEdits(), IsEmpty());
}

TEST_F(OfflineTest, AUserWithoutRightsAnyMoreFindsTheEditRecovered) {
    Value();
    Away();
    EXPECT_TRUE(Edit("new"));
    Back();
    Restart();
    DirectoryClient& client = Directory().Client();
    client.ldap_modify_s = [](LDAP*, PCHAR, LDAPModA**) -> ULONG {
        return LDAP_INSUFFICIENT_RIGHTS;
    };
    client.ldap_modify_ext_s = [](LDAP*, PCHAR, LDAPModA**, LDAPControlA**,
                                  LDAPControlA**) -> ULONG { return LDAP_INSUFFICIENT_RIGHTS; };
    EXPECT_EQ("old", Value());
    ExpectRecovered("[S]\r\nK=new\r\nL=old\r\n");
}

TEST_F(OfflineTest, AnEditWaitsOnWhileTheServerIsAway) {
    Value();
    Away();
    EXPECT_TRUE(Edit("new"));
    Restart();
    EXPECT_EQ("new", Value());
    EXPECT_EQ(1u, WaitingEdits().size());
    Back();
}

TEST_F(OfflineTest, EditsOfADefinitionThatMovedToAnotherServerAreNotSentThere) {
    Value();
    Away();
    EXPECT_TRUE(Edit("new"));
    Back();
    DirectoryServer other;
    other.AddFile("a.kra", test::kSuffix, kOld);
    Define(other.Port(), test::kSuffix);
    EXPECT_EQ("old", Value());
    EXPECT_EQ(1u, WaitingEdits().size());
    Restart();
    EXPECT_EQ("new", Value());
    EXPECT_THAT(WaitingEdits(), IsEmpty());
}

TEST_F(OfflineTest, NewFilesWaitAndOthersOfTheirNameStay) {
    // The folder's listing shows that there is a place for them.
    LeftOut left;
    {
        Store& store = work_->ActiveStore();
        const StoreScope scope(store);
        ASSERT_THAT(store.List(
                        test::kSuffix, [](const StoreItem&) {}, left),
                    test::IsDone());
    }
    test::ScratchFolder local;
    const std::string source = local.MakeFile("new.kra", "[N]\r\nx=1\r\n");
    Away();
    EXPECT_EQ(1, CopyFile(*work_, source, "<Work>\\new.kra", work_, false, nullptr));
    EXPECT_EQ(1, Exists("new.kra"));
    EXPECT_EQ(0, Exists("other.kra"));
    ASSERT_EQ(1u, WaitingEdits().size());
    EXPECT_FALSE(WaitingEdits().front().base);
    Back();
    Restart();
    Value();
    EXPECT_EQ("[N]\r\nx=1\r\n", Entry("new.kra"));
    EXPECT_THAT(WaitingEdits(), IsEmpty());
}

TEST_F(OfflineTest, EmptyFileThatWasStoredIsNoConflict) {
    test::ScratchFolder local;
    const std::string source = local.MakeFile("empty.kra", "");
    Restart(1);
    EXPECT_EQ(1, CopyFile(*work_, source, "<Work>\\empty.kra", work_, false, nullptr));
    Away();
    {
        const auto file = Load("empty.kra");
        file->WriteString("S", "K", "new");
        EXPECT_TRUE(file->Release());
    }
    Back();
    Restart(1);
    EXPECT_EQ("new", Load("empty.kra")->ReadString("S", "K", "(none)", 100));
    EXPECT_THAT(RecoveredFiles(), IsEmpty());
    EXPECT_THAT(boxes_.Boxes(), IsEmpty());
}

// What an edit was merged into is what its user has of the file when the server is away again.
TEST_F(OfflineTest, WhatOthersStoredIsKeptWithTheEditThatMetIt) {
    Restart(2);
    {
        const auto file = Load();
        StoreByOthers("[S]\r\nK=old\r\nL=theirs\r\n");
        file->WriteString("S", "K", "new");
        EXPECT_TRUE(file->Release());
    }
    Away();
    EXPECT_EQ("theirs", Value("L"));
    EXPECT_EQ("new", Value("K"));
    Back();
}

TEST_F(OfflineTest, WhatOthersStoredIsKeptWithTheWaitingEditThatMetIt) {
    own_.AddFile("b.kra", test::kSuffix, kOld);
    for (const char* const ours : {"K", "L"}) {
        Restart(2);
        const std::string before = Value("K");
        Away();
        EXPECT_TRUE(Edit("ours", "K"));
        EXPECT_TRUE(Edit("ours", ours));
        Back();
        // Of the second round the value of L is one that both changed.
        StoreByOthers(Concatenate({"[S]\r\nK=", before, "\r\nL=theirs", ours, "\r\n"}));
        Restart(2);
        Load("b.kra");
        EXPECT_THAT(WaitingEdits(), IsEmpty());
        Away();
        EXPECT_EQ(std::string("theirs") + ours, Value("L"));
        EXPECT_EQ("ours", Value("K"));
        Back();
    }
}

TEST_F(OfflineTest, DeletionsAndRenamesFailWithATextThatSaysWhy) {
    Value();
    Away();
    EXPECT_EQ(0, DeleteFile(*work_, "<Work>\\a.kra"));
    std::string text;
    EXPECT_EQ(0, MoveFile(*work_, "<Work>\\a.kra", "<Work>\\b.kra", nullptr, nullptr, &text));
    EXPECT_THAT(text, testing::StartsWith("The directory cannot be reached."));
    Back();
    EXPECT_EQ(kOld, Entry());
}

TEST_F(OfflineTest, WhatIsKeptCanBeWritten) {
    Value();
    Away();
    EXPECT_EQ(1, TestPathWritable(*work_, "<Work>\\a.kra", nullptr));
    EXPECT_EQ(0, TestPathWritable(*work_, "<Work>\\b.kra", nullptr));
    Back();
}

TEST_F(OfflineTest, AFileThatWaitsCanBeCopiedOut) {
    Value();
    Away();
    EXPECT_TRUE(Edit("new"));
    test::ScratchFolder local;
    EXPECT_EQ(1, CopyFile(*work_, "<Work>\\a.kra", local.At("a.kra"), nullptr, false, nullptr));
    EXPECT_EQ("[S]\r\nK=new\r\nL=old\r\n", test::FileBytes(local.At("a.kra")));
    Back();
}

TEST_F(OfflineTest, ADamagedEditIsSetAsideAndNamed) {
    Value();
    Away();
    EXPECT_TRUE(Edit("new"));
    const std::string folder = OfflineFolders().front();
    const std::string path = test::FilesIn(folder, "*.edit").front();
    ASSERT_TRUE(WriteLocalFile(path, "damaged", 7));
    Back();
    Restart();
    EXPECT_EQ("old", Value());
    EXPECT_EQ(kOld, Entry());
    ASSERT_EQ(1u, boxes_.Texts().size());
    EXPECT_THAT(boxes_.Texts().front(), HasSubstr("cannot be read any more:\n" + path));
}

TEST_F(OfflineTest, AnEditThatCannotBeQueuedIsRecoveredAndFails) {
    Value();
    Away();
    const auto file = Load();
    file->WriteString("S", "K", "new");
    {
        // As another process does that takes long.
        const EditsLock others(OfflineFolders().front(), 0);
        EXPECT_FALSE(file->Release());
    }
    ExpectRecovered("[S]\r\nK=new\r\nL=old\r\n");
    EXPECT_THAT(WaitingEdits(), IsEmpty());
    Back();
}

}  // namespace
}  // namespace depot
