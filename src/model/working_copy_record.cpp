#include "model/working_copy_record.h"

#include <algorithm>
#include <cstring>

#include "platform/checksum.h"
#include "platform/text.h"

namespace depot {
namespace {

struct Field {
    std::size_t offset;
    std::size_t size;
};

// Every text ends in a NUL and is filled up with NULs.
constexpr char kSignature[] = "LDACOPY1";
constexpr std::size_t kSignatureBytes = sizeof(kSignature) - 1;
constexpr Field kLength = {8, 8};
constexpr Field kChecksum = {16, 8};
constexpr Field kFile = {24, 16};
constexpr Field kName = {40, 256};
constexpr Field kServer = {296, 128};
constexpr Field kDN = {424, 592};
// Of all that stands before it.
constexpr Field kSeal = {1016, 8};
static_assert(kSeal.offset + kSeal.size == kWorkingCopyRecordBytes);

constexpr std::string_view kPrefix = "lda";
constexpr std::string_view kExtension = ".tmp";
constexpr std::size_t kMaxDigits = 4;

constexpr std::string_view kJournalPrefix = "DepotIntr-";
constexpr std::string_view kJournalExtension = ".copies";
constexpr std::size_t kProcessDigits = 8;
constexpr std::size_t kTimeDigits = 16;

using Bytes = std::span<const std::uint8_t, kWorkingCopyRecordBytes>;

void PutNumber(WorkingCopyRecordBytes& bytes, Field field, std::uint64_t number) {
    for (std::size_t index = 0; index < field.size; ++index) {
        bytes[field.offset + index] = static_cast<std::uint8_t>(number >> (8 * index));
    }
}

std::uint64_t GetNumber(Bytes bytes, Field field) {
    std::uint64_t number = 0;
    for (std::size_t index = field.size; index > 0; --index) {
        number = number << 8 | bytes[field.offset + index - 1];
    }
    return number;
}

void PutText(WorkingCopyRecordBytes& bytes, Field field, std::string_view text) {
    if (text.size() < field.size) std::copy(text.begin(), text.end(), &bytes[field.offset]);
}

std::optional<std::string_view> GetText(Bytes bytes, Field field) {
    const std::string_view all(reinterpret_cast<const char*>(&bytes[field.offset]), field.size);
    const std::size_t end = all.find('\0');
    if (end == std::string_view::npos) return std::nullopt;
    if (all.find_first_not_of('\0', end) != std::string_view::npos) return std::nullopt;
    return all.substr(0, end);
}

std::uint64_t Seal(Bytes bytes) {
    return ChecksumOf(bytes.data(), kSeal.offset);
}

bool IsHexDigit(char c) {
    return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'F') || (c >= 'a' && c <= 'f');
}

bool AreHexDigits(std::string_view text) {
    return std::all_of(text.begin(), text.end(), IsHexDigit);
}

std::string HexText(std::uint64_t number, std::size_t digits) {
    std::string text(digits, '0');
    for (; digits > 0; number >>= 4) text[--digits] = "0123456789ABCDEF"[number & 0xF];
    return text;
}

}  // namespace

bool IsWorkingCopyName(std::string_view name) {
    const std::size_t fixed = kPrefix.size() + kExtension.size();
    if (name.size() <= fixed || name.size() > fixed + kMaxDigits) return false;
    const std::string_view digits = name.substr(kPrefix.size(), name.size() - fixed);
    return EqualsNoCase(name.substr(0, kPrefix.size()), kPrefix) &&
           EqualsNoCase(name.substr(name.size() - kExtension.size()), kExtension) &&
           AreHexDigits(digits);
}

std::string WorkingCopyJournalName(std::uint32_t process, std::uint64_t time) {
    return Concatenate({kJournalPrefix, HexText(process, kProcessDigits), "-",
                        HexText(time, kTimeDigits), kJournalExtension});
}

bool IsWorkingCopyJournal(std::string_view name) {
    const std::size_t time = kJournalPrefix.size() + kProcessDigits + 1;
    const std::size_t end = time + kTimeDigits;
    return name.size() == end + kJournalExtension.size() && name.starts_with(kJournalPrefix) &&
           name.ends_with(kJournalExtension) && name[time - 1] == '-' &&
           AreHexDigits(name.substr(kJournalPrefix.size(), kProcessDigits)) &&
           AreHexDigits(name.substr(time, kTimeDigits));
}

WorkingCopyRecordBytes EncodeWorkingCopy(const WorkingCopyRecord& record) {
    WorkingCopyRecordBytes bytes = {};
    std::memcpy(bytes.data(), kSignature, kSignatureBytes);
    PutNumber(bytes, kLength, record.length);
    PutNumber(bytes, kChecksum, record.checksum);
    PutText(bytes, kFile, record.file);
    PutText(bytes, kName, record.name);
    PutText(bytes, kServer, record.server);
    PutText(bytes, kDN, record.dn);
    PutNumber(bytes, kSeal, Seal(bytes));
    return bytes;
}

std::optional<WorkingCopyRecord> DecodeWorkingCopy(Bytes bytes) {
    if (std::memcmp(bytes.data(), kSignature, kSignatureBytes) != 0) return std::nullopt;
    if (GetNumber(bytes, kSeal) != Seal(bytes)) return std::nullopt;
    const auto file = GetText(bytes, kFile);
    const auto name = GetText(bytes, kName);
    const auto server = GetText(bytes, kServer);
    const auto dn = GetText(bytes, kDN);
    if (!file || !name || !server || !dn || !IsWorkingCopyName(*file)) return std::nullopt;
    return WorkingCopyRecord{
        *file, *name, *server, *dn, GetNumber(bytes, kLength), GetNumber(bytes, kChecksum)};
}

}  // namespace depot
