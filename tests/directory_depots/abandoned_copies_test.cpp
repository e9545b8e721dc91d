// Working copies of processes that were ended from outside.
#include "model/abandoned_copies.h"

#include "directory_depots/depot_fixture.h"
#include "model/working_copy_journal.h"
#include "model/working_copy_record.h"
#include "platform/checksum.h"
#include "platform/local_file.h"
#include "platform/private_file.h"
#include "platform/text.h"
#include "support/child_process.h"
#include "support/import_patch.h"

namespace depot {
namespace {

using test::Arguments;
using test::ChildProcess;
using test::FileBytes;
using test::RecoveredFiles;
using test::Signal;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

constexpr char kKey[] = "Software\\DepotTests\\Directory";
constexpr char kReady[] = "DepotTests - loaded";
constexpr char kGo[] = "DepotTests - sweep";
constexpr char kOld[] = "[S]\r\nK=old\r\n";
constexpr char kNew[] = "[S]\r\nK=new\r\n";

std::string TempFolder() {
    char folder[MAX_PATH] = {};
    const DWORD length = GetTempPathA(sizeof(folder), folder);
    return std::string(folder, length - 1);
}

// The journals of other processes, or of this one.
std::vector<std::string> Journals(bool own = false) {
    const std::string ownStart = WorkingCopyJournalName(GetCurrentProcessId(), 0).substr(0, 19);
    std::vector<std::string> journals = test::FilesIn(TempFolder(), "DepotIntr-*");
    std::erase_if(journals, [&](const std::string& path) {
        return (path.find(ownStart) != std::string::npos) != own;
    });
    return journals;
}

// The bytes of this process's own journal, which is open.
std::string OwnJournal() {
    const std::vector<std::string> own = Journals(true);
    if (own.size() != 1) return {};
    const UniqueHandle file = OwnFile(CreateFileA(
        own.front().c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
        nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
    std::string bytes(1 << 20, '\0');
    DWORD read = 0;
    ReadFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &read, nullptr);
    return bytes.substr(0, read);
}

// Loads the files that are named, changes those with a "+" before their names, and waits for its
// end.
int LoadAndWait(const Arguments& arguments) {
    CDepots depots(kKey);
    std::vector<std::unique_ptr<DepotFileContext>> files;
    for (const std::string& argument : arguments) {
        const bool changes = argument.front() == '+';
        files.push_back(std::make_unique<DepotFileContext>(
            "<Work>\\" + argument.substr(changes ? 1 : 0), depots));
        if (changes) files.back()->WriteString("S", "K", "new");
    }
    Signal(kReady).Set();
    Sleep(INFINITE);
    return 0;
}
const test::RoleRegistration loadRole("load-and-wait", &LoadAndWait);

// Uses a file as every session does.
int LoadAndRelease(const Arguments& arguments) {
    CDepots depots(kKey);
    DepotFileContext file("<Work>\\" + arguments.at(0), depots);
    const bool loaded = !file.localPath.empty();
    file.Release();
    return loaded ? 0 : 1;
}
const test::RoleRegistration releaseRole("load-and-release", &LoadAndRelease);

int SweepAtTheSignal(const Arguments&) {
    if (!Signal(kGo).Wait()) return 1;
    SweepAbandonedCopies(TempFolder());
    return 0;
}
const test::RoleRegistration sweepRole("sweep", &SweepAtTheSignal);

class AbandonedCopiesTest : public test::DepotFixture {
protected:
    AbandonedCopiesTest() {
        RemoveJournals();
        server_.AddFile("a.kra", base_, kOld);
        server_.AddFile("b.kra", base_, kOld);
    }
    ~AbandonedCopiesTest() override { RemoveJournals(); }

    static void RemoveJournals() {
        for (const std::string& path : Journals()) ::DeleteFileA(path.c_str());
    }

    // A process with these files, once it has them.
    static std::unique_ptr<ChildProcess> Start(const Arguments& files) {
        const Signal ready(kReady);
        auto process = std::make_unique<ChildProcess>("load-and-wait", files);
        EXPECT_TRUE(ready.Wait());
        return process;
    }

    // Leaves the working copies of a process that was ended.
    static void Abandon(const Arguments& files) { Start(files)->Kill(); }

    static void Sweep() { SweepAbandonedCopies(TempFolder()); }

    // A file of the temporary folder, and a journal of nobody's that holds these bytes.
    std::string MakeTemp(const std::string& name, const std::string& bytes) const {
        const std::string path = TempFolder() + "\\" + name;
        return WriteLocalFile(path, bytes.data(), static_cast<std::uint32_t>(bytes.size())) ? path
                                                                                            : "";
    }
    static std::string MakeJournal(const std::string& bytes, unsigned number = 1) {
        const std::string path = TempFolder() + "\\" + WorkingCopyJournalName(1, number);
        const UniqueHandle file = CreatePrivateFile(path, GENERIC_WRITE, 0);
        DWORD written = 0;
        WriteFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
        return path;
    }
    static std::string RecordOf(const std::string& file, const std::string& fetched) {
        const WorkingCopyRecordBytes bytes =
            EncodeWorkingCopy({file, "a.kra", "server:389", "cn=a.kra", fetched.size(),
                               ChecksumOf(fetched.data(), fetched.size())});
        return std::string(bytes.begin(), bytes.end());
    }
};

TEST_F(AbandonedCopiesTest, ChangedCopyIsRecoveredAndUnchangedOneDeleted) {
    Abandon({"+a.kra", "b.kra"});
    ASSERT_THAT(test::WorkingCopies(), SizeIs(2));
    Sweep();
    ASSERT_THAT(RecoveredFiles(), SizeIs(1));
    EXPECT_EQ(kNew, FileBytes(RecoveredFiles().front()));
    EXPECT_THAT(RecoveredFiles().front(), HasSubstr("\\a 20"));
    EXPECT_THAT(RecoveredFiles().front(), EndsWith(" (1).kra"));
    EXPECT_THAT(test::WorkingCopies(), IsEmpty());
    EXPECT_THAT(Journals(), IsEmpty());
    EXPECT_THAT(boxes_.Boxes(), IsEmpty());
    EXPECT_EQ(kOld, Stored("a.kra"));
}

TEST_F(AbandonedCopiesTest, NextProcessThatLoadsAFileSweeps) {
    Abandon({"+a.kra"});
    EXPECT_EQ(0, ChildProcess("load-and-release", {"b.kra"}).ExitCode());
    ASSERT_THAT(RecoveredFiles(), SizeIs(1));
    EXPECT_EQ(kNew, FileBytes(RecoveredFiles().front()));
    EXPECT_THAT(test::WorkingCopies(), IsEmpty());
    EXPECT_THAT(Journals(), IsEmpty());
}

TEST_F(AbandonedCopiesTest, CopyOfALivingProcessStays) {
    const auto process = Start({"+a.kra"});
    const auto own = Load("b.kra");
    Sweep();
    EXPECT_THAT(test::WorkingCopies(), SizeIs(2));
    EXPECT_THAT(RecoveredFiles(), IsEmpty());
    process->Kill();
    Sweep();
    EXPECT_THAT(test::WorkingCopies(), ElementsAre(own->localPath));
    EXPECT_THAT(RecoveredFiles(), SizeIs(1));
}

TEST_F(AbandonedCopiesTest, ReleasedCopiesLeaveNoJournalBehind) {
    const auto process = Start({"a.kra"});
    EXPECT_THAT(Journals(), SizeIs(1));
    EXPECT_EQ(0, ChildProcess("load-and-release", {"b.kra"}).ExitCode());
    EXPECT_THAT(Journals(), SizeIs(1));
    process->Kill();
    EXPECT_THAT(Journals(), SizeIs(1));
}

TEST_F(AbandonedCopiesTest, ProcessEndedWhileItFetchesLeavesNothing) {
    const std::string copy = MakeTemp("lda1.tmp", "");
    const std::string journal = MakeJournal(RecordOf("lda1.tmp", ""));
    Sweep();
    EXPECT_FALSE(test::Exists(copy));
    EXPECT_FALSE(test::Exists(journal));
    EXPECT_THAT(RecoveredFiles(), IsEmpty());
}

TEST_F(AbandonedCopiesTest, TemporaryFileOfAnotherProgramStays) {
    const std::string foreign = MakeTemp("lda1234.tmp", "foreign");
    const std::string journal = MakeJournal(std::string(kWorkingCopyRecordBytes, '\0'));
    Sweep();
    EXPECT_EQ("foreign", FileBytes(foreign));
    EXPECT_FALSE(test::Exists(journal));
    EXPECT_THAT(RecoveredFiles(), IsEmpty());
}

TEST_F(AbandonedCopiesTest, DamagedRecordIsNotBelievedAndItsJournalStays) {
    const std::string copy = MakeTemp("lda1.tmp", kNew);
    for (const std::size_t cut : {std::size_t{8}, kWorkingCopyRecordBytes / 2}) {
        std::string record = RecordOf("lda1.tmp", kOld);
        record[cut] = static_cast<char>(record[cut] ^ 1);
        const std::string damaged = MakeJournal(record, 1);
        const std::string torn = MakeJournal(RecordOf("lda1.tmp", kOld).substr(0, cut), 2);
        Sweep();
        EXPECT_TRUE(test::Exists(damaged));
        EXPECT_TRUE(test::Exists(torn));
        RemoveJournals();
    }
    EXPECT_EQ(kNew, FileBytes(copy));
    EXPECT_THAT(RecoveredFiles(), IsEmpty());
}

TEST_F(AbandonedCopiesTest, RecordsBesideADamagedOneAreSweptOnce) {
    MakeTemp("lda1.tmp", kNew);
    std::string damaged = RecordOf("lda2.tmp", kOld);
    damaged[100] = 'x';
    const std::string journal = MakeJournal(damaged + RecordOf("lda1.tmp", kOld));
    Sweep();
    EXPECT_THAT(RecoveredFiles(), SizeIs(1));
    // Another program's file of that name.
    const std::string later = MakeTemp("lda1.tmp", "later");
    Sweep();
    EXPECT_THAT(RecoveredFiles(), SizeIs(1));
    EXPECT_EQ("later", FileBytes(later));
    EXPECT_TRUE(test::Exists(journal));
}

BOOL WINAPI ShowNoOwner(HANDLE, SECURITY_INFORMATION, PSECURITY_DESCRIPTOR, DWORD, LPDWORD) {
    SetLastError(ERROR_ACCESS_DENIED);
    return FALSE;
}

TEST_F(AbandonedCopiesTest, JournalOfAnUnknownProcessIsNotBelieved) {
    const std::string copy = MakeTemp("lda1.tmp", kNew);
    const std::string journal = MakeJournal(RecordOf("lda1.tmp", kOld));
    const test::ImportPatch<decltype(&GetKernelObjectSecurity)> owners("GetKernelObjectSecurity",
                                                                       &ShowNoOwner);
    ASSERT_TRUE(owners.IsInPlace());
    Sweep();
    EXPECT_EQ(kNew, FileBytes(copy));
    EXPECT_TRUE(test::Exists(journal));
}

TEST_F(AbandonedCopiesTest, FilesOfOtherNamesAreNoJournals) {
    MakeTemp("lda1.tmp", kNew);
    const std::string other = MakeTemp("DepotIntr-1.copies", RecordOf("lda1.tmp", kOld));
    Sweep();
    EXPECT_TRUE(test::Exists(other));
    EXPECT_THAT(test::WorkingCopies(), SizeIs(1));
}

TEST_F(AbandonedCopiesTest, CopyThatSomebodyHasOpenStaysForTheNextTime) {
    Abandon({"+a.kra"});
    ASSERT_THAT(test::WorkingCopies(), SizeIs(1));
    {
        const UniqueHandle reader = OwnFile(
            CreateFileA(test::WorkingCopies().front().c_str(), GENERIC_READ, FILE_SHARE_READ,
                        nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
        ASSERT_TRUE(reader);
        Sweep();
    }
    EXPECT_THAT(RecoveredFiles(), IsEmpty());
    EXPECT_THAT(test::WorkingCopies(), SizeIs(1));
    Sweep();
    EXPECT_THAT(RecoveredFiles(), SizeIs(1));
    EXPECT_THAT(Journals(), IsEmpty());
}

TEST_F(AbandonedCopiesTest, FolderInTheCopysPlaceStays) {
    const std::string folder = TempFolder() + "\\lda1.tmp";
    ASSERT_TRUE(CreateDirectoryA(folder.c_str(), nullptr));
    MakeJournal(RecordOf("lda1.tmp", kOld));
    Sweep();
    EXPECT_TRUE(RemoveDirectoryA(folder.c_str()));
    EXPECT_THAT(RecoveredFiles(), IsEmpty());
}

TEST_F(AbandonedCopiesTest, NameThatALivingProcessUsesByNowIsLeftToIt) {
    const auto own = Load("a.kra");
    own->WriteString("S", "K", "new");
    const std::string journal =
        MakeJournal(RecordOf(own->localPath.substr(own->localPath.rfind('\\') + 1), kOld));
    Sweep();
    EXPECT_EQ(kNew, FileBytes(own->localPath));
    EXPECT_THAT(RecoveredFiles(), IsEmpty());
    EXPECT_FALSE(test::Exists(journal));
}

TEST_F(AbandonedCopiesTest, TwoProcessesAtOnceRecoverEachCopyOnce) {
    Abandon({"+a.kra", "+b.kra"});
    Abandon({"+a.kra"});
    const Signal go(kGo);
    std::vector<std::unique_ptr<ChildProcess>> processes;
    for (int number = 0; number < 4; ++number) {
        processes.push_back(std::make_unique<ChildProcess>("sweep"));
    }
    go.Set();
    for (const auto& process : processes) EXPECT_EQ(0, process->ExitCode());
    EXPECT_THAT(RecoveredFiles(), SizeIs(3));
    EXPECT_THAT(test::WorkingCopies(), IsEmpty());
    EXPECT_THAT(Journals(), IsEmpty());
}

using WriteBytes = decltype(&WriteFile);

BOOL WINAPI FillTheDisk(HANDLE, const void*, DWORD, DWORD* written, OVERLAPPED*) {
    *written = 0;
    SetLastError(ERROR_DISK_FULL);
    return FALSE;
}

TEST_F(AbandonedCopiesTest, CopyThatCannotBeRecoveredStaysForTheNextTime) {
    Abandon({"+a.kra"});
    {
        const test::ImportPatch<WriteBytes> writing("WriteFile", &FillTheDisk);
        ASSERT_TRUE(writing.IsInPlace());
        Sweep();
    }
    EXPECT_THAT(RecoveredFiles(), IsEmpty());
    ASSERT_THAT(test::WorkingCopies(), SizeIs(1));
    EXPECT_EQ(kNew, FileBytes(test::WorkingCopies().front()));
    Sweep();
    ASSERT_THAT(RecoveredFiles(), SizeIs(1));
    EXPECT_EQ(kNew, FileBytes(RecoveredFiles().front()));
    EXPECT_THAT(Journals(), IsEmpty());
}

TEST_F(AbandonedCopiesTest, CopyThatIsToStayIsNotSwept) {
    const std::string copy = MakeTemp("lda1.tmp", kNew);
    NoteWorkingCopy(copy, {"a.kra", "server:389", "cn=a.kra"}, kOld, sizeof(kOld) - 1);
    ForgetWorkingCopy(copy);
    Sweep();
    EXPECT_EQ(kNew, FileBytes(copy));
}

// Finds the record of one copy, which refers to `bytes`: copies of earlier tests that had to stay
// may stand before it.
std::optional<WorkingCopyRecord> FindRecord(const std::string& path, const std::string& journal,
                                            WorkingCopyRecordBytes& bytes) {
    for (std::size_t at = 0; at + bytes.size() <= journal.size(); at += bytes.size()) {
        std::copy_n(journal.begin() + static_cast<std::ptrdiff_t>(at), bytes.size(), bytes.begin());
        const auto record = DecodeWorkingCopy(bytes);
        if (record && path.ends_with("\\" + std::string(record->file))) return record;
    }
    return std::nullopt;
}

TEST_F(AbandonedCopiesTest, JournalNamesTheEntryOfEachCopy) {
    const auto own = Load("a.kra");
    WorkingCopyRecordBytes bytes = {};
    const auto record = FindRecord(own->localPath, OwnJournal(), bytes);
    ASSERT_TRUE(record);
    EXPECT_EQ("a.kra", record->name);
    EXPECT_EQ("127.0.0.1:" + std::to_string(server_.Port()), record->server);
    EXPECT_EQ(ToLower(Dn("a.kra")), ToLower(record->dn));
    EXPECT_EQ(sizeof(kOld) - 1, record->length);
}

TEST_F(AbandonedCopiesTest, ReleasedCopysRecordIsUsedAgain) {
    std::vector<std::unique_ptr<DepotFileContext>> files;
    for (int number = 0; number < 5; ++number) files.push_back(Load("a.kra"));
    const std::size_t size = OwnJournal().size();
    EXPECT_LE(5 * kWorkingCopyRecordBytes, size);
    for (int round = 0; round < 3; ++round) {
        files[1]->Release();
        files[3]->Release();
        files[1] = Load("b.kra");
        files[3] = Load("b.kra");
    }
    EXPECT_EQ(size, OwnJournal().size());
}

}  // namespace
}  // namespace depot
