#include "model/working_copy_record.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "platform/checksum.h"

namespace depot {
namespace {

constexpr WorkingCopyRecord kRecord = {
    "lda1A2B.tmp", "office.kra", "ldap.test:389", "cn=office.kra,dc=farrow,dc=test", 811, 0x1234};

// Where the parts of a record stand.
constexpr std::size_t kFileAt = 24;
constexpr std::size_t kNameAt = 40;
constexpr std::size_t kServerAt = 296;
constexpr std::size_t kDNAt = 424;
constexpr std::size_t kSealAt = 1016;

// Puts a text in without looking, and seals the record again, as a forger would.
WorkingCopyRecordBytes Forge(std::size_t at, const std::string& text) {
    WorkingCopyRecordBytes bytes = EncodeWorkingCopy(kRecord);
    std::memcpy(&bytes[at], text.data(), text.size());
    const std::uint64_t seal = ChecksumOf(bytes.data(), kSealAt);
    std::memcpy(&bytes[kSealAt], &seal, sizeof(seal));
    return bytes;
}

TEST(WorkingCopyRecordTest, ReadsWhatWasWritten) {
    const WorkingCopyRecordBytes bytes = EncodeWorkingCopy(kRecord);
    EXPECT_EQ(kRecord, DecodeWorkingCopy(bytes));
}

TEST(WorkingCopyRecordTest, KeepsTextsThatFitExactlyAndLeavesOutLongerOnes) {
    for (const std::size_t extra : {0u, 1u}) {
        const std::string name(255 + extra, 'n'), server(127 + extra, 's'), dn(591 + extra, 'd');
        const WorkingCopyRecordBytes bytes =
            EncodeWorkingCopy({"lda1.tmp", name, server, dn, 1, 2});
        const auto record = DecodeWorkingCopy(bytes);
        ASSERT_TRUE(record);
        EXPECT_EQ(extra ? "" : name, record->name);
        EXPECT_EQ(extra ? "" : server, record->server);
        EXPECT_EQ(extra ? "" : dn, record->dn);
    }
}

TEST(WorkingCopyRecordTest, RefusesEveryDamagedByte) {
    for (std::size_t index = 0; index < kWorkingCopyRecordBytes; ++index) {
        WorkingCopyRecordBytes bytes = EncodeWorkingCopy(kRecord);
        bytes[index] = static_cast<std::uint8_t>(bytes[index] ^ 1);
        EXPECT_FALSE(DecodeWorkingCopy(bytes)) << index;
    }
    EXPECT_FALSE(DecodeWorkingCopy(kNoWorkingCopy));
}

TEST(WorkingCopyRecordTest, RefusesTextsWithoutAnEndOrWithMoreBehindIt) {
    EXPECT_TRUE(DecodeWorkingCopy(Forge(kNameAt, "another.kra")));
    EXPECT_FALSE(DecodeWorkingCopy(Forge(kFileAt, std::string(16, 'a'))));
    EXPECT_FALSE(DecodeWorkingCopy(Forge(kNameAt, std::string(256, 'a'))));
    EXPECT_FALSE(DecodeWorkingCopy(Forge(kServerAt, std::string(128, 'a'))));
    EXPECT_FALSE(DecodeWorkingCopy(Forge(kDNAt, std::string(592, 'a'))));
    EXPECT_FALSE(DecodeWorkingCopy(Forge(kNameAt + 200, "hidden")));
}

TEST(WorkingCopyRecordTest, RefusesFilesThatAreNoWorkingCopies) {
    for (const char* const name : {"lda1A2B.doc", "..\\lda1.tmp", "C:\\a.tmp", "lda.tmp"}) {
        EXPECT_FALSE(
            DecodeWorkingCopy(Forge(kFileAt, (name + std::string(16, '\0')).substr(0, 16))))
            << name;
    }
}

TEST(WorkingCopyRecordTest, KnowsTheNamesThatTheSystemGivesToWorkingCopies) {
    for (const char* const name : {"lda1.tmp", "ldaFFFF.tmp", "LDAab9c.TMP"}) {
        EXPECT_TRUE(IsWorkingCopyName(name)) << name;
    }
    for (const char* const name :
         {"", "lda.tmp", "lda12345.tmp", "ldaX.tmp", "lda1.tmpx", "ldb1.tmp", "a\\lda1.tmp",
          "lda1\\.tmp", "lda1.tm", "lda-1.tmp"}) {
        EXPECT_FALSE(IsWorkingCopyName(name)) << name;
    }
}

TEST(WorkingCopyRecordTest, KnowsTheNamesOfJournals) {
    const std::string name = WorkingCopyJournalName(0xABC, 0x1DC5BA1234567FF);
    EXPECT_EQ("DepotIntr-00000ABC-01DC5BA1234567FF.copies", name);
    EXPECT_TRUE(IsWorkingCopyJournal(name));
    EXPECT_TRUE(IsWorkingCopyJournal(WorkingCopyJournalName(0xFFFFFFFF, ~std::uint64_t{0})));
    for (const char* const other :
         {"", "DepotIntr-.copies", "DepotIntr-00000ABC-01DC5BA1234567FF.copiesx",
          "DepotIntr-00000ABC-01DC5BA1234567FG.copies",
          "DepotIntr-00000ABC+01DC5BA1234567FF.copies",
          "DepotIntr-0000-ABC-01DC5BA1234567FF.copies", "notes.copies"}) {
        EXPECT_FALSE(IsWorkingCopyJournal(other)) << other;
    }
}

}  // namespace
}  // namespace depot
