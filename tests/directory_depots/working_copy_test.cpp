#include "directory_depots/depot_fixture.h"
#include "model/directory_trees.h"
#include "platform/local_file.h"
#include "support/results.h"

namespace depot {
namespace {

using test::Fails;
using test::FileBytes;
using test::IsCode;
using test::IsDone;
using test::OperationCounts;
using testing::IsEmpty;
using testing::SizeIs;

constexpr char kBytes[] = "[S]\r\nK=v\r\n";

using WorkingCopyTest = test::DepotFixture;

TEST_F(WorkingCopyTest, FetchedCopyHoldsTheEntrysBytesExactly) {
    for (const std::string& bytes : {std::string("[S]\r\nK=v\r\n"), std::string("\0\x01\xFF\n", 4),
                                     std::string(" "), std::string(1024 * 1024, 'b')}) {
        static int number = 0;
        const std::string name = "f" + std::to_string(++number) + ".kra";
        server_.AddFile(name, base_, "x");
        ASSERT_THAT(Connected().ReplaceFileContents(Dn(name), bytes.data(),
                                                    static_cast<std::uint32_t>(bytes.size())),
                    IsDone());
        const auto file = Load(name);
        EXPECT_TRUE(bytes == FileBytes(file->localPath)) << bytes.size();
    }
}

TEST_F(WorkingCopyTest, NamesThatTheServerSpellsInItsOwnWayAreFetched) {
    const test::ScratchFolder folder;
    for (const char* name : {"b\xFCro.kra", "a b.kra", "a=b.kra", "a,b+c;d.kra", "#a.kra"}) {
        SCOPED_TRACE(name);
        ASSERT_THAT(UploadNewFile(Directory(), folder.MakeFile(name, kBytes), base_, true, nullptr),
                    IsDone());
        const auto file = Load(name);
        EXPECT_EQ(kBytes, FileBytes(file->localPath));
        file->WriteString("S", "K", "new");
        EXPECT_TRUE(file->Release());
        EXPECT_EQ("new", Load(name)->ReadString("S", "K", "", 100));
    }
    EXPECT_THAT(test::RecoveredFiles(), IsEmpty());
}

TEST_F(WorkingCopyTest, BaseThatIsWrittenWithBlanksHoldsTheSameFiles) {
    server_.AddFile("a.kra", base_, kBytes);
    std::string spaced = base_;
    for (std::size_t at = spaced.find(','); at != std::string::npos;
         at = spaced.find(',', at + 1)) {
        spaced.insert(at + 1, 1, ' ');
    }
    Define(server_.Port(), spaced);
    EXPECT_EQ(kBytes, FileBytes(Load()->localPath));
}

TEST_F(WorkingCopyTest, FileSystemPathStaysOneBesideADirectory) {
    const test::ScratchFolder folder;
    const std::string path = folder.At("new.kra");
    server_.Mark();
    {
        DepotFileContext file(path, *depots_);
        EXPECT_EQ(path, file.depotPath);
        EXPECT_EQ(path, file.localPath);
        EXPECT_FALSE(file.NeedsWorkingCopy());
        file.WriteString("S", "K", "v");
        EXPECT_TRUE(file.Release());
    }
    EXPECT_EQ("", server_.Log());
    EXPECT_EQ("[S]\r\nK=v\r\n", FileBytes(path));
    EXPECT_THAT(test::RecoveredFiles(), IsEmpty());
}

TEST_F(WorkingCopyTest, TwentyMegabytesPassBothWays) {
    test::DirectoryServer server("global sockbuf_max_incoming_auth 67108864");
    server.AddFile("a.kra", test::kSuffix, "x");
    Define(server.Port(), test::kSuffix);
    const std::string large(20 * 1024 * 1024, 'b');
    auto file = Load();
    ASSERT_TRUE(
        WriteLocalFile(file->localPath, large.data(), static_cast<std::uint32_t>(large.size())));
    file->changed = true;
    EXPECT_TRUE(file->Release());
    file = Load();
    EXPECT_TRUE(large == FileBytes(file->localPath));
}

TEST_F(WorkingCopyTest, EmptyContentsGiveAnExistingFileWithoutBytes) {
    server_.Apply("dn: " + Dn("a.kra") +
                  "\nobjectClass: quillonFileBinary\ncn: a.kra\nquillonFileContentsBinary:\n");
    const auto file = Load();
    EXPECT_TRUE(test::Exists(file->localPath));
    EXPECT_EQ("", FileBytes(file->localPath));
}

TEST_F(WorkingCopyTest, LoadIsOneBindAndOneSearch) {
    server_.AddFile("a.kra", base_, "x");
    server_.Mark();
    Load();
    EXPECT_EQ((OperationCounts{.binds = 1, .searches = 1}), server_.Counts());
    server_.Mark();
    Load();
    EXPECT_EQ((OperationCounts{.binds = 1, .searches = 1}), server_.Counts());
}

TEST_F(WorkingCopyTest, WriteBackIsOneBindAndOneModification) {
    server_.AddFile("a.kra", base_, "[S]\r\nK=old\r\n");
    const auto file = Load();
    file->WriteString("S", "K", "new");
    server_.Mark();
    EXPECT_TRUE(file->Release());
    EXPECT_EQ((OperationCounts{.binds = 1, .modifications = 1}), server_.Counts());
    EXPECT_EQ("[S]\r\nK=new\r\n", Stored("a.kra"));
    EXPECT_THAT(test::WorkingCopies(), IsEmpty());
    EXPECT_THAT(test::RecoveredFiles(), IsEmpty());
    EXPECT_THAT(boxes_.Boxes(), IsEmpty());
}

TEST_F(WorkingCopyTest, ReleaseOfAnUnchangedCopyContactsNoServer) {
    server_.AddFile("a.kra", base_, "[S]\r\nK=old\r\n");
    const auto file = Load();
    EXPECT_EQ("old", file->ReadString("S", "K", "", 100));
    // Somebody else's bytes stay, too.
    ASSERT_TRUE(WriteLocalFile(file->localPath, "other", 5));
    server_.Mark();
    EXPECT_TRUE(file->Release());
    EXPECT_EQ("", server_.Log());
    EXPECT_EQ("[S]\r\nK=old\r\n", Stored("a.kra"));
    EXPECT_THAT(test::WorkingCopies(), IsEmpty());
}

TEST_F(WorkingCopyTest, NoConnectionStaysOpenBetweenLoadAndRelease) {
    server_.AddFile("a.kra", base_, "x");
    server_.Mark();
    const auto file = Load();
    // The server notices the end of a connection a moment later.
    const auto count = [](const std::string& log, const std::string& word) {
        int found = 0;
        for (std::size_t at = log.find(word); at != std::string::npos; at = log.find(word, at + 1))
            ++found;
        return found;
    };
    std::string log;
    for (int attempt = 0; attempt < 100; ++attempt) {
        log = server_.Log();
        if (count(log, " closed") == 1) break;
        Sleep(20);
    }
    EXPECT_EQ(1, count(log, "ACCEPT")) << log;
    EXPECT_EQ(1, count(log, " closed")) << log;
    EXPECT_FALSE(Directory().IsConnected());
}

TEST_F(WorkingCopyTest, FetchWithoutAServerLeavesNoFile) {
    server_.AddFile("a.kra", base_, "x");
    Choose();
    server_.Stop();
    WorkingCopyOrigin origin;
    EXPECT_EQ("", FetchToLocal(Directory(), Dn("a.kra"), &origin));
    server_.Continue();
    EXPECT_NE(0u, origin.code);
    EXPECT_FALSE(origin.digest);
    EXPECT_THAT(test::WorkingCopies(), IsEmpty());
}

TEST_F(WorkingCopyTest, OpenConnectionStaysOpenOverFetchAndRelease) {
    server_.AddFile("a.kra", base_, kBytes);
    Choose();
    ASSERT_THAT(Directory().ConnectLocation(nullptr), IsDone());
    server_.Mark();
    const std::string copy = FetchToLocal(Directory(), Dn("a.kra"));
    EXPECT_EQ(kBytes, FileBytes(copy));
    EXPECT_TRUE(Directory().IsConnected());
    EXPECT_THAT(ReleaseLocal(Directory(), Dn("a.kra"), copy, true), IsDone());
    EXPECT_TRUE(Directory().IsConnected());
    EXPECT_EQ((OperationCounts{.searches = 1, .modifications = 1}), server_.Counts());
    EXPECT_FALSE(test::Exists(copy));
}

TEST_F(WorkingCopyTest, CopyIsDeletedWithAContextThatWasNotReleased) {
    server_.AddFile("a.kra", base_, "x");
    Choose();
    {
        const auto file = Load();
        EXPECT_THAT(test::WorkingCopies(), SizeIs(1));
        file->WriteString("S", "K", "v");
    }
    EXPECT_THAT(test::WorkingCopies(), IsEmpty());
    EXPECT_EQ("x", Stored("a.kra"));
}

TEST_F(WorkingCopyTest, SecondReleaseHasNothingLeftToStore) {
    server_.AddFile("a.kra", base_, "x");
    const auto file = Load();
    EXPECT_TRUE(file->Release());
    EXPECT_FALSE(file->Release());
    EXPECT_THAT(boxes_.Boxes(), IsEmpty());
}

TEST_F(WorkingCopyTest, ReleaseOfNoPathWithAChangeShowsTheParameterError) {
    std::string text = "junk";
    EXPECT_THAT(ReleaseLocal(Directory(), Dn("a.kra"), "", true, &text), Fails());
    EXPECT_THAT(Directory().LastError(), IsCode(LDAP_PARAM_ERROR));
    EXPECT_THAT(Directory().Connection().Shared().Block().Access()->lastError,
                IsCode(LDAP_PARAM_ERROR));
    EXPECT_EQ(test::MessageFor(LDAP_PARAM_ERROR), text);
    ASSERT_THAT(boxes_.Texts(), SizeIs(1));
    EXPECT_EQ(test::MessageFor(LDAP_PARAM_ERROR), boxes_.Texts().front());
    EXPECT_EQ("Quillon", boxes_.Boxes().front().caption);
    EXPECT_TRUE(boxes_.Boxes().front().hasErrorIcon);
}

TEST_F(WorkingCopyTest, ReleaseOfNoPathWithoutAChangeIsSilent) {
    std::string text = "junk";
    EXPECT_THAT(ReleaseLocal(Directory(), Dn("a.kra"), "", false, &text), Fails());
    EXPECT_EQ("junk", text);
    EXPECT_THAT(boxes_.Boxes(), IsEmpty());
}

TEST_F(WorkingCopyTest, NoTemporaryFolderGivesAFileWithoutValues) {
    server_.AddFile("a.kra", base_, "[S]\r\nK=v\r\n");
    Choose();
    char before[MAX_PATH] = {};
    GetEnvironmentVariableA("TMP", before, sizeof(before));
    SetEnvironmentVariableA("TMP", "C:\\no such folder");
    const auto file = Load();
    SetEnvironmentVariableA("TMP", before);
    EXPECT_EQ("", file->localPath);
    EXPECT_EQ("default", file->ReadString("S", "K", "default", 100));
    EXPECT_EQ("[S]\r\nK=v\r\n", Stored("a.kra"));
}

TEST_F(WorkingCopyTest, FullTemporaryFolderGivesAFileWithoutValuesAndKeepsTheEntry) {
    server_.AddFile("a.kra", base_, kBytes);
    Choose();
    const std::string full = server_.CrowdedFolder("lda");
    char before[MAX_PATH] = {};
    GetEnvironmentVariableA("TMP", before, sizeof(before));
    SetEnvironmentVariableA("TMP", full.c_str());
    const auto file = Load();
    SetEnvironmentVariableA("TMP", before);
    EXPECT_EQ("", file->localPath);
    EXPECT_EQ("default", file->ReadString("S", "K", "default", 100));
    EXPECT_THAT(boxes_.Boxes(), IsEmpty());
    // An edit has no place to go to, and its release says so.
    file->WriteString("S", "K", "new");
    EXPECT_FALSE(file->Release());
    EXPECT_EQ(test::MessageFor(LDAP_PARAM_ERROR), boxes_.Texts().back());
    EXPECT_EQ(kBytes, Stored("a.kra"));
    EXPECT_TRUE(test::Exists(full + "\\ldaffff.tmp"));
}

}  // namespace
}  // namespace depot
