#include "offline/offline_record.h"

#include <string_view>

#include "offline/record_bytes.h"

namespace depot {
namespace {

constexpr std::string_view kSignature = "LDAKEPT1";

}  // namespace

OfflineBytes EncodeOfflineRecord(const OfflineRecord& record) {
    RecordWriter writer(kSignature);
    writer.Byte(static_cast<std::uint8_t>(record.kind));
    writer.Text(record.place);
    writer.Text(record.dn);
    writer.Number(record.number);
    writer.Number(record.time);
    writer.Block(record.bytes);
    writer.Flag(record.base.has_value());
    if (record.base) writer.Block(*record.base);
    writer.Number(record.children.size());
    for (const OfflineChild& child : record.children) {
        writer.Text(child.dn);
        writer.Flag(child.isFolder);
    }
    return writer.TakeSealed();
}

std::optional<OfflineRecord> DecodeOfflineRecord(std::span<const std::uint8_t> bytes) {
    const auto opened = OpenRecord(bytes, kSignature);
    if (!opened) return std::nullopt;
    RecordReader reader(*opened);
    OfflineRecord record;
    const std::uint8_t kind = reader.Byte();
    if (kind < 1 || kind > static_cast<std::uint8_t>(OfflineKind::kEdit)) return std::nullopt;
    record.kind = static_cast<OfflineKind>(kind);
    record.place = reader.Text();
    record.dn = reader.Text();
    record.number = reader.Number();
    record.time = reader.Number();
    record.bytes = reader.Block();
    if (reader.Flag()) record.base = reader.Block();
    for (std::uint64_t left = reader.Number(); left > 0 && reader.IsWhole(); --left) {
        OfflineChild child = {reader.Text(), false};
        child.isFolder = reader.Flag();
        record.children.push_back(std::move(child));
    }
    if (!reader.IsAtEnd()) return std::nullopt;
    return record;
}

}  // namespace depot
