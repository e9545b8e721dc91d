#include "model/recovered_files.h"

#include <thread>

#include "directory_depots/depot_fixture.h"
#include "platform/handles.h"
#include "platform/paths.h"
#include "support/full_disk.h"

namespace depot {
namespace {

using test::DirectoryServer;
using test::FileBytes;
using test::RecoveredFiles;
using testing::EndsWith;
using testing::IsEmpty;
using testing::SizeIs;

constexpr char kOld[] = "[S]\r\nK=old\r\n";
constexpr char kNew[] = "[S]\r\nK=new\r\n";

// The server that ends during a modification.
DirectoryServer* endingServer = nullptr;
decltype(DirectoryClient::ldap_modify_s) realModify = nullptr;

ULONG LDAPAPI EndServerThenModify(LDAP* connection, char* dn, LDAPModA** changes) {
    endingServer->Stop();
    return realModify(connection, dn, changes);
}

ULONG LDAPAPI FailSearch(LDAP*, char*, ULONG, char*, char**, ULONG, LDAPMessage** result) {
    *result = nullptr;
    return LDAP_BUSY;
}

using WriteBytes = decltype(&WriteFile);
WriteBytes genuineWrite = nullptr;

// The file's name with every digit as 0.
std::string Shape(const std::string& path) {
    std::string name = NamePart(path);
    for (char& letter : name) {
        if (letter >= '0' && letter <= '9') letter = '0';
    }
    return name;
}

// A changed copy of an entry on its way back.
class RecoveryTest : public test::DepotFixture {
protected:
    RecoveryTest() { server_.AddFile("a.kra", base_, kOld); }

