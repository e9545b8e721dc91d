// What a process notes of each of its working copies, so that another process knows what to do
// with a copy that was left behind. Nothing here asks the system.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace depot {

// One working copy. The texts belong to whoever made the record, or are part of the bytes that it
// was read from.
struct WorkingCopyRecord {
    std::string_view file;    // the copy's name in the folder of its journal
    std::string_view name;    // that of the entry
    std::string_view server;  // "host:port"
    std::string_view dn;
    std::uint64_t length = 0;  // of the bytes that were fetched
    std::uint64_t checksum = 0;

    friend bool operator==(const WorkingCopyRecord&, const WorkingCopyRecord&) = default;
};

inline constexpr std::size_t kWorkingCopyRecordBytes = 1024;
using WorkingCopyRecordBytes = std::array<std::uint8_t, kWorkingCopyRecordBytes>;

// What stands in the place of a copy that is deleted.
inline constexpr WorkingCopyRecordBytes kNoWorkingCopy = {};

// Whether the name has the form that the system gives to working copies: "lda", up to four
// hexadecimal digits, ".tmp".
bool IsWorkingCopyName(std::string_view name);

// Journals lie in the folder of their copies, one for each process that has some. No process has
// more copies than this noted.
inline constexpr char kWorkingCopyJournals[] = "DepotIntr-*.copies";
inline constexpr std::size_t kMaxWorkingCopyRecords = 4096;

// Returns the name of a process's journal: "DepotIntr-", the process and the time in hexadecimal
// digits, ".copies".
std::string WorkingCopyJournalName(std::uint32_t process, std::uint64_t time);
bool IsWorkingCopyJournal(std::string_view name);

// Returns the record as it stands in a journal. A text without room there is left out: what it says
// is of use, but nothing depends on it. REQUIRES: `file` is a working copy's name.
WorkingCopyRecordBytes EncodeWorkingCopy(const WorkingCopyRecord& record);

// Reads a record. Nothing when the bytes are not exactly those of a record that was written whole.
std::optional<WorkingCopyRecord> DecodeWorkingCopy(
    std::span<const std::uint8_t, kWorkingCopyRecordBytes> bytes);

}  // namespace depot
