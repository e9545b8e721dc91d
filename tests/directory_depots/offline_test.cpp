// A depot that is used while its server is away.
#include <atomic>
#include <thread>

#include "directory/connection_scope.h"
#include "directory_depots/depot_fixture.h"
#include "fileops/depot_file.h"
#include "manager/display_path.h"
#include "manager/writability.h"
#include "platform/local_file.h"
#include "platform/text.h"
#include "support/offline_files.h"
#include "support/relay.h"
#include "support/results.h"

namespace depot {
namespace {

using test::DirectoryServer;
using test::RecoveredFiles;
using test::WaitingEdits;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr char kOld[] = "[S]\r\nK=old\r\nL=old\r\n";

class OfflineTest : public test::DepotFixture {
protected:
    OfflineTest() {
        key_.Dword("Work", "Offline1", 1);
        Define(own_.Port(), test::kSuffix);
        own_.AddFile("a.kra", test::kSuffix, kOld);
    }

    // A new session, which knows what the registry and the disk say.
    void Restart(DWORD detectConflicts = 0) {
        key_.Dword("Work", "DetectConflicts1", detectConflicts);
        Define(own_.Port(), test::kSuffix);
    }
    void Away() { own_.Stop(); }
    void Back() { own_.Continue(); }

    bool Edit(const std::string& value, const std::string& key = "K") {
        const auto file = Load();
        file->WriteString("S", key, value);
        return file->Release();
    }
    std::string Value(const std::string& key = "K") {
        return Load()->ReadString("S", key, "(none)", 100);
    }
    // What the server has, read and stored past the depot.
    std::string Entry(const std::string& name = "a.kra") {
        CDepotPath location = own_.Location();
        CLDAPItems directory(&location);
        const ConnectionScope connection(directory, nullptr);
        FileBuffer buffer;
        if (!directory.Entries().Read(DnOf(name), buffer)) return "(missing)";
        return {reinterpret_cast<const char*>(buffer.bytes.get()), buffer.length};
    }
    void StoreByOthers(const std::string& contents) {
        CDepotPath location = own_.Location();
        CLDAPItems directory(&location);
        const ConnectionScope connection(directory, nullptr);
        EXPECT_THAT(directory.Entries().Replace(DnOf("a.kra"), contents.data(),
                                                static_cast<std::uint32_t>(contents.size())),
                    test::IsDone());
    }
    static std::string DnOf(const std::string& name) { return "cn=" + name + "," + test::kSuffix; }
    int Exists(const std::string& name) { return FileExists(*work_, "<Work>\\" + name); }

    test::CleanOfflineFiles cleanKept_;
    DirectoryServer own_;
};

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

TEST_F(OfflineTest, TwoProcessesThatEditOneFileApartMeetInTheQueue) {
    Restart(2);
    Value();
    Away();
    auto first = Load();
    auto second = Load();
    first->WriteString("S", "K", "first");
    second->WriteString("S", "L", "second");
    EXPECT_TRUE(first->Release());
    EXPECT_TRUE(second->Release());
    Back();
    Restart(2);
    Value();
    EXPECT_EQ("[S]\r\nK=first\r\nL=second\r\n", Entry());
}

TEST_F(OfflineTest, SessionsOfSeveralThreadsMeetInTheQueue) {
    constexpr int kThreads = 4;
    constexpr int kEditsOfEach = 5;
    Restart(2);
    Value();
    Away();
    std::atomic<int> refused = 0;
    std::vector<std::thread> threads;
    for (int number = 0; number < kThreads; ++number) {
        threads.emplace_back([number, &refused] {
            for (int edit = 0; edit < kEditsOfEach; ++edit) {
                CDepots depots(kKey);
                DepotFileContext file("<Work>\\a.kra", depots);
                file.WriteString("S", "T" + std::to_string(number), std::to_string(edit));
                if (!file.Release()) ++refused;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(0, refused);
    ASSERT_EQ(1u, WaitingEdits().size());
    Back();
    Restart(2);
    for (int number = 0; number < kThreads; ++number) {
        EXPECT_EQ(std::to_string(kEditsOfEach - 1), Value("T" + std::to_string(number)));
    }
    EXPECT_THAT(RecoveredFiles(), IsEmpty());
}

TEST_F(OfflineTest, AServerThatIsLostBetweenLoadAndStoreHasTheEditWait) {
    const auto file = Load();
    file->WriteString("S", "K", "new");
    Away();
    EXPECT_TRUE(file->Release());
    EXPECT_EQ(1u, WaitingEdits().size());
    EXPECT_THAT(boxes_.Boxes(), IsEmpty());
    Back();
    EXPECT_EQ("new", Value());
    EXPECT_EQ("[S]\r\nK=new\r\nL=old\r\n", Entry());
}

TEST_F(OfflineTest, AServerThatIsLostBeforeItAnswersHasTheKeptFileRead) {
    test::Relay relay(own_.Port());
    Define(relay.Port(), test::kSuffix);
    EXPECT_EQ("old", Value());
    for (const int request : {1, 2}) {
        SCOPED_TRACE(request);
        relay.Disturb({.dropBeforeRequest = request});
        const auto file = Load();
        EXPECT_EQ(0u, file->FetchCode());
        EXPECT_EQ("old", file->ReadString("S", "K", "(none)", 100));
    }
    EXPECT_THAT(boxes_.Boxes(), IsEmpty());
}

TEST_F(OfflineTest, WaitingEditsAreStoredInWindows) {
    constexpr int kFiles = 40;
    for (int number = 0; number < kFiles; ++number) {
        own_.AddFile("f" + std::to_string(number) + ".kra", test::kSuffix, kOld);
        Load("f" + std::to_string(number) + ".kra");
    }
    Away();
    for (int number = 0; number < kFiles; ++number) {
        const auto file = Load("f" + std::to_string(number) + ".kra");
        file->WriteString("S", "K", std::to_string(number));
        EXPECT_TRUE(file->Release());
    }
    ASSERT_EQ(std::size_t{kFiles}, WaitingEdits().size());
    Back();
    Restart();
    // What counts is how often an answer is waited for before the next request is sent.
    own_.Mark();
    Value();
    EXPECT_THAT(WaitingEdits(), IsEmpty());
    for (int number = 0; number < kFiles; ++number) {
        EXPECT_EQ("[S]\r\nK=" + std::to_string(number) + "\r\nL=old\r\n",
                  Entry("f" + std::to_string(number) + ".kra"));
    }
    EXPECT_THAT(boxes_.Boxes(), IsEmpty());
}

}  // namespace
}  // namespace depot
