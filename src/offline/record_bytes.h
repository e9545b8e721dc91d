// The bytes of records that are kept on the disk: numbers, texts and blocks one after another, and
// a digest of all of them at the end. Nothing here asks the system.
#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "platform/digest.h"

namespace depot {

// Makes the bytes of one record.
class RecordWriter {
public:
    explicit RecordWriter(std::string_view signature)
        : bytes_(signature.begin(), signature.end()) {}

    void Byte(std::uint8_t byte) { bytes_.push_back(byte); }
    void Number(std::uint64_t number) {
        for (int shift = 0; shift < 64; shift += 8) {
            bytes_.push_back(static_cast<std::uint8_t>(number >> shift));
        }
    }
    void Flag(bool flag) { bytes_.push_back(flag ? 1 : 0); }
    void Block(std::span<const std::uint8_t> block) {
        Number(block.size());
        bytes_.insert(bytes_.end(), block.begin(), block.end());
    }
    void Text(std::string_view text) {
        Number(text.size());
        bytes_.insert(bytes_.end(), text.begin(), text.end());
    }

    // Returns the bytes with their digest behind them.
    std::vector<std::uint8_t> TakeSealed() {
        const Digest digest = DigestOf(bytes_.data(), bytes_.size());
        bytes_.insert(bytes_.end(), digest.begin(), digest.end());
        return std::move(bytes_);
    }

private:
    std::vector<std::uint8_t> bytes_;
};

// Returns what stands between the signature and the digest; nothing where one of them is not as it
// was written.
inline std::optional<std::span<const std::uint8_t>> OpenRecord(std::span<const std::uint8_t> bytes,
                                                               std::string_view signature) {
    if (bytes.size() < signature.size() + sizeof(Digest)) return std::nullopt;
    const auto sealed = bytes.first(bytes.size() - sizeof(Digest));
    const Digest digest = DigestOf(sealed.data(), sealed.size());
    if (!std::equal(digest.begin(), digest.end(), bytes.end() - sizeof(Digest)) ||
        !std::equal(signature.begin(), signature.end(), sealed.begin())) {
        return std::nullopt;
    }
    return sealed.subspan(signature.size());
}

// Reads what RecordWriter wrote. Once anything is missing all that follows is nothing.
class RecordReader {
public:
    explicit RecordReader(std::span<const std::uint8_t> bytes) : rest_(bytes) {}

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
    std::vector<std::uint8_t> Block() {
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

    std::span<const std::uint8_t> rest_;
    bool isWhole_ = true;
};

}  // namespace depot
