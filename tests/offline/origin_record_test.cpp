#include "offline/origin_record.h"

#include <gtest/gtest.h>

namespace depot {
namespace {

OriginRecord Sample() {
    return {.file = "office 2026-05-31 14-07-09 (1).kra",
            .depot = "Work",
            .server = "ldap.test:389",
            .place = "ldap.test:389\n0\n\n\ndc=test",
            .dn = "cn=office.kra,dc=test",
            .time = 0x0123456789ABCDEF,
            .code = 122,
            .reason = "%s%n changed",
            .isNew = true,
            .base = OfflineBytes{0, 1, 2},
            .baseDigest = DigestOf("x", 1)};
}

TEST(OriginRecordTest, ReadsWhatWasWritten) {
    EXPECT_EQ(Sample(), DecodeOriginRecord(EncodeOriginRecord(Sample())));
    EXPECT_EQ(OriginRecord{}, DecodeOriginRecord(EncodeOriginRecord({})));
    OriginRecord large = Sample();
    large.base.emplace(1'000'000, 'x');
    large.dn.assign(100'000, ',');
    EXPECT_EQ(large, DecodeOriginRecord(EncodeOriginRecord(large)));
}

TEST(OriginRecordTest, NoBaseIsNotAnEmptyOne) {
    OriginRecord record = Sample();
    record.base = OfflineBytes();
    EXPECT_EQ(record, DecodeOriginRecord(EncodeOriginRecord(record)));
    record.base.reset();
    record.baseDigest.reset();
    EXPECT_EQ(record, DecodeOriginRecord(EncodeOriginRecord(record)));
}

TEST(OriginRecordTest, EveryDamagedByteIsNoticed) {
    const OfflineBytes whole = EncodeOriginRecord(Sample());
    for (std::size_t at = 0; at < whole.size(); ++at) {
        OfflineBytes damaged = whole;
        damaged[at] = static_cast<std::uint8_t>(damaged[at] ^ 0x10);
        EXPECT_EQ(std::nullopt, DecodeOriginRecord(damaged)) << at;
    }
}

// Behind the seal of whoever may write records.
TEST(OriginRecordTest, EverySealedPartIsNoRecord) {
    const OfflineBytes whole = EncodeOriginRecord(Sample());
    for (std::size_t length = 0; length < whole.size() - sizeof(Digest); ++length) {
        OfflineBytes part(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
        const Digest digest = DigestOf(part.data(), part.size());
        part.insert(part.end(), digest.begin(), digest.end());
        EXPECT_EQ(std::nullopt, DecodeOriginRecord(part)) << length;
    }
}

TEST(OriginRecordTest, ARecordOfAnotherKindIsNone) {
    EXPECT_EQ(std::nullopt, DecodeOriginRecord(EncodeOfflineRecord({})));
    EXPECT_EQ(std::nullopt, DecodeOfflineRecord(EncodeOriginRecord({})));
}

}  // namespace
}  // namespace depot
