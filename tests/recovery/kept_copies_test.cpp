// Finding what is kept, where it belongs, and deleting it.
#include "recovery/kept_copies.h"

#include "platform/local_file.h"
#include "recovery/recovery_fixture.h"

namespace depot::test {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

class KeptCopiesTest : public WayBackTest {};

TEST_F(KeptCopiesTest, NothingIsFoundWhereNothingIsKept) {
    EXPECT_THAT(FindKeptCopies().copies, IsEmpty());
}

TEST_F(KeptCopiesTest, RecoveredFileIsFoundWithItsOrigin) {
    const std::string path = world_.Keep();
    const KeptCopy copy = OnlyCopy();
    EXPECT_EQ(NamePart(path), copy.name);
    EXPECT_EQ(path, copy.path);
    EXPECT_FALSE(copy.isWaiting);
    EXPECT_FALSE(copy.hasDamagedRecord);
    EXPECT_EQ(19u, copy.size);
    EXPECT_EQ("127.0.0.1:" + std::to_string(world_.server.Port()), copy.Server());
    ASSERT_TRUE(copy.origin);
    EXPECT_EQ("no rights", copy.origin->reason);
    EXPECT_TRUE(copy.HasKnownBase());
    EXPECT_TRUE(copy.IsMadeFrom(Bytes(kKeptBase)));
    EXPECT_FALSE(copy.IsMadeFrom(Bytes(kKeptTheirs)));
}

TEST_F(KeptCopiesTest, WaitingEditIsFoundBehindRecoveredFiles) {
    world_.Queue();
    const std::string path = world_.Keep();
    const KeptCopies kept = FindKeptCopies();
    ASSERT_THAT(kept.copies, SizeIs(2));
    EXPECT_EQ(path, kept.copies[0].path);
    EXPECT_TRUE(kept.copies[1].isWaiting);
    EXPECT_EQ(19u, kept.copies[1].size);
    const auto entry = EntryOf(kept.copies[1]);
    ASSERT_TRUE(entry);
    EXPECT_EQ("<Dir>\\Sessions\\office.kre", entry->path);
}

TEST_F(KeptCopiesTest, EntryIsFoundInTheDepotThatHasIt) {
    world_.Keep();
    const auto entry = EntryOf(OnlyCopy());
    ASSERT_TRUE(entry);
    EXPECT_EQ("<Dir>\\Sessions\\office.kre", entry->path);
    EXPECT_EQ(world_.Dn(), entry->dn);
    EXPECT_EQ("Dir", depots_.At(entry->depot)->name);
}

TEST_F(KeptCopiesTest, EntryOfNoDepotIsNotFound) {
    const std::string dn = world_.Dn();
    const CDepotPath location = world_.server.Location("ou=elsewhere,dc=other");
    for (const RecoveredOrigin& origin :
         {RecoveredOrigin{.server = "%s%n.example.test:389", .dn = dn},
          RecoveredOrigin{.location = &location, .dn = "cn=x,dc=other"},
          RecoveredOrigin{.location = &location, .dn = "\\"}, RecoveredOrigin{}}) {
        const std::string path = KeptWorld::KeepOf("x", origin);
        const KeptCopy copy = OnlyCopy();
        EXPECT_EQ(std::nullopt, EntryOf(copy).has_value() ? std::optional(1) : std::nullopt);
        EXPECT_THAT(DeleteKept(copy), IsDone());
    }
}

TEST_F(KeptCopiesTest, DamagedRecordIsNoOrigin) {
    const std::string path = world_.Keep();
    ASSERT_TRUE(WriteLocalFile(KeptWorld::RecordOf(path), "damaged", 7));
    const KeptCopy copy = OnlyCopy();
    EXPECT_TRUE(copy.hasDamagedRecord);
    EXPECT_FALSE(copy.origin);
    EXPECT_FALSE(copy.HasKnownBase());
    EXPECT_EQ("", copy.Server());
}

TEST_F(KeptCopiesTest, DamagedEditCanOnlyBeDeleted) {
    world_.Queue();
    const std::string path = FilesIn(OfflineFolders().front(), "*.edit").front();
    ASSERT_TRUE(WriteLocalFile(path, "damaged", 7));
    const KeptCopy copy = OnlyCopy();
    EXPECT_TRUE(copy.hasDamagedRecord);
    KeptBytes bytes;
    EXPECT_THAT(ReadKept(copy, bytes), Fails(ERROR_INVALID_DATA));
    EXPECT_THAT(DeleteKept(copy), IsDone());
    EXPECT_FALSE(Exists(path));
}

TEST_F(KeptCopiesTest, CopyIsDeletedWithItsRecord) {
    const std::string path = world_.Keep();
    EXPECT_THAT(DeleteKept(OnlyCopy(), Bytes(kKeptOurs)), IsDone());
    EXPECT_FALSE(Exists(path));
    EXPECT_FALSE(Exists(KeptWorld::RecordOf(path)));
}

TEST_F(KeptCopiesTest, CopyThatWasChangedMeanwhileStays) {
    const std::string path = world_.Keep();
    const KeptCopy copy = OnlyCopy();
    ASSERT_TRUE(WriteLocalFile(path, "other", 5));
    EXPECT_THAT(DeleteKept(copy, Bytes(kKeptOurs)), FailsFor(Reason::kChanged));
    EXPECT_TRUE(KeptWorld::IsKept(path));
}

TEST_F(KeptCopiesTest, LockedCopyStays) {
    const std::string path = world_.Keep();
    const KeptCopy copy = OnlyCopy();
    {
        const OpenFile held(path);
        KeptBytes bytes;
        EXPECT_THAT(ReadKept(copy, bytes), Fails(ERROR_SHARING_VIOLATION));
        EXPECT_THAT(DeleteKept(copy), Fails(ERROR_SHARING_VIOLATION));
    }
    EXPECT_TRUE(KeptWorld::IsKept(path));
}

TEST_F(KeptCopiesTest, EditThatIsBeingStoredStays) {
    world_.Queue();
    const KeptCopy copy = OnlyCopy();
    {
        const EditsLock lock(OfflineFolders().front(), 0);
        ASSERT_TRUE(lock);
        EXPECT_THAT(DeleteKept(copy), Fails(kBeingStored));
    }
    EXPECT_THAT(WaitingEdits(), SizeIs(1));
    EXPECT_THAT(DeleteKept(copy), IsDone());
    EXPECT_THAT(WaitingEdits(), IsEmpty());
}

TEST_F(KeptCopiesTest, CopyThatIsGoneIsNoLongerDeleted) {
    const std::string path = world_.Keep();
    const KeptCopy copy = OnlyCopy();
    DeleteFileA(path.c_str());
    EXPECT_THAT(DeleteKept(copy, Bytes(kKeptOurs)), FailsFor(Reason::kChanged));
    EXPECT_THAT(DeleteKept(copy), Fails(ERROR_FILE_NOT_FOUND));
}

}  // namespace
}  // namespace depot::test
