#include "offline/offline_record.h"

#include <gtest/gtest.h>

#include <cstring>

#include "platform/digest.h"

namespace depot {
namespace {

OfflineRecord Sample() {
    return {.kind = OfflineKind::kEdit,
            .place = "ldap.test:389",
            .dn = "cn=office.kra,dc=farrow,dc=test",
            .number = 7,
            .time = 0x0123456789ABCDEF,
            .bytes = {0, 1, 2},
            .base = OfflineBytes{3},
            .children = {{"cn=a,dc=test", true}, {"", false}}};
}

// Seals bytes as a record, whatever they are.
OfflineBytes Sealed(OfflineBytes bytes) {
    const Digest digest = DigestOf(bytes.data(), bytes.size());
    bytes.insert(bytes.end(), digest.begin(), digest.end());
    return bytes;
}
OfflineBytes WithoutSeal(const OfflineRecord& record) {
    OfflineBytes bytes = EncodeOfflineRecord(record);
    bytes.resize(bytes.size() - sizeof(Digest));
    return bytes;
}

TEST(OfflineRecordTest, ReadsWhatWasWritten) {
    EXPECT_EQ(Sample(), DecodeOfflineRecord(EncodeOfflineRecord(Sample())));
    EXPECT_EQ(OfflineRecord{}, DecodeOfflineRecord(EncodeOfflineRecord({})));
    OfflineRecord large;
    large.bytes.resize(1'000'000, 'x');
    EXPECT_EQ(large, DecodeOfflineRecord(EncodeOfflineRecord(large)));
}

TEST(OfflineRecordTest, NoBaseIsNotAnEmptyOne) {
    OfflineRecord record = Sample();
    record.base = OfflineBytes();
    EXPECT_EQ(record, DecodeOfflineRecord(EncodeOfflineRecord(record)));
    record.base.reset();
    EXPECT_EQ(std::nullopt, DecodeOfflineRecord(EncodeOfflineRecord(record))->base);
}

TEST(OfflineRecordTest, EveryDamagedByteIsNoticed) {
    const OfflineBytes whole = EncodeOfflineRecord(Sample());
    for (std::size_t at = 0; at < whole.size(); ++at) {
        OfflineBytes damaged = whole;
        damaged[at] = static_cast<std::uint8_t>(damaged[at] ^ 0x10);
        EXPECT_EQ(std::nullopt, DecodeOfflineRecord(damaged)) << at;
    }
}

TEST(OfflineRecordTest, EveryShorterPartIsNoRecord) {
    const OfflineBytes whole = EncodeOfflineRecord(Sample());
    for (std::size_t length = 0; length < whole.size(); ++length) {
        EXPECT_EQ(std::nullopt, DecodeOfflineRecord({whole.data(), length})) << length;
    }
}

TEST(OfflineRecordTest, SealedBytesThatAreCutOrGoOnAreNoRecord) {
    const OfflineBytes bytes = WithoutSeal(Sample());
    EXPECT_TRUE(DecodeOfflineRecord(Sealed(bytes)));
    for (std::size_t length = 0; length < bytes.size(); ++length) {
        const auto end = bytes.begin() + static_cast<std::ptrdiff_t>(length);
        EXPECT_EQ(std::nullopt, DecodeOfflineRecord(Sealed({bytes.begin(), end}))) << length;
    }
    OfflineBytes longer = bytes;
    longer.push_back(0);
    EXPECT_EQ(std::nullopt, DecodeOfflineRecord(Sealed(longer)));
}

TEST(OfflineRecordTest, SealedLengthsBeyondTheEndTakeNoMemory) {
    OfflineBytes bytes = WithoutSeal(Sample());
    // Each of its numbers in turn, the first one stands behind the signature and the kind.
    for (std::size_t at = 9; at + 8 <= bytes.size(); ++at) {
        OfflineBytes huge = bytes;
        std::memset(&huge[at], 0xFF, 8);
        static_cast<void>(DecodeOfflineRecord(Sealed(huge)));
    }
    bytes.resize(9);
    bytes.insert(bytes.end(), 8, 0xFF);
    EXPECT_EQ(std::nullopt, DecodeOfflineRecord(Sealed(bytes)));
}

TEST(OfflineRecordTest, OtherKindsAreNoRecord) {
    for (const int kind : {0, 4, 255}) {
        OfflineBytes bytes = WithoutSeal(Sample());
        bytes[8] = static_cast<std::uint8_t>(kind);
        EXPECT_EQ(std::nullopt, DecodeOfflineRecord(Sealed(bytes))) << kind;
    }
}

}  // namespace
}  // namespace depot