    // Checks that one box says why, and names the path.
    void ExpectTold(const std::string& path) {
        ASSERT_THAT(boxes_.Texts(), SizeIs(1));
        EXPECT_THAT(boxes_.Texts().front(), testing::HasSubstr("\"a.kra\""));
        EXPECT_THAT(boxes_.Texts().front(), EndsWith("\n" + path));
    }
};

TEST_F(RecoveryTest, ServerGoneBeforeTheReleaseLeavesTheBytesRecovered) {
    const auto file = LoadChanged();
    server_.Stop();
    EXPECT_FALSE(file->Release());
    server_.Continue();
    ExpectRecovered(kNew);
    EXPECT_THAT(boxes_.Texts().back(), testing::StartsWith("LDAP: "));
    EXPECT_THAT(test::WorkingCopies(), IsEmpty());
    EXPECT_EQ(kOld, Stored("a.kra"));
}

TEST_F(RecoveryTest, ServerGoneDuringTheUploadLeavesTheBytesRecovered) {
    const auto file = LoadChanged();
    endingServer = &server_;
    realModify = Directory().Client().ldap_modify_s;
    Directory().Client().ldap_modify_s = &EndServerThenModify;
    EXPECT_FALSE(file->Release());
    server_.Continue();
    ExpectRecovered(kNew);
    EXPECT_THAT(test::WorkingCopies(), IsEmpty());
}

TEST_F(RecoveryTest, MissingRightsLeaveTheBytesRecovered) {
    Define(server_.Port(), base_, test::kReader, test::kReaderPassword);
    EXPECT_FALSE(LoadChanged()->Release());
    ExpectRecovered(kNew);
    EXPECT_THAT(boxes_.Texts().back(),
                testing::StartsWith(test::MessageFor(LDAP_INSUFFICIENT_RIGHTS)));
    EXPECT_EQ(kOld, Stored("a.kra"));
}

TEST_F(RecoveryTest, DeletedEntryLeavesTheBytesRecovered) {
    const auto file = LoadChanged();
    server_.Apply("dn: " + Dn("a.kra") + "\nchangetype: delete\n");
    EXPECT_FALSE(file->Release());
    ExpectRecovered(kNew);
    EXPECT_THAT(boxes_.Texts().back(), testing::StartsWith(test::MessageFor(LDAP_NO_SUCH_OBJECT)));
}

TEST_F(RecoveryTest, EntryThatNeverWasLeavesTheBytesRecovered) {
    const auto file = LoadChanged("never.kra");
    EXPECT_EQ("new", file->ReadString("S", "K", "", 100));
    EXPECT_FALSE(file->Release());
    ExpectRecovered(kNew);
}

TEST_F(RecoveryTest, SizeLimitOfTheServerLeavesTheBytesRecovered) {
    DirectoryServer small("global sockbuf_max_incoming_auth 20000");
    small.AddFile("a.kra", test::kSuffix, kOld);
    Define(small.Port(), test::kSuffix);
    const auto file = Load();
    const std::string large(100'000, 'l');
    file->WriteString("S", "K", "new");
    ASSERT_EQ(1, CopyFileA(test::ScratchFolder().MakeFile("large", large).c_str(),
                           file->localPath.c_str(), FALSE));
    EXPECT_FALSE(file->Release());
    ExpectRecovered(large);
}

TEST_F(RecoveryTest, DeletedWorkingCopyLeavesTheEntry) {
    const auto file = LoadChanged();
    const std::string localPath = file->localPath;
    ::DeleteFileA(localPath.c_str());
    const test::NoPauses pauses;
    server_.Mark();
    EXPECT_FALSE(file->Release());
    // What is gone does not come back.
    EXPECT_EQ(0, pauses.Count());
    EXPECT_EQ("", server_.Log());
    EXPECT_EQ(kOld, Stored("a.kra"));
    EXPECT_THAT(RecoveredFiles(), IsEmpty());
    ExpectTold(localPath);
}

TEST_F(RecoveryTest, WorkingCopyThatAWriteMakesAnewIsRecoveredAndLeavesTheEntry) {
    server_.AddFile("b.kra", base_, "[S]\r\nK=old\r\nL=keep\r\n");
    const auto file = Load("b.kra");
    ::DeleteFileA(file->localPath.c_str());
    file->WriteString("S", "K", "new");
    EXPECT_EQ("new", file->ReadString("S", "K", "", 100));
    EXPECT_FALSE(file->Release());
    ExpectRecovered(kNew);
    EXPECT_EQ("[S]\r\nK=old\r\nL=keep\r\n", Stored("b.kra"));
}

// Somebody who holds a file as scanners do.
class Holder {
public:
    explicit Holder(const std::string& path)
        : file_(CreateFileA(path.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                            FILE_ATTRIBUTE_NORMAL, nullptr)) {
        EXPECT_TRUE(file_.get() != INVALID_HANDLE_VALUE);
    }
    void LetGoAfter(DWORD milliseconds) {
        thread_ = std::thread([this, milliseconds] {
            Sleep(milliseconds);
            file_.reset();
        });
    }
    ~Holder() {
        if (thread_.joinable()) thread_.join();
    }
    Holder(const Holder&) = delete;
    Holder& operator=(const Holder&) = delete;

private:
    UniqueHandle file_;
    std::thread thread_;
};

TEST_F(RecoveryTest, WorkingCopyHeldForAMomentIsStored) {
    const auto file = LoadChanged();
    const std::string localPath = file->localPath;
    Holder holder(localPath);
    holder.LetGoAfter(1500);
    EXPECT_TRUE(file->Release());
    EXPECT_EQ(kNew, Stored("a.kra"));
    EXPECT_FALSE(test::Exists(localPath));
    EXPECT_THAT(RecoveredFiles(), IsEmpty());
    EXPECT_THAT(boxes_.Boxes(), IsEmpty());
}

TEST_F(RecoveryTest, WorkingCopyHeldForGoodStaysAndLeavesTheEntry) {
    const auto file = LoadChanged();
    const std::string localPath = file->localPath;
    {
        const Holder holder(localPath);
        const test::NoPauses pauses;
        server_.Mark();
        EXPECT_FALSE(file->Release());
        EXPECT_EQ(3000, (pauses.Count() + 1) * 50);
        EXPECT_EQ("", server_.Log());
    }
    EXPECT_EQ(kOld, Stored("a.kra"));
    EXPECT_EQ(kNew, FileBytes(localPath));
    EXPECT_THAT(RecoveredFiles(), IsEmpty());
    ExpectTold(localPath);
}

TEST_F(RecoveryTest, UnchangedWorkingCopyHeldForAMomentIsDeleted) {
    const auto file = Load();
    const std::string localPath = file->localPath;
    Holder holder(localPath);
    holder.LetGoAfter(300);
    EXPECT_TRUE(file->Release());
    EXPECT_FALSE(test::Exists(localPath));
}

TEST_F(RecoveryTest, WriteToAWorkingCopyHeldForAMomentIsStored) {
    const auto file = Load();
    {
        Holder holder(file->localPath);
        holder.LetGoAfter(300);
        file->WriteString("S", "K", "new");
    }
    EXPECT_TRUE(file->Release());
    EXPECT_EQ(kNew, Stored("a.kra"));
}

TEST_F(RecoveryTest, WritesToAWorkingCopyHeldForGoodWaitOnceAndAreRecovered) {
    const auto file = Load();
    {
        const Holder holder(file->localPath);
        const test::NoPauses pauses;
        for (const char* value : {"one", "two", "new"}) file->WriteString("S", "K", value);
        EXPECT_EQ(3000, (pauses.Count() + 1) * 50);
    }
    EXPECT_FALSE(file->Release());
    ExpectRecovered(kNew);
    EXPECT_EQ(kOld, Stored("a.kra"));
}

int refusedCreations = 0;
decltype(&_lcreat) realCreat = nullptr;

HFILE WINAPI RefuseFirstCreations(LPCSTR path, int attributes) {
    if (refusedCreations-- <= 0) return realCreat(path, attributes);
    SetLastError(ERROR_SHARING_VIOLATION);
    return HFILE_ERROR;
}

TEST_F(RecoveryTest, NewWorkingCopyThatIsLookedAtAtOnceIsFetched) {
    const test::ImportPatch<decltype(&_lcreat)> creation("_lcreat", &RefuseFirstCreations);
    ASSERT_TRUE(creation.IsInPlace());
    realCreat = creation.Genuine();
    refusedCreations = 3;
    EXPECT_EQ("old", Load()->ReadString("S", "K", "", 100));
}

TEST_F(RecoveryTest, FailedFetchHasTheEntrysBytesRecoveredBeforeTheyAreReplaced) {
    Choose();
    const auto realSearch = Directory().Client().ldap_search_s;
    Directory().Client().ldap_search_s = &FailSearch;
    const auto file = LoadChanged();
    Directory().Client().ldap_search_s = realSearch;
    EXPECT_TRUE(file->Release());
    ExpectRecovered(kOld);
    EXPECT_THAT(boxes_.Texts().back(),
                testing::StartsWith("\"a.kra\" could not be read when it was opened. Your changes "
                                    "took the place of what the directory held, which is kept "
                                    "here:\n"));
    EXPECT_EQ(kNew, Stored("a.kra"));
}

TEST_F(RecoveryTest, EntryThatWasMissingAtTheLoadHasItsBytesRecoveredBeforeTheyAreReplaced) {
    const auto file = Load("late.kra");
    EXPECT_THAT(file->FetchCode(), test::IsCode(LDAP_NO_SUCH_OBJECT));
    file->WriteString("S", "K", "new");
    server_.AddFile("late.kra", base_, kOld);
    EXPECT_TRUE(file->Release());
    ASSERT_THAT(RecoveredFiles(), SizeIs(1));
    EXPECT_EQ(kOld, FileBytes(RecoveredFiles().front()));
    EXPECT_THAT(boxes_.Texts().back(),
                testing::StartsWith("\"late.kra\" was not found when it was opened. "));
    EXPECT_THAT(boxes_.Texts().back(), EndsWith("\n" + RecoveredFiles().front()));
    EXPECT_EQ(kNew, Stored("late.kra"));
}

TEST_F(RecoveryTest, FailedFetchThatStillFailsLeavesTheEntryAndRecoversTheEdit) {
    Choose();
    Directory().Client().ldap_search_s = &FailSearch;
    EXPECT_FALSE(LoadChanged()->Release());
    ExpectRecovered(kNew);
    EXPECT_EQ(kOld, Stored("a.kra"));
}

TEST_F(RecoveryTest, FailedFetchOfAnUnchangedFileLeavesEverything) {
    Choose();
    Directory().Client().ldap_search_s = &FailSearch;
    EXPECT_TRUE(Load()->Release());
    EXPECT_THAT(RecoveredFiles(), IsEmpty());
    EXPECT_THAT(test::WorkingCopies(), IsEmpty());
    EXPECT_EQ(kOld, Stored("a.kra"));
}

TEST_F(RecoveryTest, WorkingCopyStaysWhenNothingCanBeRecovered) {
    // A file in the folder's place.
    const std::string place = test::RecoveredFolder();
    RemoveDirectoryA(place.c_str());
    KeepRecovered("a", "", 0);
    for (const std::string& path : RecoveredFiles()) ::DeleteFileA(path.c_str());
    ASSERT_TRUE(RemoveDirectoryA(place.c_str()));
    {
        const UniqueHandle blocker(CreateFileA(place.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                               FILE_ATTRIBUTE_NORMAL, nullptr));
    }
    const auto file = LoadChanged();
    const std::string localPath = file->localPath;
    server_.Stop();
    EXPECT_FALSE(file->Release());
    server_.Continue();
    EXPECT_EQ(kNew, FileBytes(localPath));
    EXPECT_THAT(boxes_.Texts().back(), EndsWith(localPath));
    ::DeleteFileA(place.c_str());
}

TEST_F(RecoveryTest, RecoveredFilesAreNamedAfterTheFileWithTimeAndNumber) {
    EXPECT_EQ("office 0000-00-00 00-00-00 (0).kra", Shape(KeepRecovered("office.kra", "1", 1)));
    EXPECT_EQ("plain 0000-00-00 00-00-00 (0)", Shape(KeepRecovered("plain", "1", 1)));
    for (const char* unsafe : {"", "..", "a\\b", "con", "a:b"}) {
        EXPECT_EQ("file 0000-00-00 00-00-00 (0)", Shape(KeepRecovered(unsafe, "1", 1))) << unsafe;
    }
    const std::string longPath = KeepRecovered(std::string(300, 'n') + ".kra", "long", 4);
    EXPECT_EQ("long", FileBytes(longPath));
    EXPECT_LT(longPath.size(), 260u);
}

TEST_F(RecoveryTest, RecoveredFilesOfOneNameNeverReplaceEachOther) {
    for (int number = 0; number < 5; ++number) {
        const std::string bytes = std::to_string(number);
        EXPECT_EQ(bytes, FileBytes(KeepRecovered("a.kra", bytes.data(), bytes.size())));
    }
    EXPECT_THAT(RecoveredFiles(), SizeIs(5));
}

BOOL WINAPI WriteHalf(HANDLE file, const void* bytes, DWORD length, DWORD* written, OVERLAPPED*) {
    return genuineWrite(file, bytes, length / 2, written, nullptr);
}

BOOL WINAPI WriteNothing(HANDLE, const void*, DWORD, DWORD* written, OVERLAPPED*) {
    *written = 0;
    SetLastError(ERROR_DISK_FULL);
    return FALSE;
}

BOOL WINAPI FailToFlush(HANDLE) {
    SetLastError(ERROR_DISK_FULL);
    return FALSE;
}

TEST_F(RecoveryTest, BytesThatDoNotReachTheDiskLeaveTheWorkingCopy) {
    const auto file = LoadChanged();
    const std::string localPath = file->localPath;
    const test::ImportPatch<decltype(&FlushFileBuffers)> flush("FlushFileBuffers", &FailToFlush);
    ASSERT_TRUE(flush.IsInPlace());
    server_.Stop();
    EXPECT_FALSE(file->Release());
    server_.Continue();
    EXPECT_THAT(RecoveredFiles(), IsEmpty());
    EXPECT_EQ(kNew, FileBytes(localPath));
}

TEST_F(RecoveryTest, BytesThatDoNotFitTheDiskLeaveNoFile) {
    for (const WriteBytes failing : {&WriteHalf, &WriteNothing}) {
        const test::ImportPatch<WriteBytes> writing("WriteFile", failing);
        ASSERT_TRUE(writing.IsInPlace());
        genuineWrite = writing.Genuine();
        EXPECT_EQ("", KeepRecovered("a.kra", "bytes", 5));
        EXPECT_THAT(RecoveredFiles(), IsEmpty());
        EXPECT_NE("", KeepRecovered("a.kra", "", 0));
        EXPECT_THAT(RecoveredFiles(), SizeIs(1));
        ::DeleteFileA(RecoveredFiles().front().c_str());
    }
}

}  // namespace
}  // namespace depot
