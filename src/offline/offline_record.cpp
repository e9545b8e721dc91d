#include "offline/offline_record.h"

#include <algorithm>
#include <string_view>

#include "platform/digest.h"

namespace depot {
namespace {

constexpr std::string_view kSignature = "LDAKEPT1";

class Writer {
public:
    void Number(std::uint64_t number) {
        for (int shift = 0; shift < 64; shift += 8) {
            bytes.push_back(static_cast<std::uint8_t>(number >> shift));
        }
    }
    void Flag(bool flag) { bytes.push_back(flag ? 1 : 0); }
    void Block(std::span<const std::uint8_t> block) {
        Number(block.size());
        bytes.insert(bytes.end(), block.begin(), block.end());
    }
    void Text(std::string_view text) {
        Number(text.size());
        bytes.insert(bytes.end(), text.begin(), text.end());
    }

    OfflineBytes bytes;
};

// Reads what Writer wrote. Once anything is missing all that follows is nothing.
class Reader {
public:
    explicit Reader(std::span<const std::uint8_t> bytes) : rest_(bytes) {}

    std::span<const std::uint8_t> Take(std::uint64_t length) {
        if (length > rest_.size()) {
            isWhole_ = false;
            rest_ = {};
            return {};
        }
        const auto taken = rest_.first(static_cast<std::size_t>(length));
        rest_ = rest_.subspan(taken.size());
        return taken;
    }
    std::uint64_t Number() {
        std::uint64_t number = 0;
        const auto bytes = Take(sizeof(number));
        for (std::size_t at = bytes.size(); at > 0; --at) number = number << 8 | bytes[at - 1];
        return number;
    }
    std::uint8_t Byte() {
        const auto byte = Take(1);
        return byte.empty() ? std::uint8_t{0} : byte.front();
    }
    bool Flag() {
        const std::uint8_t byte = Byte();
        if (byte > 1) isWhole_ = false;
        return byte == 1;
    }
    OfflineBytes Block() {
        const auto block = Take(Number());
        return {block.begin(), block.end()};
    }
    std::string Text() {
        const auto text = Take(Number());
        return {text.begin(), text.end()};
    }
    bool IsWhole() const { return isWhole_; }
    bool IsAtEnd() const { return isWhole_ && rest_.empty(); }

private:
    std::span<const std::uint8_t> rest_;
    bool isWhole_ = true;
};

}  // namespace

OfflineBytes EncodeOfflineRecord(const OfflineRecord& record) {
    Writer writer;
    writer.bytes.assign(kSignature.begin(), kSignature.end());
    writer.bytes.push_back(static_cast<std::uint8_t>(record.kind));
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
    const Digest digest = DigestOf(writer.bytes.data(), writer.bytes.size());
    writer.bytes.insert(writer.bytes.end(), digest.begin(), digest.end());
    return std::move(writer.bytes);
}

std::optional<OfflineRecord> DecodeOfflineRecord(std::span<const std::uint8_t> bytes) {
    if (bytes.size() < kSignature.size() + sizeof(Digest)) return std::nullopt;
    const auto sealed = bytes.first(bytes.size() - sizeof(Digest));
    const Digest digest = DigestOf(sealed.data(), sealed.size());
    if (!std::equal(digest.begin(), digest.end(), bytes.end() - sizeof(Digest)))
        return std::nullopt;
    if (!std::equal(kSignature.begin(), kSignature.end(), sealed.begin())) return std::nullopt;
    Reader reader(sealed.subspan(kSignature.size()));
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
