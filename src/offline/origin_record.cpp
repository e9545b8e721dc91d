#include "offline/origin_record.h"

#include <algorithm>
#include <string_view>

#include "offline/record_bytes.h"

namespace depot {
namespace {

constexpr std::string_view kSignature = "LDAFROM1";

}  // namespace

OfflineBytes EncodeOriginRecord(const OriginRecord& record) {
    RecordWriter writer(kSignature);
    for (const std::string* const text :
         {&record.file, &record.depot, &record.server, &record.place, &record.dn, &record.reason}) {
        writer.Text(*text);
    }
    writer.Number(record.time);
    writer.Number(record.code);
    writer.Flag(record.isNew);
    writer.Flag(record.base.has_value());
    if (record.base) writer.Block(*record.base);
    writer.Flag(record.baseDigest.has_value());
    if (record.baseDigest) writer.Block(*record.baseDigest);
    return writer.TakeSealed();
}

std::optional<OriginRecord> DecodeOriginRecord(std::span<const std::uint8_t> bytes) {
    const auto opened = OpenRecord(bytes, kSignature);
    if (!opened) return std::nullopt;
    RecordReader reader(*opened);
    OriginRecord record;
    for (std::string* const text :
         {&record.file, &record.depot, &record.server, &record.place, &record.dn, &record.reason}) {
        *text = reader.Text();
    }
    record.time = reader.Number();
    const std::uint64_t code = reader.Number();
    record.code = static_cast<std::uint32_t>(code);
    record.isNew = reader.Flag();
    if (reader.Flag()) record.base = reader.Block();
    if (reader.Flag()) {
        const OfflineBytes digest = reader.Block();
        if (digest.size() != sizeof(Digest)) return std::nullopt;
        std::copy(digest.begin(), digest.end(), record.baseDigest.emplace().begin());
    }
    if (!reader.IsAtEnd() || code != record.code) return std::nullopt;
    return record;
}

}  // namespace depot
