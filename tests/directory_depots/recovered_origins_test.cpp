// What is noted of where recovered files come from.
#include "model/recovered_origins.h"

#include "directory/comparable_dn.h"
#include "directory_depots/depot_fixture.h"
#include "model/abandoned_copies.h"
#include "model/recovered_files.h"
#include "model/working_copy_record.h"
#include "offline/offline_location.h"
#include "platform/local_file.h"
#include "platform/paths.h"
#include "platform/private_file.h"
#include "support/offline_files.h"

namespace depot {
namespace {

using test::FileBytes;
using test::FilesIn;
using test::RecoveredFiles;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

constexpr char kOld[] = "[S]\r\nK=old\r\n";
constexpr char kNew[] = "[S]\r\nK=new\r\n";
constexpr char kTheirs[] = "[S]\r\nK=theirs\r\n";

std::string RecordsFolder() {
    return test::RecoveredFolder() + " records";
}

class RecoveredOriginsTest : public test::DepotFixture {
protected:
    RecoveredOriginsTest() {
        Use(server_, base_);
        SweepOrigins();
        server_.AddFile("a.kra", base_, kOld);
    }
    ~RecoveredOriginsTest() override {
        for (const std::string& path : FilesIn(RecordsFolder(), "*")) DeleteFileA(path.c_str());
    }

    // The record of the only recovered file.
    static OriginRecord Record() {
        EXPECT_THAT(RecoveredFiles(), SizeIs(1));
        if (RecoveredFiles().empty()) return {};
        const NotedOrigin noted = ReadOrigin(NamePart(RecoveredFiles().front()));
        EXPECT_FALSE(noted.isDamaged);
        EXPECT_TRUE(noted.record);
        return noted.record.value_or(OriginRecord{});
    }
    static std::string TextOf(const std::optional<OfflineBytes>& bytes) {
        return bytes ? std::string(bytes->begin(), bytes->end()) : "(none)";
    }
    std::string Server() const { return "127.0.0.1:" + std::to_string(server_.Port()); }
    // Loses an edit to one that someone else stores.
    void LoseAnEdit() {
        const auto file = LoadChanged();
        Overwrite(kTheirs);
        EXPECT_FALSE(file->Release());
    }

    test::CleanOfflineFiles cleanOffline_;
};

TEST_F(RecoveredOriginsTest, EditThatCannotBeStoredIsNotedWithItsEntryAndWhy) {
    LoseAnEdit();
    const OriginRecord record = Record();
    EXPECT_EQ(NamePart(RecoveredFiles().front()), record.file);
    EXPECT_EQ("Work", record.depot);
    EXPECT_EQ(Server(), record.server);
    EXPECT_EQ(OfflinePlaceOf(Directory().Location()), record.place);
    EXPECT_EQ(ComparableDN(Entry()), ComparableDN(record.dn));
    EXPECT_EQ(kContentsChanged, record.code);
    EXPECT_NE(0u, record.time);
    EXPECT_EQ(DigestOf(kOld, sizeof(kOld) - 1), record.baseDigest);
}

TEST_F(RecoveredOriginsTest, FetchedBytesAreNotedWhereTheyAreKnown) {
    LoseAnEdit();
    EXPECT_EQ(kOld, TextOf(Record().base));
    ExpectRecovered(kNew);
}

TEST_F(RecoveredOriginsTest, FetchedBytesAreNotedWhereEditsAreMerged) {
    Use(server_, base_, 2);
    LoseAnEdit();
    EXPECT_EQ(kOld, TextOf(Record().base));
    ExpectRecovered(kNew);
}

TEST_F(RecoveredOriginsTest, EditThatWaitedIsNotedWithWhatItWasMadeFrom) {
    key_.Dword("Work", "Offline1", 1);
    Use(server_, base_);
    OfflineLocation waiting(Directory().Location());
    const OfflineBytes base(kOld, kOld + sizeof(kOld) - 1), edit(kNew, kNew + sizeof(kNew) - 1);
    EXPECT_EQ(0u, waiting.Queue(Entry(), base, edit));
    Overwrite(kTheirs);
    Use(server_, base_);
    Load();
    const OriginRecord record = Record();
    EXPECT_EQ(kOld, TextOf(record.base));
    EXPECT_FALSE(record.isNew);
    EXPECT_EQ("Work", record.depot);
    EXPECT_EQ(Entry(), record.dn);
    EXPECT_EQ(kContentsChanged, record.code);
}

TEST_F(RecoveredOriginsTest, CopyThatAnEndedProgramLeftIsNotedWithoutABase) {
    char temp[MAX_PATH] = {};
    GetTempPathA(sizeof(temp), temp);
    const std::string copy = std::string(temp) + "ldaFFF0.tmp";
    ASSERT_TRUE(WriteLocalFile(copy, kNew, sizeof(kNew) - 1));
    const WorkingCopyRecordBytes bytes =
        EncodeWorkingCopy({"ldaFFF0.tmp", "a.kra", "server.test:389", "cn=a.kra,dc=test", 1, 1});
    {
        const UniqueHandle journal =
            CreatePrivateFile(std::string(temp) + WorkingCopyJournalName(1, 1), GENERIC_WRITE, 0);
        DWORD written = 0;
        EXPECT_TRUE(WriteFile(journal.get(), bytes.data(), static_cast<DWORD>(bytes.size()),
                              &written, nullptr));
    }
    SweepAbandonedCopies(RemoveTrailingBackslash(temp));
    const OriginRecord record = Record();
    EXPECT_EQ("server.test:389", record.server);
    EXPECT_EQ("", record.place);
    EXPECT_EQ("cn=a.kra,dc=test", record.dn);
    EXPECT_FALSE(record.base || record.baseDigest);
    EXPECT_FALSE(test::Exists(copy));
}

TEST_F(RecoveredOriginsTest, NothingIsReadableOnTheDiskOrBesideTheFiles) {
    LoseAnEdit();
    EXPECT_THAT(RecoveredFiles(), SizeIs(1));
    const auto records = FilesIn(RecordsFolder(), "*");
    ASSERT_THAT(records, SizeIs(1));
    EXPECT_THAT(FileBytes(records.front()), Not(HasSubstr("a.kra")));
}

TEST_F(RecoveredOriginsTest, RecordOfAFileThatIsGoneIsDeleted) {
    LoseAnEdit();
    const std::string first = RecoveredFiles().front();
    DeleteFileA(first.c_str());
    Overwrite(kOld);
    LoseAnEdit();
    EXPECT_THAT(FilesIn(RecordsFolder(), "*"), SizeIs(1));
    EXPECT_FALSE(ReadOrigin(NamePart(RecoveredFiles().front())).isDamaged);
}

TEST_F(RecoveredOriginsTest, EditIsKeptWhereNothingCanBeNoted) {
    for (const std::string& path : FilesIn(RecordsFolder(), "*")) DeleteFileA(path.c_str());
    RemoveDirectoryA(RecordsFolder().c_str());
    ASSERT_TRUE(WriteLocalFile(RecordsFolder(), "in the way", 10));
    LoseAnEdit();
    ExpectRecovered(kNew);
    EXPECT_EQ(1u, boxes_.Boxes().size());
    EXPECT_FALSE(ReadOrigin(NamePart(RecoveredFiles().front())).record);
    DeleteFileA(RecordsFolder().c_str());
}

}  // namespace
}  // namespace depot
